#include "platform/LocalAddresses.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

#include <memory>

namespace onvif_client {

std::vector<std::string> LocalIpv4Addresses() {
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0) {
        return {};
    }
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owned(list, &freeifaddrs);
    std::vector<std::string> addresses;
    std::vector<std::string> loopback;
    for (const ifaddrs* each = list; each != nullptr; each = each->ifa_next) {
        if (each->ifa_addr == nullptr || each->ifa_addr->sa_family != AF_INET ||
            (each->ifa_flags & IFF_UP) == 0) {
            continue;
        }
        const auto* address = reinterpret_cast<const sockaddr_in*>(each->ifa_addr);
        char dotted[INET_ADDRSTRLEN] = {};
        inet_ntop(AF_INET, &address->sin_addr, dotted, sizeof dotted);
        ((each->ifa_flags & IFF_LOOPBACK) != 0 ? loopback : addresses).emplace_back(dotted);
    }
    return addresses.empty() ? loopback : addresses;
}

}  // namespace onvif_client
