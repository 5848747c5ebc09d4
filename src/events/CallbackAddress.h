/// @file
/// Which of this machine's addresses a device is most likely to reach.
#ifndef ONVIF_CLIENT_EVENTS_CALLBACKADDRESS_H
#define ONVIF_CLIENT_EVENTS_CALLBACKADDRESS_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace onvif_client {

/// The local address (all dotted IPv4) that shares the most leading characters with the device's;
/// of equals the first. 127.0.0.1 when there is none at all.
std::string ClosestAddress(std::span<const std::string> localAddresses,
                           std::string_view deviceAddress);

/// Where a device posts the messages of a subscription.
std::string CallbackAddress(std::string_view localAddress, std::uint16_t port,
                            std::uint32_t subscriptionNumber);

}  // namespace onvif_client

#endif
