#include "camera_sim/events/EventTopics.h"

#include <algorithm>

#include "camera_sim/soap/Times.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;
using Origin = Topic::Origin;
using Report = Topic::Report;
using Words = Topic::Words;

constexpr std::string_view kConcreteDialect =
    "http://docs.oasis-open.org/wsn/t-1/TopicExpression/Concrete";
constexpr std::string_view kConcreteSetDialect =
    "http://www.onvif.org/ver10/tev/topicExpression/ConcreteSet";
constexpr std::size_t kMostBranches = 64;

/// Of the only object that there is.
constexpr std::string_view kObject = "1";

std::string ItemValue(const CameraState& state, const Property& property, const Topic::Item& item) {
    if (item.origin == Origin::kToken) {
        return property.token;
    }
    const auto& configurations = state.media.videoSourceConfigurations;
    const auto source =
        std::find_if(configurations.begin(), configurations.end(),
                     [&](const auto& candidate) { return candidate.source == property.token; });
    std::string configuration = source == configurations.end() ? "" : source->token;
    const auto& profiles = state.media.profiles;
    const auto profile = std::find_if(profiles.begin(), profiles.end(), [&](const auto& candidate) {
        return candidate.videoSource == configuration && !candidate.analytics.empty();
    });
    const auto* analytics = profile == profiles.end()
                                ? nullptr
                                : FindByToken(state.media.analytics, profile->analytics);
    switch (item.origin) {
        case Origin::kToken:
            break;
        case Origin::kConstant:
            return std::string(item.value);
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

std::string DataType(CXmlWriter& out, const Topic& topic) {
    if (topic.report == Report::kEvent) {
        return out.QualifiedName(Ns::kXmlSchema, "integer");
    }
    return topic.words == Words::kActivity ? out.QualifiedName(Ns::kSchema, "RelayLogicalState")
                                           : out.QualifiedName(Ns::kXmlSchema, "boolean");
}

void WriteDescription(CXmlWriter& out, const Topic& topic) {
    const Scope description(out, Ns::kSchema, "MessageDescription");
    out.Attribute("IsProperty", topic.report != Report::kEvent);
    {
        const Scope source(out, Ns::kSchema, "Source");
        for (const Topic::Item& item : topic.source) {
            if (item.name.empty()) {
                continue;
            }
            const bool text = item.origin == Origin::kRule || item.origin == Origin::kConstant;
            WriteItemDescription(out, item.name,
                                 text ? out.QualifiedName(Ns::kXmlSchema, "string")
                                      : out.QualifiedName(Ns::kSchema, "ReferenceToken"));
        }
    }
    if (!topic.key.empty()) {
        const Scope key(out, Ns::kSchema, "Key");
        WriteItemDescription(out, topic.key, out.QualifiedName(Ns::kXmlSchema, "integer"));
    }
    const Scope data(out, Ns::kSchema, "Data");
    WriteItemDescription(out, topic.data, DataType(out, topic));
}

using Topics = std::vector<const Topic*>;

bool EndsAt(const Topic& topic, std::size_t level) {
    return level + 1 == topic.path.size() || topic.path[level + 1].empty();
}

/// Writes the levels of topics that agree in those above, each once.
void WriteLevel(CXmlWriter& out, Topics topics, std::size_t level) {
    while (!topics.empty()) {
        const Topic& first = *topics.front();
        const auto others = std::stable_partition(
            topics.begin(), topics.end(),
            [&](const Topic* topic) { return topic->path[level] == first.path[level]; });
        Topics below(topics.begin(), others);
        topics.erase(topics.begin(), others);
        const bool prefixed = level == 0 || first.qualified;
        const Scope element(out, prefixed ? Ns::kTopics : Ns::kNone, first.path[level]);
        if (EndsAt(first, level)) {
            out.Attribute(out.QualifiedName(Ns::kTopicSet, "topic"), true);
            WriteDescription(out, first);
        }
        std::erase_if(below, [level](const Topic* topic) { return EndsAt(*topic, level); });
        WriteLevel(out, std::move(below), level + 1);
    }
}

std::string_view ValueOf(const CameraOptions& options, const Property& property,
                         const Topic& topic) {
    if (topic.report == Report::kEvent) {
        return kObject;
    }
    const bool active = property.active && topic.report == Report::kState;
    if (topic.words == Words::kActivity) {
        return active ? "active" : "inactive";
    }
    if (property.kind == Property::Kind::kInput && options.numericStates) {
        return active ? "1" : "0";
    }
    return active ? "true" : "false";
}

}  // namespace

std::vector<Property> ListProperties(const CameraState& state) {
    std::vector<Property> properties;
    properties.reserve(state.media.videoSources.size() + state.inputs.size() + state.relays.size());
    for (const VideoSource& source : state.media.videoSources) {
        properties.push_back({Property::Kind::kMotion, source.token, source.motion});
    }
    for (const DigitalInput& input : state.inputs) {
        properties.push_back({Property::Kind::kInput, input.token, input.active});
    }
    for (const RelayOutput& relay : state.relays) {
        properties.push_back({Property::Kind::kRelay, relay.token, relay.active});
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

void WriteTopicSet(CXmlWriter& out, const TopicStyle& style) {
    Topics topics;
    for (const auto list : {style.motion, style.input, style.relay}) {
        for (const Topic& topic : list) {
            topics.push_back(&topic);
        }
    }
    const Scope set(out, Ns::kTopicSet, "TopicSet");
    WriteLevel(out, std::move(topics), 0);
}

std::vector<EventMessage> MakeMessages(const CameraOptions& options, const CameraState& state,
                                       const Property& property, std::string_view operation) {
    std::vector<EventMessage> messages;
    for (const Topic& topic : FindTopicStyle(options.topicStyle)->Of(property.kind)) {
        const bool event = topic.report == Report::kEvent;
        if (event && (operation != "Changed" || !property.active)) {
            continue;
        }
        EventMessage& message = messages.emplace_back();
        message.time =
            std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now()) +
            state.clock.offset;
        message.operation = event ? "" : operation;
        message.topic = &topic;
        for (const Topic::Item& item : topic.source) {
            if (!item.name.empty()) {
                message.source.emplace_back(item.name, ItemValue(state, property, item));
            }
        }
        message.value = ValueOf(options, property, topic);
    }
    return messages;
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
    if (!message.operation.empty()) {
        out.Attribute("PropertyOperation", message.operation);
    }
    WriteItems(out, "Source", message.source);
    if (!message.topic->key.empty()) {
        WriteItems(out, "Key", {{message.topic->key, std::string(kObject)}});
    }
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
