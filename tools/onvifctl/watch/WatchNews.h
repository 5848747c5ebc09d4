/// @file
/// What a watch learns, on its way from the threads that learn it to the one that shows it.
#ifndef ONVIFCTL_WATCH_WATCHNEWS_H
#define ONVIFCTL_WATCH_WATCHNEWS_H

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace onvifctl {

enum class WatchState {
    kWatched,  // for the first time
    kLost,     // its states are unknown; it is tried again
    kBack,     // its states begin anew: nothing is active that is not told of
    kGivenUp,  // as lost, but it is not tried again
};

/// What the news of all kinds begin with.
struct CameraMoment {
    std::chrono::system_clock::time_point time;
    std::size_t camera = 0;  // its place among the cameras
};

struct ConnectionChange : CameraMoment {
    WatchState state = WatchState::kWatched;
    std::string reason;  // of a loss, for people
};

struct AlarmChange : CameraMoment {
    std::optional<unsigned int> input;  // the number of an alarm input; nothing: motion
    bool active = false;
};

/// A notification as the device sent it; texts are empty where it has none.
struct DeviceEvent : CameraMoment {
    using Items = std::vector<std::pair<std::string, std::string>>;  // names and values
    std::string topic;
    std::string operation;  // "Initialized", "Changed" or "Deleted"
    std::string deviceTime;
    Items source;
    Items key;
    Items data;
};

using News = std::variant<ConnectionChange, AlarmChange, DeviceEvent>;

const CameraMoment& MomentOf(const News& news);

struct WatchNews {
    std::deque<News> items;  // in their order
    std::size_t lost = 0;    // items before these that nobody took in time
};

/// What has happened since it was last taken. May be used from any thread; nobody waits for who
/// takes.
class CWatchNews {
 public:
    /// @p wake is called, on any thread, when the first news has come since the last Take.
    explicit CWatchNews(std::function<void()> wake) : wake_(std::move(wake)) {}

    /// What is too much drops the oldest.
    void Add(News news);
    WatchNews Take();

 private:
    const std::function<void()> wake_;
    std::mutex lock_;  // guards what follows; a leaf
    WatchNews waiting_;
    std::size_t bytes_ = 0;
    bool woken_ = false;
};

}  // namespace onvifctl

#endif
