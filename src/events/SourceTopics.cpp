#include "events/SourceTopics.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "common/AsciiText.h"
#include "common/HttpHead.h"

namespace onvif_client {

namespace {

struct TopicRow {
    /// Parts that follow one another anywhere in the path. A "*" stands for any letters at the
    /// front or the end of a part.
    std::string_view parts;
    TopicMeaning meaning;
};

constexpr TopicMeaning kNoAlarm = {};
constexpr TopicMeaning kMotion = {AlarmType::kMotion};
constexpr TopicMeaning kCrossing = {AlarmType::kMotion, true};
constexpr TopicMeaning kInput = {AlarmType::kAlarmInput};
constexpr TopicMeaning kRelay = {AlarmType::kRelay};

// The first row that a topic agrees with decides; none: no alarm.
constexpr TopicRow kTopics[] = {
    // What rule engines and analytics tell beside alarms.
    {"*Tamper*", kNoAlarm},         {"*SceneChange*", kNoAlarm},
    {"*Blur*", kNoAlarm},           {"*Defocus*", kNoAlarm},
    {"*Loss*", kNoAlarm},           {"*Fail*", kNoAlarm},
    {"*Storage*", kNoAlarm},        {"*Count*", kNoAlarm},
    {"*Audio*", kNoAlarm},          {"Monitoring", kNoAlarm},

    {"LineDetector", kCrossing},    {"*LineCross*", kCrossing},
    {"*CrossLine*", kCrossing},     {"Crossed", kCrossing},
    {"RuleEngine", kMotion},        {"CellMotionDetector", kMotion},
    {"FieldDetector", kMotion},     {"ObjectsInside", kMotion},
    {"*Intrusion*", kMotion},       {"Motion*", kMotion},
    {"VideoMotion*", kMotion},      {"VMD*", kMotion},
    {"ObjectAnalytics", kMotion},   {"*Guard", kMotion},
    {"HumanShapeDetect*", kMotion},

    {"DigitalInput*", kInput},      {"IO/Port", kInput},
    {"AlarmIn*", kInput},           {"*PIR*", kInput},
    {"Trigger/Relay*", kRelay},
};

// As above. Several items of one row: any of them.
constexpr std::string_view kStateNames[] = {
    "State",       "LogicalState", "IsMotion", "IsInside", "IsCrossed", "Active",
    "MotionState", "AlarmState",   "Motion",   "Alarm",    "Is*",       "Value",
};

struct ValueRow {
    std::string_view value;
    bool state;
};
constexpr ValueRow kStateValues[] = {
    {"true", true},      {"false", false}, {"1", true},    {"0", false},  {"active", true},
    {"inactive", false}, {"on", true},     {"off", false}, {"yes", true}, {"no", false},
};

constexpr std::string_view kPassingNames[] = {"Object", "Count", "Time"};

bool Contains(std::string_view text, std::string_view letters) {
    return std::search(text.begin(), text.end(), letters.begin(), letters.end(),
                       [](char a, char b) { return LowerCase(a) == LowerCase(b); }) != text.end();
}

/// Letters compare as they are.
bool PartAgrees(std::string_view pattern, std::string_view part) {
    const bool anyFront = pattern.starts_with('*');
    const bool anyEnd = pattern.ends_with('*');
    pattern.remove_prefix(anyFront ? 1 : 0);
    pattern.remove_suffix(anyEnd ? 1 : 0);
    if (anyFront) {
        return anyEnd ? part.find(pattern) != std::string_view::npos : part.ends_with(pattern);
    }
    return anyEnd ? part.starts_with(pattern) : part == pattern;
}

bool BeginsWith(std::string_view parts, std::string_view topic) {
    while (!parts.empty()) {
        if (topic.empty() || !PartAgrees(TakeUntil(parts, "/"), TakeUntil(topic, "/"))) {
            return false;
        }
    }
    return true;
}

bool Agrees(std::string_view parts, std::string_view topic) {
    for (; !topic.empty(); TakeUntil(topic, "/")) {
        if (BeginsWith(parts, topic)) {
            return true;
        }
    }
    return false;
}

bool IsStateName(std::string_view row, std::string_view name) {
    if (!row.ends_with('*')) {
        return SameLetters(row, name);
    }
    row.remove_suffix(1);
    return name.size() > row.size() && name.starts_with(row) && name[row.size()] >= 'A' &&
           name[row.size()] <= 'Z';
}

}  // namespace

std::string PlainTopic(std::string_view topic) {
    std::string plain;
    for (topic = Trim(topic); !topic.empty();) {
        std::string_view part = Trim(TakeUntil(topic, "/"));
        part.remove_prefix(part.rfind(':') + 1);  // npos + 1 is 0
        if (!part.empty() && part != ".") {
            plain += (plain.empty() ? "" : "/");
            plain += part;
        }
    }
    return plain;
}

TopicMeaning MeaningOf(std::string_view plainTopic) {
    const auto* const row =
        std::find_if(std::begin(kTopics), std::end(kTopics),
                     [plainTopic](const TopicRow& each) { return Agrees(each.parts, plainTopic); });
    return row == std::end(kTopics) ? kNoAlarm : row->meaning;
}

std::optional<std::size_t> StateRank(std::string_view itemName) {
    for (std::size_t rank = 0; rank < std::size(kStateNames); ++rank) {
        if (IsStateName(kStateNames[rank], itemName)) {
            return rank;
        }
    }
    return std::nullopt;
}

std::optional<bool> ReadStateValue(std::string_view value) {
    for (const ValueRow& row : kStateValues) {
        if (SameLetters(row.value, Trim(value))) {
            return row.state;
        }
    }
    return std::nullopt;
}

bool IdentifiesRule(std::string_view keyName) {
    return !StateRank(keyName) && std::none_of(std::begin(kPassingNames), std::end(kPassingNames),
                                               [&](auto each) { return Contains(keyName, each); });
}

}  // namespace onvif_client
