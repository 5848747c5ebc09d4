/// @file
/// The subscriptions of a camera and the messages that wait in them.
#ifndef CAMERA_SIM_EVENTS_EVENTHUB_H
#define CAMERA_SIM_EVENTS_EVENTHUB_H

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "camera_sim/events/EventTopics.h"

namespace camera_sim {

/// Where a consumer on 127.0.0.1 takes notifications.
struct NotifyTarget {
    std::string address;  ///< as the consumer gave it
    std::uint16_t port = 0;
    std::string path;
};

struct Subscription {
    using Clock = std::chrono::steady_clock;

    std::uint64_t id = 0;  ///< never used twice
    Clock::duration term{};
    Clock::time_point end{};
    CTopicFilter filter;
    std::optional<NotifyTarget> consumer;  ///< nothing: a pull point
    bool posting = false;                  ///< a notification is on its way to the consumer
    std::deque<std::shared_ptr<const EventMessage>> queue;
    std::uint64_t delivered = 0;
    std::uint64_t dropped = 0;
};

/// A pull that waits for a message.
struct PullWait {
    std::uint64_t subscription = 0;
    std::size_t limit = 0;
    Subscription::Clock::time_point until{};
    std::string action;     ///< of the answer; empty: no addressing headers
    std::string relatesTo;  ///< empty: none
};

/// Not safe for use by several threads at once.
class CEventHub {
 public:
    using Clock = Subscription::Clock;

    /// @p options must outlive the hub.
    explicit CEventHub(const CameraOptions& options) : options_(options) {}

    /// A new subscription; the current state of every property waits in it. Null when there are
    /// too many.
    Subscription* Add(Clock::duration term, CTopicFilter filter,
                      std::optional<NotifyTarget> consumer, const CameraState& state);
    /// Null when it is unknown or has expired.
    Subscription* Find(std::uint64_t id);
    bool Remove(std::uint64_t id) { return subscriptions_.erase(id) > 0; }
    void Clear() { subscriptions_.clear(); }
    /// Those that have not expired, oldest first.
    std::map<std::uint64_t, Subscription>& All();

    /// Adds the state of all properties to what waits.
    void Synchronize(Subscription& subscription, const CameraState& state);
    /// Compares the properties with those of the last call and queues a message for every
    /// difference. The number of messages.
    std::size_t Observe(const CameraState& state);

 private:
    void Queue(Subscription& subscription, std::shared_ptr<const EventMessage> message);

    const CameraOptions& options_;
    std::map<std::uint64_t, Subscription> subscriptions_;
    std::uint64_t lastId_ = 0;
    std::vector<Property> known_;
};

}  // namespace camera_sim

#endif
