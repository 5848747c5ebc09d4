/// @file
/// A device as it presents itself when it is searched for, in its own words.
#ifndef ONVIFCTL_DISCOVERY_FOUNDDEVICE_H
#define ONVIFCTL_DISCOVERY_FOUNDDEVICE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace onvifctl {

/// Where a device is reached over HTTP.
struct Ipv4Endpoint {
    std::uint32_t host = 0;  // 192.168.1.64 is 0xC0A80140
    std::uint16_t port = 80;

    std::uint64_t Order() const { return std::uint64_t{host} << 16U | port; }
    std::string HostText() const;
    std::string Text() const { return HostText() + ":" + std::to_string(port); }
};

struct FoundDevice {
    std::string endpoint;                // what it is called for ever; empty: it does not tell
    std::vector<std::string> addresses;  // of its device service, any kind of URL
    std::vector<std::string> types;      // without prefixes
    std::vector<std::string> scopes;

    /// The first address that is HTTP and IPv4, one that it gave itself (169.254) behind all
    /// others.
    std::optional<Ipv4Endpoint> Address() const;
    /// What stands behind "onvif://www.onvif.org/KIND/" in its scopes, decoded, several with commas
    /// between; empty when nothing does.
    std::string Scope(const std::string& kind) const;
};

}  // namespace onvifctl

#endif
