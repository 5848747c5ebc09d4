/// @file
/// The states of cameras as a table that is drawn anew in its place.
#ifndef ONVIFCTL_WATCH_LIVETABLE_H
#define ONVIFCTL_WATCH_LIVETABLE_H

#include <memory>
#include <string>
#include <vector>

#include "watch/WatchDisplay.h"

namespace onvifctl {

/// Null when the output is no terminal, or one with too few rows.
std::unique_ptr<CWatchDisplay> MakeLiveTable(const CDataOutput& output,
                                             const std::vector<std::string>& cameras);

}  // namespace onvifctl

#endif
