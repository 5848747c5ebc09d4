/// @file
/// A camera that is watched for as long as the watch lasts, through all of its sessions.
#ifndef ONVIFCTL_WATCH_WATCHEDCAMERA_H
#define ONVIFCTL_WATCH_WATCHEDCAMERA_H

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "ExitCode.h"
#include "watch/CameraSession.h"

namespace onvifctl {

/// For one thread at a time, but for what says otherwise.
class CWatchedCamera {
 public:
    /// Logs in. @p doubtful: as of LogInForAlarms.
    using MakeSession = std::function<std::unique_ptr<ICameraSession>(bool doubtful)>;

    CWatchedCamera(MakeSession makeSession, const WatchedPlace& place)
        : makeSession_(std::move(makeSession)), place_(place) {}

    /// Logs in when there is no session, else checks the one that there is, and tells what changes.
    /// @return when to do so again; nothing: never, since it would do harm or no good.
    std::optional<std::chrono::milliseconds> LookAfter();

    /// What the next LookAfter does.
    bool HasSession() const { return session_ != nullptr; }
    /// How the camera has fared last: kDone while it is watched. Ahead of the news of it. From any
    /// thread.
    ExitCode LastWord() const { return lastWord_; }

    /// The library says that its subscription is lost; for the next check. From any thread.
    void Suspect() { suspected_ = true; }

 private:
    using Clock = std::chrono::steady_clock;

    void LogIn();
    std::chrono::milliseconds Lose(const CFailure& failure);
    void Tell(WatchState state, const std::string& reason = "") const;

    const MakeSession makeSession_;
    const WatchedPlace place_;
    std::unique_ptr<ICameraSession> session_;
    std::atomic<bool> suspected_ = false;
    std::atomic<ExitCode> lastWord_ = ExitCode::kDone;
    bool failedOnce_ = false;    // the last check did
    bool doubtful_ = false;      // the last session or attempt ended for want of a subscription
    unsigned int attempts_ = 0;  // in vain, without a long session between them
    Clock::time_point began_;    // of the session
};

}  // namespace onvifctl

#endif
