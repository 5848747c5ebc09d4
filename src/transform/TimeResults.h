/// @file
/// The device's clock as the security header needs it.
#ifndef ONVIF_CLIENT_TRANSFORM_TIMERESULTS_H
#define ONVIF_CLIENT_TRANSFORM_TIMERESULTS_H

#include <optional>
#include <string>
#include <string_view>

#include "platform/Clock.h"

namespace onvif_client {

/// Reads a reply to GetSystemDateAndTime. When all six fields of its UTC time are there, writes
/// them to the result document at "GetResponse/dateAndTime/UTCDateTime" and forms the time.
/// @return the time as the device's clock shows it, "2019-03-07T08:05:09Z"; empty when a field is
///         missing (@p result then stays as it was).
std::string TransGetSystemDateAndTimeForAuthentication(std::string_view reply, std::string& result);

/// The creation time of a security header from such a result document: missing fields read as an
/// empty year and as 0.
std::string CreatedFromDeviceTime(const std::string& deviceTimeResult);

/// The UTC time of a reply to GetSystemDateAndTime, whether or not a calendar has it; nothing when
/// a field is missing or no number.
std::optional<CalendarTime> ReadDeviceTime(std::string_view reply);

}  // namespace onvif_client

#endif
