#include "camera_sim/events/EventReplies.h"

#include <array>
#include <utility>

#include "camera_sim/soap/Times.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;
using std::chrono::milliseconds;

constexpr std::string_view kNotifyAction =
    "http://docs.oasis-open.org/wsn/bw-2/NotificationConsumer/Notify";
constexpr std::string_view kIdNamespace = "http://www.onvifplus.org/event";

enum class Parameters { kNone, kId, kOther };

struct SubscriptionStyle {
    std::string_view name;
    bool ownAddress;
    Parameters parameters;
};
constexpr std::array kSubscriptionStyles = {
    SubscriptionStyle{"address", true, Parameters::kNone},
    SubscriptionStyle{"id", false, Parameters::kId},
    SubscriptionStyle{"address-other", true, Parameters::kOther},
};

const SubscriptionStyle& StyleOf(const CameraOptions& options) {
    for (const SubscriptionStyle& style : kSubscriptionStyles) {
        if (style.name == options.subscriptionStyle) {
            return style;
        }
    }
    return kSubscriptionStyles.front();
}

std::chrono::sys_time<milliseconds> CameraTime(const CameraState& state) {
    return std::chrono::floor<milliseconds>(std::chrono::system_clock::now()) + state.clock.offset;
}

}  // namespace

std::vector<std::string> SubscriptionStyleNames() {
    std::vector<std::string> names;
    names.reserve(kSubscriptionStyles.size());
    for (const SubscriptionStyle& style : kSubscriptionStyles) {
        names.emplace_back(style.name);
    }
    return names;
}

void WriteAddressing(CXmlWriter& out, std::string_view action, std::string_view relatesTo) {
    if (action.empty()) {
        return;
    }
    out.Element(Ns::kAddressing, "Action", action);
    if (!relatesTo.empty()) {
        out.Element(Ns::kAddressing, "RelatesTo", relatesTo);
    }
    out.EndHeader();
}

std::string AnswerAction(const XmlElement* header) {
    constexpr std::string_view kRequest = "Request";
    std::string action(ChildText(header, "Action"));
    if (action.empty()) {
        return action;
    }
    if (action.ends_with(kRequest)) {
        action.resize(action.size() - kRequest.size());
    }
    return action + "Response";
}

void WriteTimes(CXmlWriter& out, Ns ns, const CameraState& state,
                const Subscription& subscription) {
    out.Element(ns, "CurrentTime",
                FormatUtc(std::chrono::floor<std::chrono::seconds>(CameraTime(state))));
    WriteTerminationTime(out, ns, state, subscription);
}

void WriteTerminationTime(CXmlWriter& out, Ns ns, const CameraState& state,
                          const Subscription& subscription) {
    const auto rest = std::chrono::round<milliseconds>(subscription.end - CEventHub::Clock::now());
    out.Element(ns, "TerminationTime",
                FormatUtc(std::chrono::floor<std::chrono::seconds>(CameraTime(state) + rest)));
}

void WriteReference(CXmlWriter& out, Ns ns, const CameraOptions& options, std::uint64_t id) {
    const SubscriptionStyle& style = StyleOf(options);
    const std::string number = std::to_string(id);
    std::string path(kSubscriptionPath);
    if (style.ownAddress) {
        path.append("/").append(number);
    }
    const Scope reference(out, ns, "SubscriptionReference");
    out.Element(Ns::kAddressing, "Address",
                "http://127.0.0.1:" + std::to_string(options.port) + path);
    if (style.parameters == Parameters::kNone) {
        return;
    }
    const Scope parameters(out, Ns::kAddressing, "ReferenceParameters");
    const std::string name =
        style.parameters == Parameters::kId ? "dom0:SubscriptionId" : "dom0:Session";
    std::string element = "<" + name;
    element.append(" xmlns:dom0=\"").append(kIdNamespace).append("\">");
    out.Raw(element.append(number).append("</").append(name).append(">"));
}

std::size_t WritePulled(CXmlWriter& out, const CameraState& state, Subscription& subscription,
                        std::size_t limit) {
    WriteTimes(out, Ns::kEvents, state, subscription);
    std::size_t count = 0;
    for (; count < limit && !subscription.queue.empty(); ++count) {
        const Scope message(out, Ns::kNotification, "NotificationMessage");
        WriteMessage(out, *subscription.queue.front());
        subscription.queue.pop_front();
    }
    subscription.delivered += count;
    return count;
}

void WriteNotify(CXmlWriter& out, const CameraOptions& options, Subscription& subscription) {
    out.Element(Ns::kAddressing, "To", subscription.consumer->address);
    WriteAddressing(out, kNotifyAction, {});
    const Scope notify(out, Ns::kNotification, "Notify");
    const Scope message(out, Ns::kNotification, "NotificationMessage");
    WriteReference(out, Ns::kNotification, options, subscription.id);
    WriteMessage(out, *subscription.queue.front());
    subscription.queue.pop_front();
}

SoapFault BaseFault(const CameraState& state, std::string_view name, std::string reason,
                    std::string_view extra) {
    const auto colon = name.find(':');
    // The operations of the resource framework and its elements are in different namespaces.
    const auto ns = FindUsualPrefix(name.substr(0, colon));
    const std::string_view uri =
        ns && *ns != Ns::kResource ? NamespaceOf(*ns).uri : "http://docs.oasis-open.org/wsrf/r-2";
    const std::string element = "f:" + std::string(name.substr(colon + 1));
    std::string detail = "<" + element;
    detail.append(" xmlns:f=\"").append(uri);
    detail.append("\" xmlns:bf=\"http://docs.oasis-open.org/wsrf/bf-2\"><bf:Timestamp>");
    detail.append(FormatUtc(CameraTime(state))).append("</bf:Timestamp>");
    detail.append("<bf:Description>").append(EscapeXml(reason)).append("</bf:Description>");
    detail.append(extra).append("</").append(element).append(">");
    return {"Sender", std::string(name), {}, std::move(reason), std::move(detail)};
}

SoapFault NoSuchSubscription(const CameraState& state) {
    return BaseFault(state, "wsrf-rw:ResourceUnknownFault",
                     "The subscription is unknown or has expired");
}

}  // namespace camera_sim
