/// @file
/// What a session knows of its device's clock, so that requests can be signed by it without being
/// preceded by a look at it. The time is carried on by our ticks: our calendar may be set
/// meanwhile.
#ifndef ONVIF_CLIENT_CLIENT_DEVICECLOCK_H
#define ONVIF_CLIENT_CLIENT_DEVICECLOCK_H

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/Clock.h"
#include "platform/Mutex.h"

namespace onvif_client {

/// The time by which a request is signed.
struct SigningTime {
    CalendarTime utc;
    /// Which clock it is: another number after each reading that showed another time than expected.
    std::uint32_t clock = 0;
};

/// Any thread.
class CDeviceClock {
 public:
    /// The device's time now; this machine's until the clock has been learned.
    SigningTime Now();

    /// The device has just shown this time, in seconds since 1970.
    void Learn(std::int64_t seconds);

    /// Asks whether the clock may be looked at: at most once a minute, so that a wrong password
    /// does not double every exchange. A true answer counts as a look.
    bool TakeLook();
    /// The clock may have been moved: the next look may follow at once.
    void AllowLook();

    /// Notes that a request was refused whose reply came where nothing can be asked.
    void NoteRefusal();
    /// @return true when one was noted since.
    bool TakeRefusal();

 private:
    std::int64_t SecondsLocked(std::uint32_t now) REQUIRES(lock_);

    CMutex lock_;  // leaf
    bool known_ GUARDED_BY(lock_) = false;
    std::int64_t seconds_ GUARDED_BY(lock_) = 0;  // shown at ticks_
    std::uint32_t ticks_ GUARDED_BY(lock_) = 0;
    std::uint32_t clock_ GUARDED_BY(lock_) = 0;
    std::optional<std::uint32_t> lookedAt_ GUARDED_BY(lock_);  // ticks
    bool refused_ GUARDED_BY(lock_) = false;
};

/// The time that the "Date" field of an HTTP reply tells (RFC 9110, IMF-fixdate), in seconds since
/// 1970. @param reply  from the status line on; what stands behind its head is not looked at.
std::optional<std::int64_t> ReadHttpDate(std::string_view reply);

}  // namespace onvif_client

#endif
