/// @file
/// What a device told of an alarm. Values.
#ifndef ONVIF_CLIENT_EVENTS_ALARMITEM_H
#define ONVIF_CLIENT_EVENTS_ALARMITEM_H

#include <cstdint>
#include <string>

namespace onvif_client {

enum class AlarmType : std::uint32_t {
    kNone = 0,  ///< no alarm topic
    kMotion = 1,
    kAlarmInput = 2,
    kRelay = 3,  ///< told apart from inputs where every source has a state of its own
};

enum class AlarmNews {
    kState,         ///< the item's state is the source's from now on
    kPulse,         ///< something happened that has no state
    kGone,          ///< the device forgot the source
    kInput,         ///< no message; the device's next input, whose token the source is
    kAnswer,        ///< no message; the device answered a pull as it should
    kSubscription,  ///< no message; what follows comes from a new subscription
    kLoss,          ///< no message; the device gave no new subscription
};

/// One state that a device told.
struct AlarmItem {
    AlarmType type = AlarmType::kNone;
    bool state = false;  ///< true: the alarm is on

    // For states by source (SourceStates) alone; with one state for a device nothing sets them.
    AlarmNews news = AlarmNews::kState;
    bool initial = false;     ///< told because the subscription is new, not because it changed
    std::string topic = {};   ///< without prefixes
    std::string source = {};  ///< the sources, and the rule, that the message names, in fixed order
};

}  // namespace onvif_client

#endif
