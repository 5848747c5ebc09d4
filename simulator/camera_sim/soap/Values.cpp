#include "camera_sim/soap/Values.h"

#include <charconv>
#include <cmath>
#include <string>
#include <utility>
// Asio uses std::exchange without including it.
#include <boost/asio/ip/address_v4.hpp>
#include <boost/asio/ip/address_v6.hpp>

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
    boost::system::error_code error;
    const auto address = boost::asio::ip::make_address_v4(text, error);
    // Not every system refuses "127.1".
    return !error && address.to_string() == text;
}

bool IsIpv6(std::string_view text) {
    boost::system::error_code error;
    boost::asio::ip::make_address_v6(text, error);
    // Nor does every one refuse a port, and none does a zone.
    return !error && text.find_first_of("[]%/") == std::string_view::npos;
}

}  // namespace camera_sim
