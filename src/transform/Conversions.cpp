#include "transform/Conversions.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>

namespace onvif_client {

namespace {

bool IsBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

void SkipBlanks(std::string_view& text) {
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
}

/// As ReadInt; moves @p text behind the number.
std::optional<int> TakeInt(std::string_view& text) {
    SkipBlanks(text);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    if (text.empty() || text.front() < '0' || text.front() > '9') {
        return std::nullopt;
    }
    int magnitude = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), magnitude);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (error == std::errc::result_out_of_range) {
        return negative ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
    }
    return negative ? -magnitude : magnitude;
}

}  // namespace

std::optional<int> ReadInt(std::string_view text) {
    return TakeInt(text);
}

int ToInt(std::string_view text) {
    return ReadInt(text).value_or(0);
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
        octet = TakeInt(rest).value_or(0);
        if (!rest.starts_with('.')) {
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

double ToReal(std::string_view text) {
    SkipBlanks(text);
    if (text.starts_with('+')) {
        text.remove_prefix(1);
    }
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && std::isfinite(value) ? value : 0;
}

std::string DecimalText(double value, int decimals) {
    char text[400];
    const auto [end, error] =
        std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals);
    return error == std::errc() ? std::string(text, end) : std::string("0");
}

bool IsTrue(std::string_view text) {
    return text == "true" || text == "TRUE" || text == "1";
}

}  // namespace onvif_client
