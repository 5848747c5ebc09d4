#include "events/NotifyMessage.h"

#include "common/HttpAddress.h"
#include "common/XmlDocument.h"
#include "transform/Conversions.h"

namespace onvif_client {

namespace {

NotifyItem ReadItem(const XMLElement* message) {
    const XMLElement* topic = FindElement(message, "wsn:Topic");
    const char* value =
        AttributeOf(FindElement(message, "wsn:Message/tt:Message/tt:Data/tt:SimpleItem"), "Value");
    NotifyItem item;
    item.topic = TextOf(topic != nullptr ? topic : FindElement(message, "wsn:topic"));
    item.active = value != nullptr && IsTrue(value);
    item.subscriptionReference = TextAt(message, "wsn:SubscriptionReference/ad:Address");
    return item;
}

}  // namespace

NotifyMessage ReadNotify(std::string_view body) {
    const CXmlDocument document(body);
    NotifyMessage notify;
    notify.to = TextAt(document.Root(), "s:Envelope/s:Header/ad:To");
    const XMLElement* messages = document.Find("s:Envelope/s:Body/wsn:Notify");
    for (const XMLElement* message : Children(messages, "wsn:NotificationMessage")) {
        notify.items.push_back(ReadItem(message));
    }
    return notify;
}

bool AddressesAgree(std::string_view reference, std::string_view renewAddress) {
    if (!reference.starts_with(kHttpScheme)) {
        return false;
    }
    const HttpAddress parts = SplitAddress(reference, kHttpScheme.size());
    return !parts.host.empty() &&
           renewAddress.starts_with(reference.substr(0, parts.scheme.size() + parts.host.size()));
}

}  // namespace onvif_client
