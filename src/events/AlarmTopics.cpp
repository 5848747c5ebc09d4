#include "events/AlarmTopics.h"

#include <algorithm>
#include <span>

namespace onvif_client {

namespace {

struct TopicPart {
    std::string_view part;
    AlarmType type;
};

// In both tables the first part that a topic contains decides.
constexpr TopicPart kPulledTopics[] = {
    {"RuleEngine/CellMotionDetector/Motion", AlarmType::kMotion},
    {"RuleEngine", AlarmType::kMotion},
    {"MotionAlarm", AlarmType::kMotion},
    {"VideoAnalytics/MotionDetection", AlarmType::kMotion},
    {"MotionDetection", AlarmType::kMotion},
    {"Device/Trigger/DigitalInput", AlarmType::kAlarmInput},
    {"Device/Trigger/Relay", AlarmType::kAlarmInput},
    {"AlarmIn", AlarmType::kAlarmInput},
    {"PIR", AlarmType::kAlarmInput},
};

constexpr TopicPart kNotifiedTopics[] = {
    {"RuleEngine/CellMotionDetector/Motion", AlarmType::kMotion},
    {"MotionAlarm", AlarmType::kMotion},
    {"MotionDetection", AlarmType::kMotion},
    {"Device/Trigger/DigitalInput", AlarmType::kAlarmInput},
    {"Device/Trigger/Relay", AlarmType::kAlarmInput},
    {"AlarmIn", AlarmType::kAlarmInput},
};

AlarmType Classify(std::span<const TopicPart> table, std::string_view topic) {
    const auto row = std::find_if(table.begin(), table.end(), [topic](const TopicPart& each) {
        return topic.find(each.part) != std::string_view::npos;
    });
    return row == table.end() ? AlarmType::kNone : row->type;
}

}  // namespace

AlarmType ClassifyPulledTopic(std::string_view topic) {
    return Classify(kPulledTopics, topic);
}

AlarmType ClassifyNotifiedTopic(std::string_view topic) {
    return Classify(kNotifiedTopics, topic);
}

}  // namespace onvif_client
