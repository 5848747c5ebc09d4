/// @file
/// Result documents for people.
#ifndef ONVIFCTL_RESULTTABLE_H
#define ONVIFCTL_RESULTTABLE_H

#include <string>
#include <vector>

namespace onvifctl {

/// A result document as aligned text: a section per command, a line per value; repeated elements
/// stand side by side.
std::string FormatTable(const std::string& result);

/// What the device refused: "COMMAND: description (error N)" per status "fail".
std::vector<std::string> Refusals(const std::string& result);

}  // namespace onvifctl

#endif
