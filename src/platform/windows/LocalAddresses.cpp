#include "platform/LocalAddresses.h"

#include <winsock2.h>
#include <ws2tcpip.h>
// Behind winsock2.h.
#include <iphlpapi.h>

#include <cstddef>
#include <memory>

namespace onvif_client {

namespace {

constexpr ULONG kAddressesAlone = GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST |
                                  GAA_FLAG_SKIP_DNS_SERVER | GAA_FLAG_SKIP_FRIENDLY_NAME;

/// The adapters of this machine, as a list in one piece of memory; null when they cannot be told.
std::unique_ptr<std::byte[]> Adapters() {
    constexpr int kTries = 4;       // others may come while there is asked
    ULONG size = ULONG{16} * 1024;  // what is enough for most machines
    for (int i = 0; i < kTries; ++i) {
        auto memory = std::make_unique<std::byte[]>(size);
        const ULONG error =
            GetAdaptersAddresses(AF_INET, kAddressesAlone, nullptr,
                                 reinterpret_cast<IP_ADAPTER_ADDRESSES*>(memory.get()), &size);
        if (error == NO_ERROR) {
            return memory;
        }
        if (error != ERROR_BUFFER_OVERFLOW) {
            break;
        }
    }
    return nullptr;
}

}  // namespace

std::vector<std::string> LocalIpv4Addresses() {
    const auto memory = Adapters();
    std::vector<std::string> addresses;
    std::vector<std::string> loopback;
    for (const auto* adapter = reinterpret_cast<const IP_ADAPTER_ADDRESSES*>(memory.get());
         adapter != nullptr; adapter = adapter->Next) {
        if (adapter->OperStatus != IfOperStatusUp) {
            continue;
        }
        auto& list = adapter->IfType == IF_TYPE_SOFTWARE_LOOPBACK ? loopback : addresses;
        for (const auto* each = adapter->FirstUnicastAddress; each != nullptr; each = each->Next) {
            const auto* address = reinterpret_cast<const sockaddr_in*>(each->Address.lpSockaddr);
            char dotted[INET_ADDRSTRLEN] = {};
            inet_ntop(AF_INET, &address->sin_addr, dotted, sizeof dotted);
            list.emplace_back(dotted);
        }
    }
    return addresses.empty() ? loopback : addresses;
}

}  // namespace onvif_client
