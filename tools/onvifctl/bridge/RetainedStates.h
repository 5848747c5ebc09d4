/// @file
/// What the broker is to retain: the latest payload of each topic, however often it changes, until
/// the broker takes it; all of it again for each new connection, and now and then, since the broker
/// forgets each by itself.
#ifndef ONVIFCTL_BRIDGE_RETAINEDSTATES_H
#define ONVIFCTL_BRIDGE_RETAINEDSTATES_H

#include <chrono>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "bridge/Broker.h"

namespace onvifctl {

/// For one thread. It grows with the number of topics alone.
class CRetainedStates {
 public:
    using Clock = std::chrono::steady_clock;

    enum class Order {
        kAny,   // changes of one topic that wait become one, in the place of the first
        kLast,  // behind all that waits now
    };

    /// @p payload: empty for one that is not known any more, which takes it from the broker.
    /// @p expiry: it is refreshed three times in it.
    void Set(const std::string& topic, const std::string& payload, std::chrono::seconds expiry,
             Order order = Order::kAny);
    bool Has(const std::string& topic) const { return states_.contains(topic); }

    /// The broker is away: nothing is waiting, whatever changes.
    void Hold();

    /// It is back, and nobody knows what it has: all topics are waiting, also those to be taken
    /// from it, and @p last behind the others.
    void SendAll(const std::string& last);

    /// The next that is waiting or has to be refreshed by now.
    std::optional<Publication> Next(Clock::time_point now);

    bool IsWaiting() const { return !waiting_.empty(); }
    /// When something has to be refreshed.
    std::optional<Clock::time_point> NextRefresh() const;

 private:
    struct State {
        std::string payload;
        std::chrono::seconds expiry{0};
        bool waits = false;
        Clock::time_point due{};  // in refreshes_, unless it waits or is empty
    };
    using Place = std::map<std::string, State>::iterator;

    void Queue(Place place);

    std::map<std::string, State> states_;
    std::deque<const std::string*> waiting_;  // keys of states_
    std::set<std::pair<Clock::time_point, std::string>> refreshes_;
    bool sends_ = false;
};

}  // namespace onvifctl

#endif
