/// @file
/// Durations and points in time as XML Schema writes them.
#ifndef CAMERA_SIM_SOAP_TIMES_H
#define CAMERA_SIM_SOAP_TIMES_H

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace camera_sim {

/// A duration that is not negative ("PT60S", "P1DT0.5S"); a year counts 365 days, a month 30.
/// Nothing when @p text is malformed or means more than a hundred years.
std::optional<std::chrono::milliseconds> ParseDuration(std::string_view text);
/// The days and time part of a duration, not negative: "P1DT2H", "PT5S", "PT0.5S".
bool IsDuration(std::string_view text);
std::string FormatDuration(std::chrono::milliseconds duration);

/// The point in time that a dateTime names: "2024-05-06T07:08:09Z", with or without a fraction,
/// which is dropped, and in any zone or none, which is taken for UTC.
std::optional<std::chrono::sys_seconds> ParseDateTime(std::string_view text);
/// "2024-05-06T07:08:09Z"
std::string FormatUtc(std::chrono::sys_seconds time);
/// "2024-05-06T07:08:09.250Z"
std::string FormatUtc(std::chrono::sys_time<std::chrono::milliseconds> time);

}  // namespace camera_sim

#endif
