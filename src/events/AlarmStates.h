/// @file
/// What the observer of a device knows of its alarms, and when it is told.
#ifndef ONVIF_CLIENT_EVENTS_ALARMSTATES_H
#define ONVIF_CLIENT_EVENTS_ALARMSTATES_H

#include <cstdint>

#include "events/AlarmTopics.h"

class CONVIFAlarmStateObserver;

namespace onvif_client {

/// An alarm item that differs from the state told last is told. An active state that no item
/// confirms for more than 5 s is told again at every check, and after more than 60 s it is told as
/// inactive. One thread at a time; the observer may call Silence from inside its callbacks.
class CAlarmStates {
 public:
    /// @param observer  not owned; null: nobody is told.
    CAlarmStates(std::uint32_t loginId, CONVIFAlarmStateObserver* observer)
        : loginId_(loginId), observer_(observer) {}

    void Report(const AlarmItem& item, std::uint32_t now);
    /// @param interrupted  set by a callback: it is the last one.
    void CheckTimes(std::uint32_t now, const bool& interrupted);
    /// The observer is told nothing any more.
    void Silence() { observer_ = nullptr; }

 private:
    struct Alarm {
        AlarmType type;
        bool state = false;
        std::uint32_t ticks = 0;  // of the last item
    };

    void Tell(const Alarm& alarm) noexcept;

    const std::uint32_t loginId_;
    CONVIFAlarmStateObserver* observer_;
    Alarm alarms_[2] = {{AlarmType::kAlarmInput}, {AlarmType::kMotion}};  // in checking order
};

}  // namespace onvif_client

#endif
