#include "transform/EventResults.h"

namespace onvif_client {

namespace {

constexpr CopiedValue kAddress[] = {{"SubscriptionReference/Address", "address"}};
constexpr CopiedValue kTimes[] = {{"CurrentTime", "currentTime"},
                                  {"TerminationTime", "terminationTime"}};

constexpr CopiedValue kPullTimes[] = {{"CurrentTime", "currenttime"},
                                      {"TerminationTime", "terminationtime"}};
constexpr CopiedValue kTopic[] = {{"Topic", "topic"}};
constexpr CopiedValue kItem[] = {{"@Name", "name"}, {"@Value", "val"}};
constexpr CopiedValue kItems[] = {{"SimpleItem*", "item", kItem}};
constexpr CopiedValue kMessage[] = {{"@UtcTime", "utcTime"},
                                    {"@PropertyOperation", "propertyOper"},
                                    {"Source", "source", kItems},
                                    {"Key", "key", kItems},
                                    {"Data", "data", kItems}};

const XMLElement* ResponseIn(const ReplyValues& reply, std::string_view name) {
    return FirstChild(FindElement(reply.envelope, "Envelope/Body"), name);
}

/// What tells subscriptions at one address apart, where the device does that.
void CopySubscriptionId(const XMLElement* response, XMLElement* command) {
    const XMLElement* id =
        FindElement(response, "SubscriptionReference/ReferenceParameters/SubscriptionId");
    if (id == nullptr) {
        return;
    }
    Append(command, "subscriptionId", TextOf(id));
    const char* space = AttributeOf(id, "xmlndom0");
    if (space == nullptr) {
        space = AttributeOf(id, "xmlns:dom0");
    }
    if (space != nullptr) {
        Append(command, "subscriptionIdAttriute", space);
    }
}

void CopyPullPoint(const ReplyValues& reply, XMLElement* command) {
    const XMLElement* response = ResponseIn(reply, "CreatePullPointSubscriptionResponse");
    CopyValues(response, command, kAddress);
    CopySubscriptionId(response, command);
    CopyValues(response, command, kTimes);
}

void CopySubscription(const ReplyValues& reply, XMLElement* command) {
    const XMLElement* response = ResponseIn(reply, "SubscribeResponse");
    CopyValues(response, command, kAddress);
    CopyValues(response, command, kTimes);
}

void CopyRenewal(const ReplyValues& reply, XMLElement* command) {
    CopyValues(ResponseIn(reply, "RenewResponse"), command, kTimes);
}

void CopyMessages(const ReplyValues& reply, XMLElement* command) {
    const XMLElement* response = ResponseIn(reply, "PullMessagesResponse");
    CopyValues(response, command, kPullTimes);
    for (const XMLElement* each : Children(response, "NotificationMessage")) {
        XMLElement* copied = Append(command, "notifyMessage");
        CopyValues(each, copied, kTopic);
        // By child, not by path: the inner element bears the name of the outer one.
        if (const XMLElement* message = FirstChild(FirstChild(each, "Message"), "Message")) {
            CopyValues(message, Append(copied, "message"), kMessage);
        }
    }
}

}  // namespace

constinit const ResultFrame kCreatePullPointSubscriptionResult = {
    .root = "SetResponse",
    .element = "createPullPointSubscription",
    .copyValues = CopyPullPoint,
    .response = "CreatePullPointSubscriptionResponse"};
constinit const ResultFrame kSubscribeResult = {.root = "SetResponse",
                                                .element = "subscribe",
                                                .copyValues = CopySubscription,
                                                .response = "SubscribeResponse"};
constinit const ResultFrame kRenewResult = {.root = "GetResponse",
                                            .element = "renew",
                                            .copyValues = CopyRenewal,
                                            .response = "RenewResponse"};
constinit const ResultFrame kPullMessagesResult = {.root = "GetResponse",
                                                   .element = "pullMessages",
                                                   .copyValues = CopyMessages,
                                                   .faultReader = FaultReader::kPullMessages,
                                                   .response = "PullMessagesResponse",
                                                   .prefixRemoval = PrefixRemoval::kInDocument};

}  // namespace onvif_client
