#include "platform/Clock.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <exception>
#include <random>
#include <thread>

#include "platform/PerProcess.h"

namespace onvif_client {

namespace {

std::atomic<const IClock*> clockInForce{nullptr};  // null: the system's

const IClock* Replacement() {
    return clockInForce.load(std::memory_order_acquire);
}

std::uint32_t RandomNumber() {
    try {
        return std::random_device{}();
    } catch (const std::exception&) {
        // The system has none. That the numbers of two processes differ is all that is needed.
        const auto now = std::chrono::system_clock::now().time_since_epoch();
        return static_cast<std::uint32_t>(now.count());
    }
}

/// Ticks go into nonces: processes that start one right after the other must not repeat them, nor
/// may a forked child those of its parent.
std::uint32_t FirstTick() {
    constexpr unsigned int kBits = 32;
    static constinit std::atomic<std::uint64_t> chosen = 0;  // by which process, and the tick
    const std::uint64_t process = ProcessGeneration();
    std::uint64_t first = chosen;
    if (first >> kBits != process) {
        const std::uint64_t own = process << kBits | RandomNumber();
        // Else another thread was before us.
        first = chosen.compare_exchange_strong(first, own) ? own : first;
    }
    return static_cast<std::uint32_t>(first);
}

}  // namespace

std::uint32_t TickCount() {
    if (const IClock* replacement = Replacement()) {
        return replacement->TickCount();
    }
    using std::chrono::milliseconds;
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return FirstTick() +
           static_cast<std::uint32_t>(std::chrono::duration_cast<milliseconds>(sinceStart).count());
}

std::int64_t CalendarSeconds() {
    if (const IClock* replacement = Replacement()) {
        return replacement->CalendarSeconds();
    }
    using std::chrono::seconds;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<seconds>(now).count();
}

void SleepMilliseconds(std::uint32_t milliseconds) {
    if (const IClock* replacement = Replacement()) {
        replacement->Sleep(milliseconds);
    } else {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    }
}

CalendarTime UtcNow() {
    return UtcAt(CalendarSeconds());
}

CalendarTime UtcAt(std::int64_t calendarSeconds) {
    using std::chrono::days;
    const std::chrono::sys_seconds at{std::chrono::seconds(calendarSeconds)};
    const auto midnight = std::chrono::floor<days>(at);
    const std::chrono::year_month_day date(midnight);
    const std::chrono::hh_mm_ss time(at - midnight);
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            static_cast<int>(time.hours().count()),
            static_cast<int>(time.minutes().count()),
            static_cast<int>(time.seconds().count())};
}

std::optional<std::int64_t> SecondsAt(const CalendarTime& utc) {
    constexpr int kFirstYear = 1970;
    constexpr int kLastYear = 9999;
    const auto within = [](int value, int first, int last) {
        return value >= first && value <= last;
    };
    if (!within(utc.year, kFirstYear, kLastYear) || !within(utc.month, 1, 12) ||
        !within(utc.day, 1, 31) || !within(utc.hour, 0, 23) || !within(utc.minute, 0, 59) ||
        !within(utc.second, 0, 60)) {  // 60: a leap second
        return std::nullopt;
    }
    const std::chrono::year_month_day date(std::chrono::year(utc.year),
                                           std::chrono::month(static_cast<unsigned>(utc.month)),
                                           std::chrono::day(static_cast<unsigned>(utc.day)));
    if (!date.ok()) {
        return std::nullopt;
    }
    const std::chrono::sys_seconds at = std::chrono::sys_days(date) + std::chrono::hours(utc.hour) +
                                        std::chrono::minutes(utc.minute) +
                                        std::chrono::seconds(utc.second);
    return at.time_since_epoch().count();
}

CScopedClock::CScopedClock(const IClock& clock) {
    clockInForce.store(&clock, std::memory_order_release);
}

CScopedClock::~CScopedClock() {
    clockInForce.store(nullptr, std::memory_order_release);
}

}  // namespace onvif_client
