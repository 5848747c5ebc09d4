/// @file
/// A session at a camera that is watched, from the login to the loss.
#ifndef ONVIFCTL_WATCH_CAMERASESSION_H
#define ONVIFCTL_WATCH_CAMERASESSION_H

#include <chrono>
#include <cstddef>
#include <memory>

#include "Connection.h"
#include "watch/WatchNews.h"

namespace onvifctl {

/// Logged in, with a subscription. For one thread at a time.
class ICameraSession {
 public:
    virtual ~ICameraSession() = default;

    /// The camera counts as watched: from now on its news are told.
    virtual void Begin() = 0;

    /// Whether it still is. Throws CNoSubscription when it is certainly not, and another CFailure
    /// when a second look is needed to know.
    /// @param suspected  the library says that its subscription is lost.
    virtual void Check(bool suspected) = 0;

    /// How long until the next Check.
    virtual std::chrono::milliseconds Pause() const = 0;
};

struct WatchedPlace {
    std::size_t camera;
    CWatchNews& news;
};

/// For motion and alarm inputs, by an observer of the library. Throws CFailure when the login
/// fails.
/// @param pause     between two checks.
/// @param doubtful  the last session ended for want of a subscription, or nobody will tell when
///                  there is none: a device that gives none fails here.
std::unique_ptr<ICameraSession> LogInForAlarms(const ConnectionOptions& options,
                                               const WatchedPlace& place,
                                               std::chrono::milliseconds pause, bool doubtful);
struct PullTimes {
    std::chrono::seconds patience;  // how long a check waits for events
    std::chrono::seconds lifetime;  // of the subscription, between two checks
};

/// For all events of the device, by a subscription of the session's own. Throws CFailure when the
/// login or the subscription fails.
std::unique_ptr<ICameraSession> LogInForEvents(const ConnectionOptions& options,
                                               const WatchedPlace& place, const PullTimes& times);

}  // namespace onvifctl

#endif
