#include "watch/PullPoint.h"

#include <tinyxml2.h>

#include <algorithm>
#include <charconv>

#include "documents/RequestDocument.h"
#include "documents/ResultDocument.h"

namespace onvifctl {

namespace {

using tinyxml2::XMLElement;

std::string Duration(std::chrono::seconds seconds) {
    return "PT" + std::to_string(seconds.count()) + "S";
}

/// 0 for what is none.
unsigned int NumberIn(const std::string& text) {
    unsigned int number = 0;
    const char* end = text.data() + text.size();
    return std::from_chars(text.data(), end, number).ptr == end ? number : 0;
}

/// What a device says about a command that it refuses; empty when it refuses none.
std::string RefusalIn(const XMLElement* command) {
    if (TextAt(command, "status") != "fail") {
        return "";
    }
    const std::string description = TextAt(command, "status/description");
    return description.empty() ? "without a reason" : description;
}

DeviceEvent::Items ItemsIn(const XMLElement* group) {
    DeviceEvent::Items items;
    for (const XMLElement* item = ElementAt(group, "item"); item != nullptr;
         item = item->NextSiblingElement("item")) {
        items.emplace_back(TextAt(item, "name"), TextAt(item, "val"));
    }
    return items;
}

std::vector<DeviceEvent> EventsIn(const XMLElement* command) {
    std::vector<DeviceEvent> events;
    for (const XMLElement* each = ElementAt(command, "notifyMessage"); each != nullptr;
         each = each->NextSiblingElement("notifyMessage")) {
        DeviceEvent& event = events.emplace_back();
        event.topic = TextAt(each, "topic");
        event.operation = TextAt(each, "message/propertyOper");
        event.deviceTime = TextAt(each, "message/utcTime");
        event.source = ItemsIn(ElementAt(each, "message/source"));
        event.key = ItemsIn(ElementAt(each, "message/key"));
        event.data = ItemsIn(ElementAt(each, "message/data"));
    }
    return events;
}

}  // namespace

bool Answers(const CConnection& connection, const char* command) {
    try {
        connection.Send(MakeRequest("Get", {command}));
        return true;
    } catch (const CFailure&) {
        return false;
    }
}

CPullPoint::CPullPoint(const CConnection& connection, const std::string& host,
                       std::chrono::seconds lifetime)
    : connection_(connection), host_(host), lifetime_(Duration(lifetime)) {
    const std::string refuses = host + " gives no subscription to its events: ";
    std::string result;
    try {
        result = connection.Send(MakeRequest("Set", {"createPullPointSubscription", "--timeout",
                                                     lifetime_, "--to", "http://127.0.0.1:6699/"}));
    } catch (const CFailure&) {
        if (!Answers(connection, "dateAndTime")) {
            throw CFailure(ExitCode::kUnreachable, host + " does not answer any more");
        }
        throw CNoSubscription(ExitCode::kRefused, refuses + "it refuses without a reason");
    }
    const CResultDocument document(result);
    const XMLElement* command = document.Command("createPullPointSubscription");
    address_ = TextAt(command, "address");
    id_ = TextAt(command, "subscriptionId");
    idAttribute_ = TextAt(command, "subscriptionIdAttriute");
    if (address_.empty()) {
        const std::string reason = RefusalIn(command);
        throw CNoSubscription(ExitCode::kRefused,
                              refuses + (reason.empty() ? "it names no address" : reason));
    }
}

std::vector<DeviceEvent> CPullPoint::Pull(std::chrono::seconds patience) {
    const std::chrono::seconds wait = std::min(patience, longestWait_);
    std::vector<std::string> words = {"pullMessages",
                                      "--token",
                                      address_,
                                      "--timeout",
                                      Duration(wait),
                                      "--messageLimit",
                                      std::to_string(mostMessages_)};
    if (!id_.empty()) {
        words.insert(words.end(), {"--subscriptionId", id_});
        if (!idAttribute_.empty()) {
            words.insert(words.end(), {"--subscriptionIdAttribute", idAttribute_});
        }
    }
    const std::string result = connection_.Send(MakeRequest("Get", words));
    const CResultDocument document(result);
    const XMLElement* command = document.Command("pullMessages");
    const std::string refusal = RefusalIn(command);
    if (refusal.empty()) {
        return EventsIn(command);
    }
    if (Lowers(command, wait)) {
        return Pull(patience);
    }
    throw CFailure(ExitCode::kRefused, host_ + " refuses to tell its events: " + refusal);
}

bool CPullPoint::Lowers(const XMLElement* refused, std::chrono::seconds wait) {
    const unsigned int most = NumberIn(TextAt(refused, "maxmessagelimit"));
    const std::string time = TextAt(refused, "maxtimeout");
    const bool inSeconds = time.starts_with("PT") && time.ends_with('S');
    const std::chrono::seconds longest(inSeconds ? NumberIn(time.substr(2, time.size() - 3)) : 0);
    const bool fewer = most > 0 && most < mostMessages_;
    const bool shorter = longest.count() > 0 && longest < wait;
    mostMessages_ = fewer ? most : mostMessages_;
    longestWait_ = shorter ? longest : longestWait_;
    return fewer || shorter;
}

void CPullPoint::Renew() const {
    try {
        connection_.Send(
            MakeRequest("Set", {"renew", "--serverAddr", address_, "--timeout", lifetime_}));
    } catch (const CFailure&) {
        return;
    }
}

void CPullPoint::Unsubscribe() const {
    try {
        connection_.Send(MakeRequest("Set", {"unsubscribe", "--serverAddr", address_}));
    } catch (const CFailure&) {
        return;
    }
}

}  // namespace onvifctl
