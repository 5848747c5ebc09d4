/// @file
/// A clock that stands still until a test moves it.
#ifndef ONVIF_CLIENT_TESTS_SUPPORT_MOVEDCLOCK_H
#define ONVIF_CLIENT_TESTS_SUPPORT_MOVEDCLOCK_H

#include <atomic>

#include "platform/Clock.h"

namespace client_test {

/// Starts shortly before the ticks wrap.
struct CMovedClock : onvif_client::IClock {
    std::uint32_t TickCount() const override { return ticks; }
    std::int64_t CalendarSeconds() const override { return calendar; }
    void Sleep(std::uint32_t) const override {}

    std::atomic<std::uint32_t> ticks = 0xFFFFFF00U;
    std::atomic<std::int64_t> calendar = 1'551'945'909;  // 2019-03-07T08:05:09Z
};

}  // namespace client_test

#endif
