#include "events/SourceStates.h"

#include <algorithm>

#include "events/Ticks.h"

namespace onvif_client {

namespace {

constexpr std::int32_t kUnheardMs = 180'000;
constexpr std::int32_t kSettledMs = 30'000;
constexpr std::int32_t kPulseMs = 5000;

}  // namespace

void CSourceStates::Report(const AlarmItem& item, std::uint32_t now) {
    switch (item.news) {
        case AlarmNews::kState:
        case AlarmNews::kPulse:
        case AlarmNews::kGone:
            ReportSource(item, now);
            break;
        case AlarmNews::kInput:
            if (listedInputs_.size() < kMostInputs) {
                listedInputs_.push_back(item.source);
            }
            break;
        case AlarmNews::kAnswer:
            break;
        case AlarmNews::kSubscription:
            ++subscription_;
            settling_.clear();
            break;
        case AlarmNews::kLoss:
            EndWhere([](const auto&, const ActiveState&) { return true; });
            return;
    }
    heardTicks_ = now;
}

void CSourceStates::ReportSource(const AlarmItem& item, std::uint32_t now) {
    if (item.initial) {
        BeginToSettle(item.topic, now);
    }
    if (item.type == AlarmType::kNone) {
        return;
    }
    const Alarm alarm = AlarmOf(item);
    if (item.news == AlarmNews::kPulse || (item.news == AlarmNews::kState && item.state)) {
        Activate(item, alarm, now);
    } else if (const auto found = active_.find({item.topic, item.source}); found != active_.end()) {
        End(found);
    }
}

void CSourceStates::BeginToSettle(const std::string& topic, std::uint32_t now) {
    const bool hasOld = std::any_of(active_.begin(), active_.end(), [&](const auto& each) {
        return each.first.first == topic && each.second.subscription != subscription_;
    });
    if (hasOld) {
        settling_.emplace(topic, now);
    }
}

void CSourceStates::Settle(std::uint32_t now) {
    std::erase_if(settling_, [&](const auto& topic) {
        const bool settled = HavePassed(now, topic.second, kSettledMs);
        if (settled) {
            EndWhere([&](const auto& key, const ActiveState& state) {
                return key.first == topic.first && state.subscription != subscription_;
            });
        }
        return settled;
    });
}

void CSourceStates::Activate(const AlarmItem& item, Alarm alarm, std::uint32_t now) {
    const bool pulse = item.news == AlarmNews::kPulse;
    const ActiveState news = {alarm, now, subscription_, pulse};
    const auto [place, added] = active_.try_emplace({item.topic, item.source}, news);
    if (!added) {
        ActiveState& state = place->second;  // goes on for the alarm that it began
        state.ticks = now;
        state.subscription = subscription_;
        state.pulse = pulse && state.pulse;  // a state is not shortened
        return;
    }
    if (++activeSources_[alarm] == 1) {
        untold_.emplace_back(alarm, true);
    }
    if (active_.size() > kMostActive) {
        End(std::min_element(active_.begin(), active_.end(), [now](const auto& a, const auto& b) {
            return now - a.second.ticks > now - b.second.ticks;
        }));
    }
}

CSourceStates::ActiveStates::iterator CSourceStates::End(ActiveStates::iterator state) {
    const auto sources = activeSources_.find(state->second.alarm);
    if (--sources->second == 0) {
        untold_.emplace_back(sources->first, false);
        activeSources_.erase(sources);
    }
    return active_.erase(state);
}

template <typename Condition>
void CSourceStates::EndWhere(const Condition& condition) {
    for (auto each = active_.begin(); each != active_.end();) {
        each = condition(each->first, each->second) ? End(each) : std::next(each);
    }
}

CSourceStates::Alarm CSourceStates::AlarmOf(const AlarmItem& item) {
    switch (item.type) {
        case AlarmType::kAlarmInput:
            return InputNumber(item.source);
        case AlarmType::kRelay:
            return kMostInputs + NumberIn(relays_, item.source, 0);
        default:
            return kMotionAlarm;
    }
}

std::uint32_t CSourceStates::InputNumber(const std::string& source) {
    const auto listed =
        std::find_if(listedInputs_.begin(), listedInputs_.end(), [&](const std::string& token) {
            return source.find("=" + token + "\n") != std::string::npos;
        });
    const auto before = static_cast<std::uint32_t>(listed - listedInputs_.begin());
    return listed == listedInputs_.end() ? NumberIn(inputs_, source, before) : before + 1;
}

std::uint32_t CSourceStates::NumberIn(Numbers& numbers, const std::string& source,
                                      std::uint32_t before) {
    const auto next = before + static_cast<std::uint32_t>(numbers.size()) + 1;
    const auto found = numbers.find(source);
    if (found == numbers.end() && next < kMostInputs) {
        numbers.emplace(source, next);
    }
    return found == numbers.end() ? std::min(next, kMostInputs) : found->second;
}

void CSourceStates::CheckTimes(std::uint32_t now, const bool& interrupted) {
    const bool unheard = HavePassed(now, heardTicks_, kUnheardMs);
    Settle(now);
    EndWhere([&](const auto&, const ActiveState& state) {
        return state.pulse ? HavePassed(now, state.ticks, kPulseMs) : unheard;
    });
    while (!untold_.empty() && !interrupted) {
        const auto [alarm, state] = untold_.front();
        untold_.pop_front();
        if (alarm == kMotionAlarm) {
            observer_.Motion(state);
        } else {
            observer_.AlarmInput(alarm, state);
        }
    }
}

std::optional<std::uint32_t> CSourceStates::NextCheck(std::uint32_t now) const {
    if (!untold_.empty()) {
        return 0;
    }
    std::optional<std::uint32_t> next;
    const auto notAfter = [&](std::uint32_t left) { next = std::min(next.value_or(left), left); };
    for (const auto& [topic, since] : settling_) {
        notAfter(UntilPassed(now, since, kSettledMs));
    }
    for (const auto& [key, state] : active_) {
        notAfter(state.pulse ? UntilPassed(now, state.ticks, kPulseMs)
                             : UntilPassed(now, heardTicks_, kUnheardMs));
    }
    return next;
}

}  // namespace onvif_client
