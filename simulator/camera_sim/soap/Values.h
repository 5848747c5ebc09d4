/// @file
/// Reads values out of texts.
#ifndef CAMERA_SIM_SOAP_VALUES_H
#define CAMERA_SIM_SOAP_VALUES_H

#include <optional>
#include <string_view>

namespace camera_sim {

/// Nothing unless the whole text is such a value.
std::optional<int> ToInt(std::string_view text);
/// Finite numbers only.
std::optional<double> ToDouble(std::string_view text);
std::optional<bool> ToBool(std::string_view text);

/// A dotted address.
bool IsIpv4(std::string_view text);
bool IsIpv6(std::string_view text);

}  // namespace camera_sim

#endif
