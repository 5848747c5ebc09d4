#include "bridge/BrokerAddress.h"

#include <charconv>

#include "ExitCode.h"

namespace onvifctl {

namespace {

constexpr std::uint16_t kPlainPort = 1883;
constexpr std::uint16_t kSecurePort = 8883;

std::uint16_t PortOf(const std::string& text, const std::string& whole) {
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (error != std::errc() || end != text.data() + text.size() || port == 0) {
        throw CFailure(ExitCode::kUsage, "'" + whole + "' has no port from 1 to 65535");
    }
    return port;
}

}  // namespace

BrokerAddress ParseBrokerAddress(const std::string& text) {
    if (text.find('@') != std::string::npos) {
        throw CFailure(ExitCode::kUsage,
                       "a broker's address holds no credentials: ONVIF_BROKER_USER and "
                       "ONVIF_BROKER_PASSWORD do, or --broker-password-file");
    }
    const std::string plain = "mqtt://";
    const std::string secure = "mqtts://";
    BrokerAddress address;
    address.secure = text.starts_with(secure);
    if (!address.secure && !text.starts_with(plain)) {
        throw CFailure(ExitCode::kUsage,
                       "'" + text + "' is not mqtt://HOST[:PORT] or mqtts://HOST[:PORT]");
    }
    address.port = address.secure ? kSecurePort : kPlainPort;
    std::string rest = text.substr((address.secure ? secure : plain).size());
    if (rest.ends_with('/')) {
        rest.pop_back();
    }
    // An IPv6 address stands in brackets.
    const std::size_t bracket = rest.starts_with('[') ? rest.find(']') : 0;
    const std::size_t colon = bracket == std::string::npos ? bracket : rest.find(':', bracket);
    if (colon != std::string::npos) {
        address.port = PortOf(rest.substr(colon + 1), text);
        rest.erase(colon);
    }
    if (rest.starts_with('[') && rest.ends_with(']')) {
        rest = rest.substr(1, rest.size() - 2);
    }
    if (rest.empty() || rest.find_first_of("/[] ") != std::string::npos) {
        throw CFailure(ExitCode::kUsage, "'" + text + "' names no host");
    }
    address.host = rest;
    return address;
}

}  // namespace onvifctl
