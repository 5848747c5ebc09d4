#include "camera_sim/soap/Values.h"

#include <arpa/inet.h>

#include <charconv>
#include <cmath>
#include <string>

namespace camera_sim {
std::optional<int> ToInt(std::string_view text) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

std::optional<double> ToDouble(std::string_view text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

std::optional<bool> ToBool(std::string_view text) {
    if (text == "true" || text == "1") {
        return true;
    }
    if (text == "false" || text == "0") {
        return false;
    }
    return std::nullopt;
}

bool IsIpv4(std::string_view text) {
    in_addr address{};
    return inet_pton(AF_INET, std::string(text).c_str(), &address) == 1;
}

bool IsIpv6(std::string_view text) {
    in6_addr address{};
    return inet_pton(AF_INET6, std::string(text).c_str(), &address) == 1;
}

}  // namespace camera_sim
