#include "camera_sim/events/EventTopics.h"

#include <algorithm>

#include "camera_sim/soap/Times.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;
using Origin = Topic::Origin;
using Path = std::array<std::string_view, Topic::kDepth>;

constexpr std::string_view kConcreteDialect =
    "http://docs.oasis-open.org/wsn/t-1/TopicExpression/Concrete";
constexpr std::string_view kConcreteSetDialect =
    "http://www.onvif.org/ver10/tev/topicExpression/ConcreteSet";
constexpr std::size_t kMostBranches = 64;

constexpr Path kCellMotion = {"RuleEngine", "CellMotionDetector", "Motion"};
constexpr std::array kRuleSource = {
    Topic::Item{"VideoSourceConfigurationToken", Origin::kVideoSourceConfiguration},
    Topic::Item{"VideoAnalyticsConfigurationToken", Origin::kAnalyticsConfiguration},
    Topic::Item{"Rule", Origin::kRule}};

constexpr Topic InputTopic(bool qualified) {
    return {{"Device", "Trigger", "DigitalInput"}, qualified, {{{"InputToken"}}}, "LogicalState"};
}

constexpr std::array kStyles = {
    TopicStyle{"cell-motion", {kCellMotion, false, kRuleSource, "IsMotion"}, InputTopic(false)},
    TopicStyle{"motion-region",
               {{"RuleEngine", "MotionRegionDetector", "Motion"},
                false,
                {{{"VideoSource"}, {"RuleName", Origin::kRule}}},
                "State"},
               InputTopic(false)},
    TopicStyle{"source-alarm",
               {{"VideoSource", "MotionAlarm"}, false, {{{"Source"}}}, "State"},
               InputTopic(false)},
    TopicStyle{"qualified", {kCellMotion, true, kRuleSource, "IsMotion"}, InputTopic(true)},
};

std::string ItemValue(const CameraState& state, const Property& property, Origin origin) {
    if (origin == Origin::kToken) {
        return property.token;
    }
    const auto& configurations = state.media.videoSourceConfigurations;
    const auto source =
        std::find_if(configurations.begin(), configurations.end(),
                     [&](const auto& candidate) { return candidate.source == property.token; });
    const std::string configuration = source == configurations.end() ? "" : source->token;
    const auto& profiles = state.media.profiles;
    const auto profile = std::find_if(profiles.begin(), profiles.end(), [&](const auto& candidate) {
        return candidate.videoSource == configuration && !candidate.analytics.empty();
    });
    const auto* analytics = profile == profiles.end()
                                ? nullptr
                                : FindByToken(state.media.analytics, profile->analytics);
    switch (origin) {
        case Origin::kToken:
            break;
        case Origin::kVideoSourceConfiguration:
            return configuration;
        case Origin::kAnalyticsConfiguration:
            return analytics == nullptr ? "" : analytics->token;
        case Origin::kRule:
            return analytics == nullptr || analytics->rules.empty() ? "MotionRule"
                                                                    : analytics->rules.front().name;
    }
    return property.token;
}

void WriteItems(CXmlWriter& out, std::string_view list,
                const std::vector<std::pair<std::string_view, std::string>>& items) {
    const Scope element(out, Ns::kSchema, list);
    for (const auto& [name, value] : items) {
        const Scope item(out, Ns::kSchema, "SimpleItem");
        out.Attribute("Name", name);
        out.Attribute("Value", value);
    }
}

void WriteItemDescription(CXmlWriter& out, std::string_view name, const std::string& type) {
    const Scope item(out, Ns::kSchema, "SimpleItemDescription");
    out.Attribute("Name", name);
    out.Attribute("Type", type);
}

void WriteDescription(CXmlWriter& out, const Topic& topic) {
    const Scope description(out, Ns::kSchema, "MessageDescription");
    out.Attribute("IsProperty", true);
    {
        const Scope source(out, Ns::kSchema, "Source");
        for (const Topic::Item& item : topic.source) {
            if (item.name.empty()) {
                continue;
            }
            WriteItemDescription(out, item.name,
                                 item.origin == Origin::kRule
                                     ? out.QualifiedName(Ns::kXmlSchema, "string")
                                     : out.QualifiedName(Ns::kSchema, "ReferenceToken"));
        }
    }
    const Scope data(out, Ns::kSchema, "Data");
    WriteItemDescription(out, topic.data, out.QualifiedName(Ns::kXmlSchema, "boolean"));
}

void WriteLevel(CXmlWriter& out, const Topic& topic, std::size_t level) {
    const bool prefixed = level == 0 || topic.qualified;
    const Scope element(out, prefixed ? Ns::kTopics : Ns::kNone, topic.path[level]);
    const bool last = level + 1 == topic.path.size() || topic.path[level + 1].empty();
    if (!last) {
        return WriteLevel(out, topic, level + 1);
    }
    out.Attribute(out.QualifiedName(Ns::kTopicSet, "topic"), true);
    WriteDescription(out, topic);
}

}  // namespace

std::vector<Property> ListProperties(const CameraState& state) {
    std::vector<Property> properties;
    properties.reserve(state.media.videoSources.size() + state.inputs.size());
    for (const VideoSource& source : state.media.videoSources) {
        properties.push_back({Property::Kind::kMotion, source.token, source.motion});
    }
    for (const DigitalInput& input : state.inputs) {
        properties.push_back({Property::Kind::kInput, input.token, input.active});
    }
    return properties;
}

std::string Topic::PlainPath() const {
    std::string text;
    for (const std::string_view level : path) {
        if (level.empty()) {
            break;
        }
        if (!text.empty()) {
            text += '/';
        }
        text += level;
    }
    return text;
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

void WriteTopicSet(CXmlWriter& out, const TopicStyle& style) {
    const Scope set(out, Ns::kTopicSet, "TopicSet");
    WriteLevel(out, style.motion, 0);
    WriteLevel(out, style.input, 0);
}

EventMessage MakeMessage(const CameraOptions& options, const CameraState& state,
                         const Property& property, std::string_view operation) {
    const TopicStyle& style = *FindTopicStyle(options.topicStyle);
    const bool isInput = property.kind == Property::Kind::kInput;
    EventMessage message;
    message.time = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now()) +
                   state.clock.offset;
    message.operation = operation;
    message.topic = isInput ? &style.input : &style.motion;
    for (const Topic::Item& item : message.topic->source) {
        if (item.name.empty()) {
            continue;
        }
        message.source.emplace_back(item.name, ItemValue(state, property, item.origin));
    }
    const bool numeric = isInput && options.numericStates;
    message.value = property.active ? (numeric ? "1" : "true") : (numeric ? "0" : "false");
    return message;
}

void WriteMessage(CXmlWriter& out, const EventMessage& message) {
    {
        const Scope topic(out, Ns::kNotification, "Topic");
        out.Attribute("Dialect", kConcreteSetDialect);
        std::string text;
        for (const std::string_view level : message.topic->path) {
            if (level.empty()) {
                break;
            }
            const bool prefixed = text.empty() || message.topic->qualified;
            if (!text.empty()) {
                text += '/';
            }
            text += prefixed ? out.QualifiedName(Ns::kTopics, level) : std::string(level);
        }
        out.Text(text);
    }
    const Scope holder(out, Ns::kNotification, "Message");
    const Scope element(out, Ns::kSchema, "Message");
    out.Attribute("UtcTime", FormatUtc(message.time));
    out.Attribute("PropertyOperation", message.operation);
    WriteItems(out, "Source", message.source);
    WriteItems(out, "Data", {{message.topic->data, std::string(message.value)}});
}

CTopicFilter CTopicFilter::Read(const XmlElement* filter, Problem& problem) {
    CTopicFilter result;
    problem = Problem::kNone;
    if (filter == nullptr || filter->FirstChildElement() == nullptr) {
        return result;
    }
    result.everything_ = false;
    for (const XmlElement* part = filter->FirstChildElement(); part != nullptr;
         part = part->NextSiblingElement()) {
        const char* dialect = part->Attribute("Dialect");
        if (LocalName(*part) != "TopicExpression") {
            problem = Problem::kUnknownFilter;
        } else if (dialect == nullptr ||
                   (dialect != kConcreteDialect && dialect != kConcreteSetDialect)) {
            problem = Problem::kUnknownDialect;
        } else if (!result.Add(Text(part))) {
            problem = Problem::kBadExpression;
        }
        if (problem != Problem::kNone) {
            break;
        }
    }
    return result;
}

bool CTopicFilter::Add(std::string_view expression) {
    while (branches_.size() < kMostBranches) {
        const auto bar = expression.find('|');
        std::string_view rest = expression.substr(0, bar);
        while (rest.starts_with(' ')) {
            rest.remove_prefix(1);
        }
        while (rest.ends_with(' ')) {
            rest.remove_suffix(1);
        }
        Branch branch;
        branch.below = rest.ends_with("//.");
        if (branch.below) {
            rest.remove_suffix(3);
        }
        while (true) {
            const auto slash = rest.find('/');
            const std::string_view level = rest.substr(0, slash);
            const std::string_view name = level.substr(level.find(':') + 1);
            if (name.empty()) {
                return false;
            }
            if (!branch.path.empty()) {
                branch.path += '/';
            }
            branch.path += name;
            if (slash == std::string_view::npos) {
                break;
            }
            rest.remove_prefix(slash + 1);
        }
        branches_.push_back(std::move(branch));
        if (bar == std::string_view::npos) {
            return true;
        }
        expression.remove_prefix(bar + 1);
    }
    return false;
}

bool CTopicFilter::Accepts(const Topic& topic) const {
    const std::string path = topic.PlainPath();
    return everything_ ||
           std::any_of(branches_.begin(), branches_.end(), [&](const Branch& branch) {
               return path == branch.path || (branch.below && path.starts_with(branch.path + "/"));
           });
}

}  // namespace camera_sim
