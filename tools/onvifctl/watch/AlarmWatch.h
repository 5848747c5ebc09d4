/// @file
/// Many cameras watched at once.
///
/// How a loss is noticed: the library tells an observer states and nothing else, and makes a lost
/// subscription anew after a minute or two, in silence. So each camera is asked something cheap
/// every few seconds, which shows one that is gone but nothing of its events; and the library's log
/// is followed, which says when a device gives no subscription, but not that it has died meanwhile
/// nor why. Then a short subscription of the tool's own makes the device tell the reason. A lost
/// camera gets a new session: its subscription is made at once, and states that ended meanwhile are
/// not taken over. Subscriptions beside the library's are not kept: many devices have but a few.
///
/// The work is done by a small pool; a camera without power must not hold up the others, so some
/// workers are left for those that answer.
#ifndef ONVIFCTL_WATCH_ALARMWATCH_H
#define ONVIFCTL_WATCH_ALARMWATCH_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Connection.h"
#include "ExitCode.h"
#include "watch/LibraryLog.h"
#include "watch/WatchNews.h"
#include "watch/WatchedCamera.h"

namespace onvifctl {

enum class WatchFor {
    kAlarms,
    kEvents,
    kBoth,  // by two sessions at each camera
};

/// Watches cameras while it lives, in the background.
class CAlarmWatch {
 public:
    /// @param cameras  at least one, passwords included. The first one's options are the library's.
    /// @param wake     is called, on any thread, when there is something to take.
    CAlarmWatch(const std::vector<ConnectionOptions>& cameras, WatchFor what,
                std::function<void()> wake);
    /// Breaks off what still runs.
    ~CAlarmWatch();
    CAlarmWatch(const CAlarmWatch&) = delete;
    CAlarmWatch& operator=(const CAlarmWatch&) = delete;

    WatchNews Take() { return news_.Take(); }
    /// Those of kBoth's events, and of the sessions for them.
    WatchNews TakeEvents() { return events_.Take(); }

    /// Whether no camera is left that is watched or tried again.
    bool AllGivenUp() const;
    /// The worst of how the cameras fared last.
    ExitCode Worst() const;

 private:
    using Clock = std::chrono::steady_clock;
    struct Place;
    /// What is to be done, with the earliest first: at places among the cameras.
    using Agenda = std::set<std::pair<Clock::time_point, std::size_t>>;

    void AddPlace(const std::string& host, const WatchedPlace& place,
                  CWatchedCamera::MakeSession makeSession);
    void Work();
    void FollowLog();
    /// The camera that is due, taken from its agenda; nothing: none is, until @p next.
    std::optional<std::size_t> TakeDueLocked(Clock::time_point& next);
    void LookAfter(std::size_t camera, std::unique_lock<std::mutex>& lock);
    void EnterLocked(std::size_t camera, Clock::time_point due);
    void SuspectLocked(const std::string& address);

    const std::function<void()> wake_;
    CWatchNews news_;
    CWatchNews events_;  // a flood of them drops no states
    std::optional<CLibraryLog> log_;
    std::optional<CStartedLibrary> library_;

    mutable std::mutex lock_;           // guards what follows; before that of the news
    std::condition_variable changed_;   // for the workers
    std::condition_variable stopping_;  // for who follows the log
    std::vector<std::unique_ptr<Place>> places_;
    Agenda checks_;
    Agenda logins_;
    std::size_t loginsUnderWay_ = 0;
    std::size_t givenUp_ = 0;
    bool stopped_ = false;
    std::vector<std::jthread> threads_;
};

}  // namespace onvifctl

#endif
