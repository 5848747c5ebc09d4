#include "bridge/RetainedStates.h"

#include <utility>

namespace onvifctl {

void CRetainedStates::Set(const std::string& topic, const std::string& payload,
                          std::chrono::seconds expiry, Order order) {
    const auto [place, isNew] = states_.try_emplace(topic);
    State& state = place->second;
    if (!isNew && state.payload == payload && state.expiry == expiry) {
        return;
    }
    state.payload = payload;
    state.expiry = expiry;
    if (state.waits && order == Order::kLast) {
        std::erase(waiting_, &place->first);
        state.waits = false;
    }
    Queue(place);
}

void CRetainedStates::Queue(Place place) {
    State& state = place->second;
    refreshes_.erase({state.due, place->first});
    if (sends_ && !std::exchange(state.waits, true)) {
        waiting_.push_back(&place->first);
    }
}

void CRetainedStates::Hold() {
    sends_ = false;
    waiting_.clear();
    for (auto& [topic, state] : states_) {
        state.waits = false;
    }
}

void CRetainedStates::SendAll(const std::string& last) {
    Hold();
    sends_ = true;
    for (auto place = states_.begin(); place != states_.end(); ++place) {
        if (place->first != last) {
            Queue(place);
        }
    }
    if (const auto place = states_.find(last); place != states_.end()) {
        Queue(place);
    }
}

std::optional<Publication> CRetainedStates::Next(Clock::time_point now) {
    while (sends_ && !refreshes_.empty() && refreshes_.begin()->first <= now) {
        Queue(states_.find(refreshes_.begin()->second));
    }
    if (waiting_.empty()) {
        return std::nullopt;
    }
    const auto place = states_.find(*waiting_.front());
    waiting_.pop_front();
    auto& [topic, state] = *place;
    state.waits = false;
    const bool isThere = !state.payload.empty();
    if (isThere && state.expiry.count() > 0) {
        state.due = now + state.expiry / 3;
        refreshes_.emplace(state.due, topic);
    }
    return Publication{
        topic, state.payload, true, isThere ? state.expiry : std::chrono::seconds(0), "", ""};
}

std::optional<CRetainedStates::Clock::time_point> CRetainedStates::NextRefresh() const {
    if (!sends_ || refreshes_.empty()) {
        return std::nullopt;
    }
    return refreshes_.begin()->first;
}

}  // namespace onvifctl
