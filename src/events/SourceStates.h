/// @file
/// A state of its own for every source and rule of a device.
#ifndef ONVIF_CLIENT_EVENTS_SOURCESTATES_H
#define ONVIF_CLIENT_EVENTS_SOURCESTATES_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "events/AlarmStates.h"

namespace onvif_client {

/// Motion is active while that of any source is, and so is each alarm input. Changes alone are
/// told, at the next check.
///
/// A state lasts until the device says otherwise or forgets it. It also ends
/// - when the subscription is lost, or nothing came from the device for 180 s;
/// - when the device told the states of its topic anew with a new subscription, and not this one:
///   30 s after the first of them;
/// - 5 s after it began where it is a pulse: a line was crossed.
class CSourceStates final : public IAlarmStates {
 public:
    /// States that are active at once. One more ends that of which the device spoke longest ago.
    static constexpr std::size_t kMostActive = 1024;
    /// Inputs have the numbers from 1 on: those that the device lists in its order, behind them
    /// others in the order in which messages first named them. Relays have those from
    /// kMostInputs + 1 on, in the latter order. Those beyond share the last number of their kind.
    static constexpr std::uint32_t kMostInputs = 1000;

    /// @param observer  not owned; null: nobody is told.
    /// @param device    as log lines name it.
    CSourceStates(std::uint32_t loginId, CONVIFAlarmStateObserver* observer,
                  std::string device = {})
        : observer_(loginId, observer, std::move(device)) {}

    void Report(const AlarmItem& item, std::uint32_t now) override;
    void CheckTimes(std::uint32_t now, const bool& interrupted) override;
    std::optional<std::uint32_t> NextCheck(std::uint32_t now) const override;
    void Silence() override { observer_.Silence(); }

 private:
    /// An alarm of the observer's: motion, or an input's number.
    using Alarm = std::uint32_t;
    static constexpr Alarm kMotionAlarm = 0;
    using Numbers = std::map<std::string, std::uint32_t>;

    struct ActiveState {
        Alarm alarm;
        std::uint32_t ticks;         // when the device spoke of it last
        std::uint32_t subscription;  // in which it did
        bool pulse;
    };
    /// By topic and source.
    using ActiveStates = std::map<std::pair<std::string, std::string>, ActiveState>;

    void ReportSource(const AlarmItem& item, std::uint32_t now);
    void BeginToSettle(const std::string& topic, std::uint32_t now);
    void Settle(std::uint32_t now);
    void Activate(const AlarmItem& item, Alarm alarm, std::uint32_t now);
    ActiveStates::iterator End(ActiveStates::iterator state);
    template <typename Condition>
    void EndWhere(const Condition& condition);
    Alarm AlarmOf(const AlarmItem& item);
    std::uint32_t InputNumber(const std::string& source);
    /// @param before  how many numbers stand before theirs.
    static std::uint32_t NumberIn(Numbers& numbers, const std::string& source,
                                  std::uint32_t before);

    CObserverCall observer_;
    ActiveStates active_;
    std::map<Alarm, std::size_t> activeSources_;  // how many; no alarm has 0
    std::deque<std::pair<Alarm, bool>> untold_;   // changes, in their order
    std::vector<std::string> listedInputs_;       // by token
    Numbers inputs_;                              // the others, by source
    Numbers relays_;
    std::uint32_t heardTicks_ = 0;    // of the device's last word
    std::uint32_t subscription_ = 0;  // how many there have been
    /// Topics whose states the subscription tells anew, and since when. Those of active states of
    /// an earlier one.
    std::map<std::string, std::uint32_t> settling_;
};

}  // namespace onvif_client

#endif
