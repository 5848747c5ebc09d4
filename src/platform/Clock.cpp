#include "platform/Clock.h"

#include <atomic>
#include <chrono>
#include <random>
#include <thread>

#include "platform/Immortal.h"

namespace onvif_client {

namespace {

class CSystemClock final : public IClock {
 public:
    std::uint32_t TickCount() const override {
        const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
        return start_ +
               static_cast<std::uint32_t>(
                   std::chrono::duration_cast<std::chrono::milliseconds>(sinceStart).count());
    }
    std::int64_t CalendarSeconds() const override {
        return std::chrono::duration_cast<std::chrono::seconds>(
                   std::chrono::system_clock::now().time_since_epoch())
            .count();
    }
    void Sleep(std::uint32_t milliseconds) const override {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    }

 private:
    // Ticks go into nonces: processes that start one right after the other must not repeat them.
    const std::uint32_t start_ = std::random_device{}();
};

std::atomic<const IClock*> clockInForce{nullptr};  // null: the system's

const IClock& Clock() {
    static const CSystemClock& systemClock = MakeImmortal<CSystemClock>();
    const IClock* replacement = clockInForce.load(std::memory_order_acquire);
    return replacement == nullptr ? systemClock : *replacement;
}

}  // namespace

std::uint32_t TickCount() {
    return Clock().TickCount();
}

std::int64_t CalendarSeconds() {
    return Clock().CalendarSeconds();
}

void SleepMilliseconds(std::uint32_t milliseconds) {
    Clock().Sleep(milliseconds);
}

CalendarTime UtcNow() {
    using std::chrono::days;
    const std::chrono::sys_seconds now{std::chrono::seconds(CalendarSeconds())};
    const auto midnight = std::chrono::floor<days>(now);
    const std::chrono::year_month_day date(midnight);
    const std::chrono::hh_mm_ss time(now - midnight);
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            static_cast<int>(time.hours().count()),
            static_cast<int>(time.minutes().count()),
            static_cast<int>(time.seconds().count())};
}

CScopedClock::CScopedClock(const IClock& clock) {
    clockInForce.store(&clock, std::memory_order_release);
}

CScopedClock::~CScopedClock() {
    clockInForce.store(nullptr, std::memory_order_release);
}

}  // namespace onvif_client
