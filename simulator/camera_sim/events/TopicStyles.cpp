// The topics that different makes use.
#include "camera_sim/events/EventTopics.h"

namespace camera_sim {
namespace {

using Origin = Topic::Origin;
using Report = Topic::Report;
using Words = Topic::Words;
using Path = std::array<std::string_view, Topic::kDepth>;

constexpr Path kCellMotion = {"RuleEngine", "CellMotionDetector", "Motion"};
constexpr std::array kRuleSource = {
    Topic::Item{"VideoSourceConfigurationToken", Origin::kVideoSourceConfiguration},
    Topic::Item{"VideoAnalyticsConfigurationToken", Origin::kAnalyticsConfiguration},
    Topic::Item{"Rule", Origin::kRule}};

constexpr std::array<Topic::Item, 3> RuleSource(std::string_view rule) {
    auto source = kRuleSource;
    source.back() = {"Rule", Origin::kConstant, rule};
    return source;
}

constexpr Topic InputTopic(bool qualified) {
    return {{"Device", "Trigger", "DigitalInput"}, qualified, {{{"InputToken"}}}, "LogicalState"};
}

constexpr std::array kInputs = {InputTopic(false)};
constexpr std::array kQualifiedInputs = {InputTopic(true)};
constexpr std::array kPorts = {
    Topic{{"Device", "IO", "Port"}, false, {{{"Port"}}}, "State"},
};
constexpr std::array kRelays = {
    Topic{{"Device", "Trigger", "Relay"},
          false,
          {{{"RelayToken"}}},
          "LogicalState",
          {},
          Words::kActivity},
};

constexpr std::array kCells = {Topic{kCellMotion, false, kRuleSource, "IsMotion"}};
constexpr std::array kQualifiedCells = {Topic{kCellMotion, true, kRuleSource, "IsMotion"}};
constexpr std::array kRegion = {
    Topic{{"RuleEngine", "MotionRegionDetector", "Motion"},
          false,
          {{{"VideoSource"}, {"RuleName", Origin::kRule}}},
          "State"},
};
constexpr std::array kAlarm = {
    Topic{{"VideoSource", "MotionAlarm"}, false, {{{"Source"}}}, "State"},
};
constexpr std::array kField = {
    Topic{{"RuleEngine", "FieldDetector", "ObjectsInside"},
          false,
          RuleSource("FieldRule"),
          "IsInside",
          "ObjectId"},
};
constexpr std::array kLine = {
    Topic{{"RuleEngine", "LineDetector", "Crossed"},
          false,
          RuleSource("LineRule"),
          "ObjectId",
          {},
          Words::kLogical,
          Report::kEvent},
};
constexpr std::array kDetection = {
    Topic{{"VideoAnalytics", "VMD", "Motion"}, false, {{{"VideoSource"}}}, "active"},
};
constexpr std::array kAnalytics = {
    Topic{{"VideoAnalytics", "MotionDetection"}, false, {{{"Source"}}}, "State"},
};
constexpr std::array kObjects = {
    Topic{{"RuleEngine", "ObjectAnalytics", "Scenario1"}, false, {{{"Source"}}}, "active"},
};
constexpr std::array kGuards = {
    Topic{{"RuleEngine", "MotionGuard", "Profile1"}, false, {{{"VideoSource"}}}, "active"},
    Topic{{"RuleEngine", "FenceGuard", "Profile1"},
          false,
          {{{"VideoSource"}}},
          "active",
          {},
          Words::kLogical,
          Report::kIdle},
};
constexpr std::array kShapes = {
    Topic{{"UserAlarm", "IVA", "HumanShapeDetect"},
          false,
          {{{"VideoSourceConfigurationToken", Origin::kVideoSourceConfiguration}}},
          "State"},
};
constexpr std::array kTwoRules = {
    Topic{kCellMotion, false, RuleSource("RuleA"), "IsMotion"},
    Topic{kCellMotion, false, RuleSource("RuleB"), "IsMotion", {}, Words::kLogical, Report::kIdle},
};
constexpr std::array kMany = {kAlarm[0],     kCells[0],   kField[0],  kLine[0],   kDetection[0],
                              kAnalytics[0], kObjects[0], kGuards[0], kGuards[1], kShapes[0]};

constexpr std::array kStyles = {
    TopicStyle{"cell-motion", kCells, kInputs, {}},
    TopicStyle{"motion-region", kRegion, kInputs, {}},
    TopicStyle{"source-alarm", kAlarm, kInputs, {}},
    TopicStyle{"qualified", kQualifiedCells, kQualifiedInputs, {}},
    TopicStyle{"field", kField, kInputs, {}},
    TopicStyle{"line", kLine, kInputs, {}},
    TopicStyle{"detection", kDetection, kInputs, {}},
    TopicStyle{"analytics", kAnalytics, kInputs, {}},
    TopicStyle{"objects", kObjects, kPorts, {}},
    TopicStyle{"guards", kGuards, kPorts, {}},
    TopicStyle{"human-shape", kShapes, kInputs, kRelays},
    TopicStyle{"two-rules", kTwoRules, kInputs, kRelays},
    TopicStyle{"many", kMany, kInputs, kRelays},
};

}  // namespace

std::span<const Topic> TopicStyle::Of(Property::Kind kind) const {
    switch (kind) {
        case Property::Kind::kMotion:
            return motion;
        case Property::Kind::kInput:
            return input;
        case Property::Kind::kRelay:
            break;
    }
    return relay;
}

const TopicStyle* FindTopicStyle(std::string_view name) {
    for (const TopicStyle& style : kStyles) {
        if (style.name == name) {
            return &style;
        }
    }
    return nullptr;
}

std::vector<std::string> TopicStyleNames() {
    std::vector<std::string> names;
    names.reserve(kStyles.size());
    for (const TopicStyle& style : kStyles) {
        names.emplace_back(style.name);
    }
    return names;
}

}  // namespace camera_sim
