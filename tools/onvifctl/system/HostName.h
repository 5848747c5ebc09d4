/// @file
/// Names of hosts.
#ifndef ONVIFCTL_SYSTEM_HOSTNAME_H
#define ONVIFCTL_SYSTEM_HOSTNAME_H

#include <optional>
#include <string>

namespace onvifctl {

/// The first dotted IPv4 address of a name; nothing when none is known. Thread-safe.
std::optional<std::string> DottedAddressOf(const std::string& name);

}  // namespace onvifctl

#endif
