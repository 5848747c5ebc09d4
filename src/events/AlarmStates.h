/// @file
/// What the observer of a device knows of its alarms, and when it is told.
#ifndef ONVIF_CLIENT_EVENTS_ALARMSTATES_H
#define ONVIF_CLIENT_EVENTS_ALARMSTATES_H

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "events/AlarmItem.h"
#include "events/ObserverCall.h"

namespace onvif_client {

/// The rules by which a device's observer is told. One thread at a time; the observer may call
/// Silence from inside its callbacks.
class IAlarmStates {
 public:
    virtual ~IAlarmStates() = default;

    /// Takes one item, and tells of it at once or at the next check. One callback at most.
    virtual void Report(const AlarmItem& item, std::uint32_t now) = 0;
    /// @param interrupted  set by a callback: it is the last one.
    virtual void CheckTimes(std::uint32_t now, const bool& interrupted) = 0;
    /// In how many milliseconds a check has something to do, if nothing is reported before; 0: at
    /// the next one.
    virtual std::optional<std::uint32_t> NextCheck(std::uint32_t now) const = 0;
    /// The observer is told nothing any more.
    virtual void Silence() = 0;
};

/// One state for motion and one for all alarm inputs. An alarm item that differs from the state
/// told last is told. An active state that no item confirms for more than 5 s is told again at
/// every check, and after more than 60 s it is told as inactive.
class CAlarmStates final : public IAlarmStates {
 public:
    /// @param observer  not owned; null: nobody is told.
    /// @param device    as log lines name it.
    CAlarmStates(std::uint32_t loginId, CONVIFAlarmStateObserver* observer, std::string device = {})
        : observer_(loginId, observer, std::move(device)) {}

    void Report(const AlarmItem& item, std::uint32_t now) override;
    void CheckTimes(std::uint32_t now, const bool& interrupted) override;
    std::optional<std::uint32_t> NextCheck(std::uint32_t now) const override;
    void Silence() override { observer_.Silence(); }

 private:
    struct Alarm {
        AlarmType type;
        bool state = false;
        std::uint32_t ticks = 0;  // of the last item
    };

    void Tell(const Alarm& alarm) noexcept;

    CObserverCall observer_;
    Alarm alarms_[2] = {{AlarmType::kAlarmInput}, {AlarmType::kMotion}};  // in checking order
};

}  // namespace onvif_client

#endif
