#include "events/CallbackAddress.h"

#include <algorithm>

namespace onvif_client {

std::string ClosestAddress(std::span<const std::string> localAddresses,
                           std::string_view deviceAddress) {
    const auto shared = [deviceAddress](const std::string& address) {
        const auto [difference, other] = std::mismatch(address.begin(), address.end(),
                                                       deviceAddress.begin(), deviceAddress.end());
        return difference - address.begin();
    };
    const auto closest = std::max_element(
        localAddresses.begin(), localAddresses.end(),
        [&shared](const auto& one, const auto& other) { return shared(one) < shared(other); });
    return closest == localAddresses.end() ? "127.0.0.1" : *closest;
}

std::string CallbackAddress(std::string_view localAddress, std::uint16_t port,
                            std::uint32_t subscriptionNumber) {
    return "http://" + std::string(localAddress) + ":" + std::to_string(port) + "/subscription_" +
           std::to_string(subscriptionNumber);
}

}  // namespace onvif_client
