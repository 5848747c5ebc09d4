/// @file
/// Which devices the control loop has to visit, and when: those that do nothing cost nothing.
#ifndef ONVIF_CLIENT_EVENTS_VISITSCHEDULE_H
#define ONVIF_CLIENT_EVENTS_VISITSCHEDULE_H

#include <cstdint>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>

namespace onvif_client {

/// When the rules have something to do with a device, if nothing happens to it before. Visits that
/// find nothing to do are harmless, so each time may also be too early.
struct NextVisit {
    std::optional<std::uint32_t> milliseconds;  ///< from now on; 0: at the next pass
    std::optional<std::int64_t> calendarSeconds;

    void NotAfter(std::optional<std::uint32_t> other) {
        if (other && (!milliseconds || *other < *milliseconds)) {
            milliseconds = other;
        }
    }
};

/// A value without lock or clock. What throws std::bad_alloc has lost nothing that was held.
class CVisitSchedule {
 public:
    using Id = std::uint64_t;

    /// What time it is; times only count from the first of these on.
    void SetNow(std::uint32_t ticks, std::int64_t calendarSeconds);

    /// The device is to be visited.
    void Add(Id id) { ready_.insert(id); }
    /// The same later.
    void Add(Id id, const NextVisit& next);
    void Forget(Id id);
    void Clear() { ready_.clear(); }

    /// Takes the smallest id of at least @p from that is to be visited now; nothing without one.
    std::optional<Id> Take(Id from);

 private:
    /// One point of time for an id, the earliest that was asked for.
    class CTimers {
     public:
        void Arm(Id id, std::int64_t time);
        void Forget(Id id);
        /// Moves the ids whose time has come.
        void Expire(std::int64_t now, std::set<Id>& ready);

     private:
        std::unordered_map<Id, std::int64_t> times_;
        std::set<std::pair<std::int64_t, Id>> order_;
    };

    std::set<Id> ready_;
    CTimers spans_;     // by milliseconds_
    CTimers calendar_;  // by seconds of the calendar
    std::uint32_t ticks_ = 0;
    std::int64_t milliseconds_ = 0;  // the ticks, without their wrapping
    std::int64_t calendarSeconds_ = 0;
};

}  // namespace onvif_client

#endif
