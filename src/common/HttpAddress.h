/// @file
/// Addresses of the kind "http://host:port/path" taken apart, and put into requests. Where the host
/// begins is the reader's own rule: devices write addresses in many ways. Pure functions; any
/// thread.
#ifndef ONVIF_CLIENT_COMMON_HTTPADDRESS_H
#define ONVIF_CLIENT_COMMON_HTTPADDRESS_H

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace onvif_client {

inline constexpr std::string_view kHttpScheme = "http://";

struct HttpAddress {
    std::string_view scheme;  ///< what stands before the host
    std::string_view host;    ///< with the port, if the address has one
    std::string_view path;    ///< from "/" on; empty without one

    /// The path as request lines put it together: without its slash.
    constexpr std::string_view PathBehindSlash() const {
        return path.substr(std::min<std::size_t>(1, path.size()));
    }
};

/// Where the text behind the first @p mark begins, wherever that stands; nothing without one.
constexpr std::optional<std::size_t> Behind(std::string_view address, std::string_view mark) {
    const std::size_t found = address.find(mark);
    return found == std::string_view::npos ? std::nullopt : std::optional(found + mark.size());
}

/// @param hostAt  where the host begins, within the address.
constexpr HttpAddress SplitAddress(std::string_view address, std::size_t hostAt) {
    const std::size_t slash = std::min(address.find('/', hostAt), address.size());
    return {address.substr(0, hostAt), address.substr(hostAt, slash - hostAt),
            address.substr(slash)};
}

/// Without the white space of XML around it, which is no part of an address.
constexpr std::string_view TrimAddress(std::string_view address) {
    constexpr std::string_view kWhiteSpace = " \t\r\n";
    address.remove_prefix(std::min(address.find_first_not_of(kWhiteSpace), address.size()));
    return address.substr(0, address.find_last_not_of(kWhiteSpace) + 1);
}

constexpr bool IsControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == '\x7F';
}

/// A path or host as it goes into the head of a request: blanks and control characters, which would
/// end the word or the line there, are percent-encoded (RFC 3986). All others stay as they are.
inline std::string HeadText(std::string_view text) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string encoded;
    encoded.reserve(text.size());
    for (const char c : text) {
        if (c == ' ' || IsControl(c)) {
            const auto byte = static_cast<unsigned char>(c);
            encoded.append({'%', kDigits[byte >> 4U], kDigits[byte & 0xFU]});
        } else {
            encoded += c;
        }
    }
    return encoded;
}

}  // namespace onvif_client

#endif
