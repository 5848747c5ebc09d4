#include "events/EventDocuments.h"

#include "common/XmlDocument.h"
#include "events/AlarmTopics.h"
#include "events/SourceItems.h"
#include "transform/Conversions.h"

namespace onvif_client {

namespace {

constexpr const char* kProlog = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
constexpr const char* kAttributes = " version=\"1.0\" systemType=\"ipc\">";

std::string Escaped(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size());
    for (const char c : text) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

std::string Element(const std::string& name, const std::string& content) {
    return "<" + name + ">" + content + "</" + name + ">";
}

std::string Document(const std::string& root, const std::string& command) {
    return kProlog + ("<" + root) + kAttributes + command + "</" + root + ">";
}

// A request holds 8191 bytes, of which the address takes its own twice. Far more than devices use.
constexpr std::size_t kLongestAddress = 2000;
constexpr std::size_t kLongestIdentifier = 512;

/// The element's text, or what stands for none.
std::string Identifier(const XMLElement* element) {
    const std::string_view text = TextOf(element);
    return element == nullptr || text.size() > kLongestIdentifier ? kNoIdentifier
                                                                  : std::string(text);
}

AlarmItem ReadItem(const XMLElement* notifyMessage) {
    // A key tells the state where there is one; the data items come after it.
    const XMLElement* value = FindElement(notifyMessage, "message/key/item/val");
    if (value == nullptr) {
        value = FindElement(notifyMessage, "message/data/item/val");
    }
    return {ClassifyPulledTopic(TextAt(notifyMessage, "topic")), IsTrue(TextOf(value))};
}

/// The form of xs:duration ("PT1M") without its sign, short enough to be asked for again.
bool IsDuration(std::string_view text) {
    constexpr std::size_t kLongest = 17;
    return text.size() <= kLongest && text.starts_with('P') &&
           text.find_first_of("0123456789") == 1 + (text.substr(1).starts_with('T') ? 1 : 0) &&
           text.find_first_not_of("0123456789.YMDTHS", 1) == std::string_view::npos &&
           text.find_last_of("YMDHS") == text.size() - 1;
}

std::uint16_t ReadLimit(std::string_view text) {
    const auto limit = ReadInt(text);
    return limit && *limit > 0 && *limit <= UINT16_MAX ? static_cast<std::uint16_t>(*limit) : 0;
}

}  // namespace

std::string CreateDocument(std::string_view callbackAddress) {
    return Document("Set",
                    Element("createPullPointSubscription",
                            Element("timeout", "PT" + std::to_string(kSubscriptionSeconds) + "S") +
                                Element("to", Escaped(callbackAddress))));
}

std::string PullDocument(const PullPoint& pull) {
    return Document(
        "Get",
        Element("pullMessages", Element("token", Escaped(pull.address)) +
                                    Element("subscriptionId", Escaped(pull.id)) +
                                    Element("subscriptionIdAttribute", Escaped(pull.idAttribute)) +
                                    Element("timeout", Escaped(pull.timeout)) +
                                    Element("messageLimit", std::to_string(pull.messageLimit))));
}

std::string UnsubscribeDocument(std::string_view subscriptionAddress) {
    return Document("Set",
                    Element("unsubscribe", Element("serverAddr", Escaped(subscriptionAddress))));
}

std::string RenewDocument(std::string_view renewAddress) {
    return Document("Set", Element("renew", Element("serverAddr", Escaped(renewAddress)) +
                                                Element("timeout", "PT1M")));
}

std::string InputsDocument() {
    return Document("Get", Element("alarmin", ""));
}

std::vector<std::string> ReadInputs(std::string_view result) {
    const CXmlDocument document(result);
    std::vector<std::string> tokens;
    for (const XMLElement* each : Children(document.Find("GetResponse/alarmin"), "token")) {
        tokens.emplace_back(TextOf(each));
    }
    return tokens;
}

std::optional<SubscriptionAnswer> ReadSubscription(std::string_view result) {
    const CXmlDocument document(result);
    const XMLElement* command = document.Find("SetResponse/createPullPointSubscription");
    const XMLElement* address = FirstChild(command, "address");
    if (address == nullptr || TextOf(address).size() > kLongestAddress) {
        return std::nullopt;
    }
    return SubscriptionAnswer{std::string(TextOf(address)),
                              Identifier(FirstChild(command, "subscriptionId")),
                              Identifier(FirstChild(command, "subscriptionIdAttriute"))};
}

PullAnswer ReadPull(const PullReply& reply, bool perSource) {
    const XMLElement* command =
        reply.result == nullptr ? nullptr : reply.result->Find("GetResponse/pullMessages");
    const std::string_view result = TextAt(command, "status");
    PullAnswer answer;
    if (result == "fail") {
        const std::string_view maxTimeout = TextAt(command, "maxtimeout");
        answer.maxTimeout = IsDuration(maxTimeout) ? maxTimeout : "";
        answer.maxMessageLimit = ReadLimit(TextAt(command, "maxmessagelimit"));
    }
    for (const XMLElement* each : Children(command, "notifyMessage")) {
        answer.items.push_back(perSource ? ReadSourceItem(each) : ReadItem(each));
    }
    if (reply.status == status::kNotAuthorized) {
        answer.outcome = reply.askedAnew ? PullOutcome::kAskedAnew : PullOutcome::kRefused;
    } else if (result == "success") {
        answer.outcome = answer.items.empty() ? PullOutcome::kNoMessages : PullOutcome::kMessages;
    }
    return answer;
}

}  // namespace onvif_client
