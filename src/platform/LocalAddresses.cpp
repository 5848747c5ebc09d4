#include "platform/LocalAddresses.h"

#include "platform/Environment.h"
#include "platform/Sockets.h"

namespace onvif_client {

std::string ListenAddress() {
    return EnvironmentText("ONVIF_CLIENT_LISTEN_ADDRESS", "0.0.0.0");
}

std::vector<std::string> ReachableAddresses() {
    const std::string listened = ListenAddress();
    const auto endpoint = Ipv4Address(listened.c_str(), 0);
    const bool one = endpoint && endpoint->address != 0;
    return one ? std::vector<std::string>{listened} : LocalIpv4Addresses();
}

}  // namespace onvif_client
