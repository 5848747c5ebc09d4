/// @file
/// What a watch learns as lines, as JSON and as a live table.
#ifndef ONVIFCTL_WATCH_WATCHDISPLAY_H
#define ONVIFCTL_WATCH_WATCHDISPLAY_H

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "output/DataOutput.h"
#include "watch/WatchNews.h"

namespace onvifctl {

/// Shows what a watch learns. For one thread.
class CWatchDisplay {
 public:
    virtual ~CWatchDisplay() = default;

    /// Throws CFailure when the output is gone.
    virtual void Show(const WatchNews& news) = 0;

    /// How long the display may wait for the next Show; no news are fine then.
    virtual std::chrono::milliseconds Patience() const {
        constexpr std::chrono::hours kAnyTime(1);
        return kAnyTime;
    }

    /// Nothing more will be shown.
    virtual void Finish() {}
};

enum class WatchFormat {
    kLines,
    kJson,
    kLive,  // a table where it fits on the terminal, else lines
};

/// What a watch shows as JSON of a camera with that name, without a line break behind it.
std::string JsonOf(const News& news, const std::string& camera);

/// @param cameras  their names, in their order; output and names must outlive the display.
std::unique_ptr<CWatchDisplay> MakeWatchDisplay(WatchFormat format, const CDataOutput& output,
                                                const std::vector<std::string>& cameras);

}  // namespace onvifctl

#endif
