/// @file
/// In what two documents of one kind differ, for people.
#ifndef ONVIFCTL_FLEET_DIFFERENCES_H
#define ONVIFCTL_FLEET_DIFFERENCES_H

#include <string>
#include <vector>

namespace onvifctl {

/// A line per value: "osd/OSD_1/position/type: 'UpperLeft' -> 'LowerRight'". Statuses do not count.
std::vector<std::string> Differences(const std::string& present, const std::string& wanted);

}  // namespace onvifctl

#endif
