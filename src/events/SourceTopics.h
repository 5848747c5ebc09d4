/// @file
/// What the messages of many makes mean, where every source has a state of its own: topics by the
/// parts of their path, states by the names of their items. Pure functions; any thread.
#ifndef ONVIF_CLIENT_EVENTS_SOURCETOPICS_H
#define ONVIF_CLIENT_EVENTS_SOURCETOPICS_H

#include <optional>
#include <string>
#include <string_view>

#include "events/AlarmItem.h"

namespace onvif_client {

/// A topic's path without prefixes and blanks: "RuleEngine/LineDetector/Crossed".
std::string PlainTopic(std::string_view topic);

struct TopicMeaning {
    AlarmType type = AlarmType::kNone;
    bool pulses = false;  ///< a message without a state says that something has just happened
};

/// @param plainTopic  as PlainTopic gives it.
TopicMeaning MeaningOf(std::string_view plainTopic);

/// What an item of that name says of a state: the smaller, the rather it is the one that counts
/// beside others. Nothing: the item is about something else, as object ids and counts are.
std::optional<std::size_t> StateRank(std::string_view itemName);

/// "true", "1", "active", "on" and their opposites, whatever the case; else nothing.
std::optional<bool> ReadStateValue(std::string_view value);

/// Whether a key item of that name tells rules or sources apart. One that names an object, a count
/// or a time differs from message to message of one rule.
bool IdentifiesRule(std::string_view keyName);

}  // namespace onvif_client

#endif
