#include "client/DeviceClock.h"

#include <array>

#include "common/HttpHead.h"

namespace onvif_client {

namespace {

constexpr std::uint32_t kSecondMs = 1000;
constexpr std::uint32_t kBetweenLooksMs = 60000;
// Devices show whole seconds, and their replies take their time.
constexpr std::int64_t kNoticeableSeconds = 2;

constexpr std::array<std::string_view, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

int Number(std::string_view digits) {
    constexpr std::size_t kMost = 9999;
    const auto number = StrictNumber(digits);
    return number && *number <= kMost ? static_cast<int>(*number) : -1;
}

}  // namespace

SigningTime CDeviceClock::Now() {
    const CLockGuard guard(lock_);
    // Read under the lock: ticks of another thread's could lie behind those that are kept.
    return {UtcAt(SecondsLocked(TickCount())), clock_};
}

void CDeviceClock::Learn(std::int64_t seconds) {
    const CLockGuard guard(lock_);
    const std::uint32_t now = TickCount();
    const std::int64_t moved = seconds - SecondsLocked(now);
    clock_ += moved > kNoticeableSeconds || moved < -kNoticeableSeconds ? 1 : 0;
    known_ = true;
    seconds_ = seconds;
    ticks_ = now;
}

bool CDeviceClock::TakeLook() {
    const CLockGuard guard(lock_);
    const std::uint32_t now = TickCount();
    if (lookedAt_ && now - *lookedAt_ < kBetweenLooksMs) {
        return false;
    }
    lookedAt_ = now;
    return true;
}

void CDeviceClock::AllowLook() {
    const CLockGuard guard(lock_);
    lookedAt_.reset();
}

void CDeviceClock::NoteRefusal() {
    const CLockGuard guard(lock_);
    refused_ = true;
}

bool CDeviceClock::TakeRefusal() {
    const CLockGuard guard(lock_);
    const bool refused = refused_;
    refused_ = false;
    return refused;
}

std::int64_t CDeviceClock::SecondsLocked(std::uint32_t now) {
    if (!known_) {
        return CalendarSeconds();
    }
    // The ticks that are kept go along, for a difference says nothing after 49 days.
    const std::uint32_t passed = (now - ticks_) / kSecondMs;
    seconds_ += passed;
    ticks_ += passed * kSecondMs;
    return seconds_;
}

std::optional<std::int64_t> ReadHttpDate(std::string_view reply) {
    constexpr std::size_t kSize = std::string_view("Sun, 06 Nov 1994 08:49:37 GMT").size();
    const auto field = FieldValue(TakeUntil(reply, kHeadEnd), "Date");
    const std::string_view date = Trim(field.value_or(""));
    if (date.size() != kSize || !date.ends_with(" GMT")) {
        return std::nullopt;
    }
    CalendarTime utc = {.year = Number(date.substr(12, 4)),
                        .day = Number(date.substr(5, 2)),
                        .hour = Number(date.substr(17, 2)),
                        .minute = Number(date.substr(20, 2)),
                        .second = Number(date.substr(23, 2))};
    for (std::size_t month = 0; month < kMonths.size(); ++month) {
        if (date.substr(8, 3) == kMonths[month]) {
            utc.month = static_cast<int>(month) + 1;
        }
    }
    return SecondsAt(utc);
}

}  // namespace onvif_client
