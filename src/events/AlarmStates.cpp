#include "events/AlarmStates.h"

#include <algorithm>

#include "events/Ticks.h"

namespace onvif_client {

namespace {

constexpr std::int32_t kRepeatedAfterMs = 5000;
constexpr std::int32_t kClearedAfterMs = 60000;
/// Which of a device's inputs it was is not told apart.
constexpr unsigned int kAlarmInputNumber = 1;

}  // namespace

void CAlarmStates::Report(const AlarmItem& item, std::uint32_t now) {
    for (Alarm& alarm : alarms_) {
        if (alarm.type != item.type) {
            continue;
        }
        alarm.ticks = now;
        if (alarm.state != item.state) {
            alarm.state = item.state;
            Tell(alarm);
        }
    }
}

void CAlarmStates::CheckTimes(std::uint32_t now, const bool& interrupted) {
    for (Alarm& alarm : alarms_) {
        if (!interrupted && alarm.state && HavePassed(now, alarm.ticks, kClearedAfterMs)) {
            alarm.state = false;
            Tell(alarm);
        }
    }
    for (const Alarm& alarm : alarms_) {
        if (!interrupted && alarm.state && HavePassed(now, alarm.ticks, kRepeatedAfterMs)) {
            Tell(alarm);
        }
    }
}

std::optional<std::uint32_t> CAlarmStates::NextCheck(std::uint32_t now) const {
    std::optional<std::uint32_t> next;
    for (const Alarm& alarm : alarms_) {
        if (alarm.state) {
            const std::uint32_t left = UntilPassed(now, alarm.ticks, kRepeatedAfterMs);
            next = std::min(next.value_or(left), left);
        }
    }
    return next;
}

void CAlarmStates::Tell(const Alarm& alarm) noexcept {
    if (alarm.type == AlarmType::kMotion) {
        observer_.Motion(alarm.state);
    } else {
        observer_.AlarmInput(kAlarmInputNumber, alarm.state);
    }
}

}  // namespace onvif_client
