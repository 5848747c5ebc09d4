#include "events/VisitSchedule.h"

#include <algorithm>
#include <limits>

namespace onvif_client {

void CVisitSchedule::CTimers::Arm(Id id, std::int64_t time) {
    const auto found = times_.find(id);
    if (found != times_.end() && found->second <= time) {
        return;  // it is armed anew then
    }
    order_.emplace(time, id);  // first: without memory nothing is lost
    if (found == times_.end()) {
        times_.emplace(id, time);
    } else {
        order_.erase({found->second, id});
        found->second = time;
    }
}

void CVisitSchedule::CTimers::Forget(Id id) {
    if (const auto found = times_.find(id); found != times_.end()) {
        order_.erase({found->second, id});
        times_.erase(found);
    }
}

void CVisitSchedule::CTimers::Expire(std::int64_t now, std::set<Id>& ready) {
    while (!order_.empty() && order_.begin()->first <= now) {
        const Id id = order_.begin()->second;
        ready.insert(id);
        times_.erase(id);
        order_.erase(order_.begin());
    }
}

void CVisitSchedule::SetNow(std::uint32_t ticks, std::int64_t calendarSeconds) {
    milliseconds_ += std::max(static_cast<std::int32_t>(ticks - ticks_), 0);
    ticks_ = ticks;
    spans_.Expire(milliseconds_, ready_);
    const bool setBack = calendarSeconds < calendarSeconds_;
    calendarSeconds_ = calendarSeconds;
    // What was due by a clock that is set back may be due by it now.
    calendar_.Expire(setBack ? std::numeric_limits<std::int64_t>::max() : calendarSeconds, ready_);
}

void CVisitSchedule::Add(Id id, const NextVisit& next) {
    if (next.milliseconds == 0U) {
        Add(id);
    } else if (next.milliseconds) {
        spans_.Arm(id, milliseconds_ + *next.milliseconds);
    }
    if (next.calendarSeconds) {
        calendar_.Arm(id, *next.calendarSeconds);
    }
}

void CVisitSchedule::Forget(Id id) {
    ready_.erase(id);
    spans_.Forget(id);
    calendar_.Forget(id);
}

std::optional<CVisitSchedule::Id> CVisitSchedule::Take(Id from) {
    const auto found = ready_.lower_bound(from);
    if (found == ready_.end()) {
        return std::nullopt;
    }
    const Id id = *found;
    ready_.erase(found);
    return id;
}

}  // namespace onvif_client
