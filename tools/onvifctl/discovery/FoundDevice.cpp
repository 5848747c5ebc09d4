#include "discovery/FoundDevice.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace onvifctl {

namespace {

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// What follows @p start, which may be written in small or large letters.
std::optional<std::string_view> Behind(std::string_view text, std::string_view start) {
    const bool begins = text.size() >= start.size() &&
                        std::equal(start.begin(), start.end(), text.begin(),
                                   [](char one, char other) { return Lower(one) == Lower(other); });
    return begins ? std::optional(text.substr(start.size())) : std::nullopt;
}

template <typename T>
bool ReadNumber(std::string_view text, T& number, int base = 10) {
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, base);
    return error == std::errc() && stop == end;
}

std::optional<std::uint32_t> ReadDotted(std::string_view text) {
    Ipv4Endpoint address;
    std::string_view rest = text;
    for (int i = 0; i < 4; ++i) {
        const std::size_t end = std::min(rest.find('.'), rest.size());
        std::uint8_t part = 0;
        if (!ReadNumber(rest.substr(0, end), part)) {
            return std::nullopt;
        }
        address.host = address.host << 8U | part;
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    // Nothing but what it would be written as: "010" is 8 to some.
    return address.HostText() == text ? std::optional(address.host) : std::nullopt;
}

std::optional<Ipv4Endpoint> ReadAddress(std::string_view url) {
    constexpr std::uint32_t kThisNetwork = 1U << 24U;   // 1.0.0.0, below are none
    constexpr std::uint32_t kMulticast = 0xE0U << 24U;  // 224.0.0.0, nor above
    const auto rest = Behind(url, "http://");
    if (!rest) {
        return std::nullopt;
    }
    const std::string_view authority = rest->substr(0, rest->find_first_of("/?#"));
    const std::size_t colon = authority.find(':');
    const auto host = ReadDotted(authority.substr(0, colon));
    Ipv4Endpoint address;
    if (!host || *host < kThisNetwork || *host >= kMulticast ||
        (colon != std::string_view::npos &&
         (!ReadNumber(authority.substr(colon + 1), address.port) || address.port == 0))) {
        return std::nullopt;
    }
    address.host = *host;
    return address;
}

std::string Decoded(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::uint8_t byte = 0;
        if (text[i] == '%' && i + 2 < text.size() && ReadNumber(text.substr(i + 1, 2), byte, 16)) {
            decoded += static_cast<char>(byte);
            i += 2;
        } else {
            decoded += text[i];
        }
    }
    return decoded;
}

}  // namespace

std::string Ipv4Endpoint::HostText() const {
    return std::to_string(host >> 24U) + "." + std::to_string(host >> 16U & 0xFFU) + "." +
           std::to_string(host >> 8U & 0xFFU) + "." + std::to_string(host & 0xFFU);
}

std::optional<Ipv4Endpoint> FoundDevice::Address() const {
    constexpr std::uint32_t kLinkLocal = 0xA9FE;  // 169.254
    std::optional<Ipv4Endpoint> best;
    for (const std::string& each : addresses) {
        const auto address = ReadAddress(each);
        if (address && (!best || best->host >> 16U == kLinkLocal)) {
            best = address;
        }
    }
    return best;
}

std::string FoundDevice::Scope(const std::string& kind) const {
    std::string values;
    for (const std::string& each : scopes) {
        const auto value = Behind(each, "onvif://www.onvif.org/" + kind + "/");
        if (value && !value->empty()) {
            values += (values.empty() ? "" : ", ") + Decoded(*value);
        }
    }
    return values;
}

}  // namespace onvifctl
