/// @file
/// Parts of what all displays of a watch show.
#ifndef ONVIFCTL_WATCH_WATCHTEXTS_H
#define ONVIFCTL_WATCH_WATCHTEXTS_H

#include <chrono>
#include <ctime>
#include <string>

#include "watch/WatchNews.h"

namespace onvifctl {

/// "2026-11-21T14:05:09.123", by LocalTime or UtcTime.
std::string TimeText(std::chrono::system_clock::time_point time, std::tm (*split)(std::time_t));

/// "lost: REASON", "back" ...
/// @param camera  its name, which the reason need not begin with where it stands beside it.
std::string TextOf(const ConnectionChange& change, const std::string& camera);

/// The reason alone.
std::string ReasonBeside(const ConnectionChange& change, const std::string& camera);

/// Tells on standard error how much was lost on the way to the display.
void TellOfLost(const WatchNews& news);

}  // namespace onvifctl

#endif
