#include "camera_sim/events/EventHub.h"

#include <algorithm>
#include <utility>

namespace camera_sim {
namespace {

const Property* FindSame(const std::vector<Property>& list, const Property& wanted) {
    const auto found = std::find_if(list.begin(), list.end(), [&](const Property& candidate) {
        return candidate.kind == wanted.kind && candidate.token == wanted.token;
    });
    return found == list.end() ? nullptr : &*found;
}

}  // namespace

Subscription* CEventHub::Add(Clock::duration term, CTopicFilter filter,
                             std::optional<NotifyTarget> consumer, const CameraState& state) {
    if (All().size() >= options_.maxSubscriptions) {
        return nullptr;
    }
    Subscription& subscription = subscriptions_[++lastId_];
    subscription.id = lastId_;
    subscription.term = term;
    subscription.end = Clock::now() + term;
    subscription.filter = std::move(filter);
    subscription.consumer = std::move(consumer);
    Synchronize(subscription, state);
    return &subscription;
}

Subscription* CEventHub::Find(std::uint64_t id) {
    const auto found = subscriptions_.find(id);
    if (found == subscriptions_.end()) {
        return nullptr;
    }
    if (found->second.end > Clock::now()) {
        return &found->second;
    }
    subscriptions_.erase(found);
    return nullptr;
}

std::map<std::uint64_t, Subscription>& CEventHub::All() {
    std::erase_if(subscriptions_,
                  [now = Clock::now()](const auto& entry) { return entry.second.end <= now; });
    return subscriptions_;
}

void CEventHub::Synchronize(Subscription& subscription, const CameraState& state) {
    for (const Property& property : ListProperties(state)) {
        for (EventMessage& message : MakeMessages(options_, state, property, "Initialized")) {
            Queue(subscription, std::make_shared<const EventMessage>(std::move(message)));
        }
    }
}

std::size_t CEventHub::Observe(const CameraState& state) {
    std::vector<Property> current = ListProperties(state);
    std::size_t count = 0;
    const auto publish = [&](const Property& property, std::string_view operation) {
        for (EventMessage& made : MakeMessages(options_, state, property, operation)) {
            const auto message = std::make_shared<const EventMessage>(std::move(made));
            for (auto& [id, subscription] : All()) {
                Queue(subscription, message);
            }
            ++count;
        }
    };
    for (const Property& property : current) {
        const Property* before = FindSame(known_, property);
        if (before == nullptr || before->active != property.active) {
            publish(property, before == nullptr ? "Initialized" : "Changed");
        }
    }
    for (const Property& property : known_) {
        if (FindSame(current, property) == nullptr) {
            publish(property, "Deleted");
        }
    }
    known_ = std::move(current);
    return count;
}

void CEventHub::Queue(Subscription& subscription, std::shared_ptr<const EventMessage> message) {
    if (!subscription.filter.Accepts(*message->topic)) {
        return;
    }
    subscription.queue.push_back(std::move(message));
    while (subscription.queue.size() > options_.messageQueueLimit) {
        subscription.queue.pop_front();
        ++subscription.dropped;
    }
}

}  // namespace camera_sim
