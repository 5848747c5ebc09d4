/// @file
/// What the camera reports as events: its properties, the topics that different makes use for
/// them, and the messages.
#ifndef CAMERA_SIM_EVENTS_EVENTTOPICS_H
#define CAMERA_SIM_EVENTS_EVENTTOPICS_H

#include <array>
#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "camera_sim/soap/SoapRequest.h"
#include "camera_sim/soap/XmlWriter.h"
#include "camera_sim/state/CameraOptions.h"
#include "camera_sim/state/CameraState.h"

namespace camera_sim {

/// A value of the camera's state whose changes are reported.
struct Property {
    enum class Kind { kMotion, kInput, kRelay };
    Kind kind;
    std::string token;  ///< of the video source, input or relay
    bool active;
};
std::vector<Property> ListProperties(const CameraState& state);

struct Topic {
    /// Where the value of an item of the source comes from.
    enum class Origin {
        kToken,
        kVideoSourceConfiguration,
        kAnalyticsConfiguration,
        kRule,
        kConstant
    };
    struct Item {
        std::string_view name;
        Origin origin = Origin::kToken;
        std::string_view value{};  ///< of kConstant
    };
    /// kLogical: "true" and "false"; kActivity: "active" and "inactive".
    enum class Words { kLogical, kActivity };
    /// kState: the property. kIdle: another rule, which never finds anything; it is reported
    /// whenever the property is. kEvent: no state, only that the property has begun.
    enum class Report { kState, kIdle, kEvent };
    static constexpr std::size_t kDepth = 3;
    std::array<std::string_view, kDepth> path;  ///< unused levels are empty
    bool qualified;                             ///< a prefix at every level, not only the first
    std::array<Item, 3> source;                 ///< unused ones have no name
    std::string_view data;
    std::string_view key{};  ///< an item of the message's key; empty: none
    Words words = Words::kLogical;
    Report report = Report::kState;

    /// "Device/Trigger/DigitalInput"
    std::string PlainPath() const;
};

struct TopicStyle {
    std::string_view name;
    std::span<const Topic> motion;
    std::span<const Topic> input;
    std::span<const Topic> relay;

    std::span<const Topic> Of(Property::Kind kind) const;
};
/// Null when there is none of that name.
const TopicStyle* FindTopicStyle(std::string_view name);
/// Writes the topic set of GetEventProperties.
void WriteTopicSet(CXmlWriter& out, const TopicStyle& style);

struct EventMessage {
    std::chrono::sys_time<std::chrono::milliseconds> time;  ///< of the camera
    std::string_view operation;  ///< "Initialized", "Changed", "Deleted"; or none
    const Topic* topic;
    std::vector<std::pair<std::string_view, std::string>> source;
    std::string_view value;
};
/// What is told of a property, in the order of the style.
std::vector<EventMessage> MakeMessages(const CameraOptions& options, const CameraState& state,
                                       const Property& property, std::string_view operation);
/// Writes topic and message, the content of a NotificationMessage.
void WriteMessage(CXmlWriter& out, const EventMessage& message);

/// The topics that a subscription wants.
class CTopicFilter {
 public:
    enum class Problem { kNone, kUnknownDialect, kUnknownFilter, kBadExpression };

    /// Everything.
    CTopicFilter() = default;
    /// Reads the Filter element of a request; null means everything.
    static CTopicFilter Read(const XmlElement* filter, Problem& problem);
    bool Accepts(const Topic& topic) const;

 private:
    struct Branch {
        std::string path;  ///< without prefixes
        bool below;        ///< the topics below as well
    };
    bool Add(std::string_view expression);

    bool everything_ = true;
    std::vector<Branch> branches_;
};

}  // namespace camera_sim

#endif
