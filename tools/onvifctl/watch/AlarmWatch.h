/// @file
/// Logins at many cameras at once, and what their alarm states do from then on.
#ifndef ONVIFCTL_WATCH_ALARMWATCH_H
#define ONVIFCTL_WATCH_ALARMWATCH_H

#include <atomic>
#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Connection.h"
#include "ExitCode.h"

namespace onvifctl {

struct AlarmChange {
    std::chrono::system_clock::time_point time;
    std::size_t camera = 0;             // its place among the hosts
    std::optional<unsigned int> input;  // the number of an alarm input; nothing: motion
    bool active = false;
};

struct LoginOutcome {
    std::size_t camera = 0;
    ExitCode code = ExitCode::kDone;
    std::string message;  // of a failure

    bool Failed() const { return code != ExitCode::kDone; }
};

struct AlarmNews {
    std::vector<LoginOutcome> logins;
    std::deque<AlarmChange> changes;
    std::size_t lost = 0;  // changes before these that nobody took in time
};

/// What has happened since it was last taken. May be used from any thread.
class CAlarmNews {
 public:
    /// @p wake is called, on any thread, when the first news has come since the last Take.
    explicit CAlarmNews(std::function<void()> wake) : wake_(std::move(wake)) {}

    void Add(LoginOutcome outcome);
    void Add(const AlarmChange& change);
    AlarmNews Take();

 private:
    void WakeOnceLocked();

    const std::function<void()> wake_;
    std::mutex lock_;  // guards what follows; a leaf
    AlarmNews waiting_;
    bool woken_ = false;
};

/// Watches cameras while it lives. The logins run in the background.
class CAlarmWatch {
 public:
    /// @param options  credentials for all, the password included.
    CAlarmWatch(const ConnectionOptions& options, const std::vector<std::string>& hosts,
                std::function<void()> wake);
    /// Breaks off logins that still run.
    ~CAlarmWatch();
    CAlarmWatch(const CAlarmWatch&) = delete;
    CAlarmWatch& operator=(const CAlarmWatch&) = delete;

    AlarmNews Take() { return news_.Take(); }

 private:
    class CCamera;

    void LogInOneAfterTheOther();

    CAlarmNews news_;
    std::optional<CStartedLibrary> library_;
    std::vector<std::unique_ptr<CCamera>> cameras_;
    std::atomic<std::size_t> next_ = 0;  // the first camera that no thread has taken
    std::vector<std::jthread> threads_;
};

}  // namespace onvifctl

#endif
