/// @file
/// How a broker is named on the command line.
#ifndef ONVIFCTL_BRIDGE_BROKERADDRESS_H
#define ONVIFCTL_BRIDGE_BROKERADDRESS_H

#include <cstdint>
#include <string>

namespace onvifctl {

struct BrokerAddress {
    std::string host;
    std::uint16_t port = 1883;
    bool secure = false;

    std::string Text() const { return host + ":" + std::to_string(port); }
};

/// From mqtt://HOST[:PORT] or mqtts://HOST[:PORT]. Throws CFailure for anything else, for
/// credentials in it above all, which others could read.
BrokerAddress ParseBrokerAddress(const std::string& text);

}  // namespace onvifctl

#endif
