/// @file
/// Addresses of the kind "http://host:port/path" taken apart. Where the host begins is the reader's
/// own rule: devices write addresses in many ways. Pure functions; any thread.
#ifndef ONVIF_CLIENT_COMMON_HTTPADDRESS_H
#define ONVIF_CLIENT_COMMON_HTTPADDRESS_H

#include <algorithm>
#include <cstddef>
#include <optional>
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

}  // namespace onvif_client

#endif
