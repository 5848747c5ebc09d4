/// @file
/// The only source of ticks, calendar time and sleep. All functions may be called from any thread.
#ifndef ONVIF_CLIENT_PLATFORM_CLOCK_H
#define ONVIF_CLIENT_PLATFORM_CLOCK_H

#include <cstdint>
#include <optional>

namespace onvif_client {

/// A time source. Implementations must allow calls from several threads at once.
class IClock {
 public:
    virtual ~IClock() = default;
    /// Milliseconds since an arbitrary start (another one in every process), monotonic, wrapping at
    /// 2^32: compare by unsigned differences.
    virtual std::uint32_t TickCount() const = 0;
    /// Seconds since 1970-01-01T00:00:00Z.
    virtual std::int64_t CalendarSeconds() const = 0;
    virtual void Sleep(std::uint32_t milliseconds) const = 0;
};

std::uint32_t TickCount();
std::int64_t CalendarSeconds();
void SleepMilliseconds(std::uint32_t milliseconds);

/// A point of calendar time in UTC; month and day count from 1.
struct CalendarTime {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

CalendarTime UtcNow();

/// The point that is so many seconds behind 1970-01-01T00:00:00Z.
CalendarTime UtcAt(std::int64_t calendarSeconds);
/// The reverse, from 1970 to 9999; nothing for a point that the calendar does not have.
std::optional<std::int64_t> SecondsAt(const CalendarTime& utc);

/// For tests: puts another clock in the place of the system's while it lives. The clock must
/// outlive it. One at a time, and not while another thread is being started.
class CScopedClock {
 public:
    explicit CScopedClock(const IClock& clock);
    ~CScopedClock();
    CScopedClock(const CScopedClock&) = delete;
    CScopedClock& operator=(const CScopedClock&) = delete;
};

}  // namespace onvif_client

#endif
