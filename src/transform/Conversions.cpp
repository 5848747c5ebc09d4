#include "transform/Conversions.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <limits>

namespace onvif_client {

namespace {

bool IsBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// Reads a decimal number as "%d" does and moves @p text behind it; false when there is none.
bool ReadInt(std::string_view& text, int& value) {
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    if (text.empty() || text.front() < '0' || text.front() > '9') {
        return false;
    }
    int magnitude = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), magnitude);
    if (error == std::errc::result_out_of_range) {
        value = negative ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
    } else {
        value = negative ? -magnitude : magnitude;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

}  // namespace

int ToInt(std::string_view text) {
    int value = 0;
    ReadInt(text, value);
    return value;
}

std::string PrefixLengthToNetmask(int length) {
    // The longest sensible answer is four octets; a nonsense length must not grow without bound.
    constexpr int kLongestLength = 128;
    length = std::clamp(length, 0, kLongestLength);
    const int octets = (length + 7) / 8;
    std::string netmask;
    for (int octet = 1; octet < octets; ++octet) {
        netmask += "255.";
    }
    const int bitsToClear = length % 8 == 0 ? 0 : 8 - length % 8;
    netmask += octets == 0 ? "0" : std::to_string(255 - ((1 << bitsToClear) - 1));
    for (int octet = std::max(octets, 1); octet < 4; ++octet) {
        netmask += ".0";
    }
    return netmask;
}

int NetmaskToPrefixLength(const std::string& netmask) {
    if (netmask.empty()) {
        return -1;
    }
    std::array<int, 4> octets = {};
    std::string_view rest = netmask;
    for (int& octet : octets) {
        if (!ReadInt(rest, octet) || !rest.starts_with('.')) {
            break;
        }
        rest.remove_prefix(1);
    }
    int length = 0;
    for (const int octet : octets) {
        length += std::popcount(static_cast<unsigned>(octet) & 0xFFU);
    }
    return length;
}

std::int64_t DurationToSeconds(const std::string& duration) {
    struct Unit {
        char letter;
        std::int64_t seconds;
    };
    constexpr Unit kUnits[] = {{'D', 86400}, {'T', 0}, {'H', 3600}, {'M', 60}, {'S', 1}};

    if (duration.empty()) {
        return -1;
    }
    if (duration.front() != 'P') {
        return 0;
    }
    std::int64_t total = 0;
    std::string_view rest = std::string_view(duration).substr(1);
    for (const Unit& unit : kUnits) {
        const std::size_t found = rest.find(unit.letter);
        if (found != std::string_view::npos) {
            total += ToInt(rest) * unit.seconds;
            rest.remove_prefix(found + 1);
        }
    }
    return total;
}

}  // namespace onvif_client
