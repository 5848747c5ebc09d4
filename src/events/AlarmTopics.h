/// @file
/// What a device's notification is about: from its topic to an alarm type, from its value to a
/// state. Pure functions; any thread.
#ifndef ONVIF_CLIENT_EVENTS_ALARMTOPICS_H
#define ONVIF_CLIENT_EVENTS_ALARMTOPICS_H

#include <cstdint>
#include <string_view>

namespace onvif_client {

enum class AlarmType : std::uint32_t {
    kNone = 0,  ///< no alarm topic
    kMotion = 1,
    kAlarmInput = 2,
};

/// One state that a device told.
struct AlarmItem {
    AlarmType type = AlarmType::kNone;
    bool state = false;  ///< true: the alarm is on
};

/// The type for the topic of a message that was pulled. A relay counts as an alarm input, and every
/// topic of the rule engine as motion.
AlarmType ClassifyPulledTopic(std::string_view topic);

/// The type for the topic of a message that the device posted. Of the rule engine's topics this
/// knows cell motion alone.
AlarmType ClassifyNotifiedTopic(std::string_view topic);

}  // namespace onvif_client

#endif
