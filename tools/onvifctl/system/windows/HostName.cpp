#include "system/HostName.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <memory>

#include "system/windows/Utf16.h"

namespace onvifctl {

std::optional<std::string> DottedAddressOf(const std::string& name) {
    WSADATA details = {};
    static const int started = WSAStartup(MAKEWORD(2, 2), &details);
    ADDRINFOW wanted = {};
    wanted.ai_family = AF_INET;
    wanted.ai_socktype = SOCK_STREAM;
    ADDRINFOW* found = nullptr;
    if (started != 0 || GetAddrInfoW(ToUtf16(name).c_str(), nullptr, &wanted, &found) != 0) {
        return std::nullopt;
    }
    const std::unique_ptr<ADDRINFOW, decltype(&FreeAddrInfoW)> owned(found, &FreeAddrInfoW);
    char dotted[INET_ADDRSTRLEN] = {};
    const auto* address = reinterpret_cast<const sockaddr_in*>(found->ai_addr);
    inet_ntop(AF_INET, &address->sin_addr, dotted, sizeof dotted);
    return dotted;
}

}  // namespace onvifctl
