/// @file
/// What a device's notification is about: from its topic to an alarm type. Pure functions; any
/// thread.
#ifndef ONVIF_CLIENT_EVENTS_ALARMTOPICS_H
#define ONVIF_CLIENT_EVENTS_ALARMTOPICS_H

#include <string_view>

#include "events/AlarmItem.h"

namespace onvif_client {

/// The type for the topic of a message that was pulled. A relay counts as an alarm input, and every
/// topic of the rule engine as motion.
AlarmType ClassifyPulledTopic(std::string_view topic);

/// The type for the topic of a message that the device posted. Of the rule engine's topics this
/// knows cell motion alone.
AlarmType ClassifyNotifiedTopic(std::string_view topic);

}  // namespace onvif_client

#endif
