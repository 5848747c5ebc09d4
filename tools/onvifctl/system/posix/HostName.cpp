#include "system/HostName.h"

#include <arpa/inet.h>
#include <netdb.h>

#include <memory>

namespace onvifctl {

std::optional<std::string> DottedAddressOf(const std::string& name) {
    addrinfo wanted = {};
    wanted.ai_family = AF_INET;
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(name.c_str(), nullptr, &wanted, &found) != 0) {
        return std::nullopt;
    }
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owned(found, &freeaddrinfo);
    char dotted[INET_ADDRSTRLEN] = {};
    const auto* address = reinterpret_cast<const sockaddr_in*>(found->ai_addr);
    inet_ntop(AF_INET, &address->sin_addr, dotted, sizeof dotted);
    return dotted;
}

}  // namespace onvifctl
