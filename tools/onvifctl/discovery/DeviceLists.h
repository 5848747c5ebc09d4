/// @file
/// Found devices as texts, each a form of its own.
#ifndef ONVIFCTL_DISCOVERY_DEVICELISTS_H
#define ONVIFCTL_DISCOVERY_DEVICELISTS_H

#include <string>
#include <vector>

#include "discovery/FoundDevice.h"

namespace onvifctl {

/// For people; printable.
std::string DeviceTable(const std::vector<FoundDevice>& devices);

/// A JSON object per line.
std::string DeviceJson(const std::vector<FoundDevice>& devices);

/// Tables of the hosts file, which is TOML, of those that have an address; each has its own name.
std::string DeviceHosts(const std::vector<FoundDevice>& devices);

}  // namespace onvifctl

#endif
