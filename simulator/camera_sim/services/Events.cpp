// Event service: subscriptions, pulled messages and what can be subscribed to.
#include <algorithm>
#include <array>

#include "camera_sim/events/EventReplies.h"
#include "camera_sim/services/Services.h"
#include "camera_sim/soap/Times.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;
using std::chrono::milliseconds;

constexpr std::string_view kHost = "http://127.0.0.1";
constexpr std::size_t kLongestAddress = 1024;
constexpr int kLargestPort = 65535;

Answer GetEventProperties(Call& call) {
    call.out.Element(Ns::kEvents, "TopicNamespaceLocation",
                     "http://www.onvif.org/onvif/ver10/topics/topicns.xml");
    call.out.Element(Ns::kNotification, "FixedTopicSet", true);
    WriteTopicSet(call.out, *FindTopicStyle(call.options.topicStyle));
    for (const char* dialect : {"http://docs.oasis-open.org/wsn/t-1/TopicExpression/Concrete",
                                "http://www.onvif.org/ver10/tev/topicExpression/ConcreteSet"}) {
        call.out.Element(Ns::kNotification, "TopicExpressionDialect", dialect);
    }
    call.out.Element(Ns::kEvents, "MessageContentFilterDialect", "");
    call.out.Element(Ns::kEvents, "MessageContentSchemaLocation",
                     "http://www.onvif.org/ver10/schema/onvif.xsd");
    return kDone;
}

/// How long a subscription shall live. Nothing when the time is malformed, past or too far.
std::optional<milliseconds> ReadTermination(const Call& call, std::string_view text) {
    if (text.empty()) {
        return call.options.defaultTermination;
    }
    auto term = ParseDuration(text);
    if (!term) {
        const auto end = ParseDateTime(text);
        if (end) {
            term = *end - (call.systemTime + call.state.clock.offset);
        }
    }
    if (!term || term->count() <= 0 || *term > call.options.maxTermination) {
        return std::nullopt;
    }
    return term;
}

SoapFault BadTermination(const Call& call, std::string_view faultName) {
    const auto now = call.systemTime + call.state.clock.offset;
    return BaseFault(call.state, faultName, "The termination time is malformed, past or too far",
                     "<f:MinimumTime>" + FormatUtc(now + std::chrono::seconds(1)) +
                         "</f:MinimumTime><f:MaximumTime>" +
                         FormatUtc(now + call.options.maxTermination) + "</f:MaximumTime>");
}

SoapFault BadFilter(const Call& call, CTopicFilter::Problem problem) {
    switch (problem) {
        case CTopicFilter::Problem::kUnknownDialect:
            return BaseFault(call.state, "wsnt:TopicExpressionDialectUnknownFault",
                             "The dialect is not supported");
        case CTopicFilter::Problem::kUnknownFilter:
            return BaseFault(call.state, "wsnt:InvalidFilterFault", "The filter is not supported",
                             "<f:UnknownFilter>f:MessageContent</f:UnknownFilter>");
        default:
            return BaseFault(call.state, "wsnt:InvalidTopicExpressionFault",
                             "The topic expression is malformed");
    }
}

Answer Create(Call& call, std::optional<NotifyTarget> consumer) {
    const auto term = ReadTermination(call, call.Argument("InitialTerminationTime"));
    if (!term) {
        return BadTermination(call, "wsnt:UnacceptableInitialTerminationTimeFault");
    }
    CTopicFilter::Problem problem = CTopicFilter::Problem::kNone;
    CTopicFilter filter = CTopicFilter::Read(Child(&call.request, "Filter"), problem);
    if (problem != CTopicFilter::Problem::kNone) {
        return BadFilter(call, problem);
    }
    const Ns ns = consumer ? Ns::kNotification : Ns::kEvents;
    const Subscription* subscription =
        call.events.Add(*term, std::move(filter), std::move(consumer), call.state);
    if (subscription == nullptr) {
        return BaseFault(call.state, "wsnt:SubscribeCreationFailedFault", "Too many subscriptions");
    }
    WriteReference(call.out, ns, call.options, subscription->id);
    WriteTimes(call.out, Ns::kNotification, call.state, *subscription);
    return kDone;
}

Answer CreatePullPointSubscription(Call& call) {
    return Create(call, std::nullopt);
}

/// What follows the last "/subscription/" of a path or address.
std::string_view NumberIn(std::string_view address) {
    const auto at = address.rfind(kSubscriptionPath);
    const auto number = at == std::string_view::npos ? at : at + kSubscriptionPath.size() + 1;
    return number < address.size() ? address.substr(number) : std::string_view();
}

/// The subscription that a request is for, or null. One that is posted to the event service itself
/// says so by the header To.
Subscription* FindSubscription(const Call& call) {
    std::string_view text;
    if (call.options.subscriptionStyle == "id") {
        text = ChildText(call.header, "SubscriptionId");
    } else {
        const bool own = call.path.starts_with(kSubscriptionPath);
        text = NumberIn(own ? call.path : ChildText(call.header, "To"));
    }
    const auto id = ToInt(text);
    return id && *id > 0 ? call.events.Find(static_cast<std::uint64_t>(*id)) : nullptr;
}

SoapFault PullLimits(const CameraOptions& options) {
    const std::string detail =
        "<tev:PullMessagesFaultResponse xmlns:tev=\"" + std::string(NamespaceOf(Ns::kEvents).uri) +
        "\"><tev:MaxTimeout>" + FormatDuration(options.maxPullTimeout) +
        "</tev:MaxTimeout><tev:MaxMessageLimit>" + std::to_string(options.maxMessageLimit) +
        "</tev:MaxMessageLimit></tev:PullMessagesFaultResponse>";
    return {"Sender", "InvalidArgVal", {}, "Timeout or MessageLimit is too large", detail};
}

// The answer waits for a message. Several pulls of one subscription may wait; the oldest one gets
// what comes first.
Answer PullMessages(Call& call) {
    Subscription* subscription = FindSubscription(call);
    if (subscription == nullptr || subscription->consumer) {
        return NoSuchSubscription(call.state);
    }
    const auto timeout = ParseDuration(call.Argument("Timeout"));
    const auto limit = ToInt(call.Argument("MessageLimit"));
    if (!timeout) {
        return InvalidArgument({}, "Timeout is not a duration");
    }
    if (!limit || *limit < 1) {
        return InvalidArgument({}, "MessageLimit is not a number above 0");
    }
    if (*timeout > call.options.maxPullTimeout || *limit > call.options.maxMessageLimit) {
        return PullLimits(call.options);
    }

    const auto now = CEventHub::Clock::now();
    if (call.options.pullsRenew) {
        subscription->end = std::max(subscription->end, now + subscription->term);
    }
    call.wait =
        PullWait{subscription->id, static_cast<std::size_t>(*limit), now + *timeout,
                 AnswerAction(call.header), std::string(ChildText(call.header, "MessageID"))};
    return kDone;
}

Answer SetSynchronizationPoint(Call& call) {
    Subscription* subscription = FindSubscription(call);
    if (subscription == nullptr) {
        return NoSuchSubscription(call.state);
    }
    call.events.Synchronize(*subscription, call.state);
    return kDone;
}

Answer Renew(Call& call) {
    Subscription* subscription = FindSubscription(call);
    if (subscription == nullptr) {
        return NoSuchSubscription(call.state);
    }
    const auto term = ReadTermination(call, call.Argument("TerminationTime"));
    if (!term) {
        return BadTermination(call, "wsnt:UnacceptableTerminationTimeFault");
    }
    subscription->term = *term;
    subscription->end = CEventHub::Clock::now() + *term;
    WriteTerminationTime(call.out, Ns::kNotification, call.state, *subscription);
    call.out.Element(Ns::kNotification, "CurrentTime",
                     FormatUtc(call.systemTime + call.state.clock.offset));
    return kDone;
}

Answer Unsubscribe(Call& call) {
    const Subscription* subscription = FindSubscription(call);
    if (subscription == nullptr) {
        return NoSuchSubscription(call.state);
    }
    call.events.Remove(subscription->id);
    return kDone;
}

/// Nothing unless @p address is one of 127.0.0.1.
std::optional<NotifyTarget> ReadConsumer(std::string_view address) {
    const bool printable =
        std::all_of(address.begin(), address.end(), [](char c) { return c > ' ' && c <= '~'; });
    if (!printable || address.size() > kLongestAddress || !address.starts_with(kHost)) {
        return std::nullopt;
    }
    std::string_view rest = address.substr(kHost.size());
    NotifyTarget target{std::string(address), 80, "/"};
    if (rest.starts_with(':')) {
        const auto end = std::min(rest.find('/'), rest.size());
        const auto port = ToInt(rest.substr(1, end - 1));
        if (!port || *port < 1 || *port > kLargestPort) {
            return std::nullopt;
        }
        target.port = static_cast<std::uint16_t>(*port);
        rest.remove_prefix(end);
    }
    if (!rest.empty() && !rest.starts_with('/')) {
        return std::nullopt;
    }
    if (!rest.empty()) {
        target.path = rest;
    }
    return target;
}

Answer Subscribe(Call& call) {
    auto target = ReadConsumer(ChildText(Child(&call.request, "ConsumerReference"), "Address"));
    if (!target) {
        return BaseFault(call.state, "wsnt:SubscribeCreationFailedFault",
                         "Notifications go to addresses of http://127.0.0.1 only");
    }
    return Create(call, std::move(target));
}

constexpr std::array kEventOperations = {
    Operation{"GetEventProperties", GetEventProperties},
    Operation{"CreatePullPointSubscription", CreatePullPointSubscription},
    Operation{"PullMessages", PullMessages},
    Operation{"SetSynchronizationPoint", SetSynchronizationPoint},
};

constexpr std::array kSubscriptionOperations = {
    Operation{"Subscribe", Subscribe},
    Operation{"Renew", Renew},
    Operation{"Unsubscribe", Unsubscribe},
};

}  // namespace

std::span<const Operation> EventOperations() {
    return kEventOperations;
}
std::span<const Operation> SubscriptionOperations() {
    return kSubscriptionOperations;
}

}  // namespace camera_sim
