#include "transform/ServiceAddresses.h"

#include <algorithm>
#include <iterator>

#include "common/HttpAddress.h"
#include "transform/Conversions.h"
#include "transform/XmlTransform.h"

namespace onvif_client {

namespace {

constexpr CapabilityCategory kCategories[] = {
    {"Media", "media", true},        {"PTZ", "ptz", true},
    {"Imaging", "imaging", true},    {"Events", "events", true},
    {"Device", "device", true},      {"Analytics", "analytics", true},
    {"Search", "search", false},     {"DeviceIO", "deviceIO", false},
    {"Receiver", "receiver", false}, {"Recording", "recording", false},
    {"Display", "display", false},   {"Replay", "replay", false},
};

struct NamespacePart {
    std::string_view part;
    const char* key;
};

// The first part that a service's namespace contains decides. The double slash of the events row is
// on purpose: it matches no standard namespace, so the events address never comes from GetServices
// but always from the capabilities.
constexpr NamespacePart kNamespaceParts[] = {
    {"/device/wsdl", "device"},
    {"/ver10/media/wsdl", "media"},
    {"/ver20/media/wsdl", "media2"},
    {"//events/wsdl", "events"},
    {"/ptz/wsdl", "ptz"},
    {"/imaging/wsdl", "imaging"},
    {"/deviceIO/wsdl", "deviceIO"},
    {"/analytics/wsdl", "analytics"},
    {"/recording/wsdl", "recording"},
    {"/search/wsdl", "search"},
    {"/replay/wsdl", "replay"},
};

/// The capabilities element of a category. Later categories of the standard stand in an extension
/// element.
const XMLElement* FindCategory(const XMLElement* envelope, const char* name) {
    const XMLElement* capabilities =
        FindElement(envelope, "Envelope/Body/GetCapabilitiesResponse/Capabilities");
    const XMLElement* category = FirstChild(capabilities, name);
    return category != nullptr ? category : FirstChild(FirstChild(capabilities, "Extension"), name);
}

void ReadEventFlags(const XMLElement* category, EventCapabilities& events) {
    if (const XMLElement* flag = FirstChild(category, "WSSubscriptionPolicySupport")) {
        events.subscriptionPolicySupport = IsTrue(TextOf(flag));
    }
    if (const XMLElement* flag = FirstChild(category, "WSPullPointSupport")) {
        events.pullPointSupport = IsTrue(TextOf(flag));
    }
}

}  // namespace

std::span<const CapabilityCategory> CapabilityCategories() {
    return kCategories;
}

std::string PathOfAddress(std::string_view address) {
    address = TrimAddress(address);
    const auto hostAt = Behind(address, kHttpScheme);
    return std::string(hostAt ? SplitAddress(address, *hostAt).PathBehindSlash() : address);
}

int ReadServices(std::string_view reply, ServiceTable& services) {
    int unknown = 0;
    const CXmlDocument trimmed(CXmlTransform::TrimXmlNamespace(reply));
    const XMLElement* response = trimmed.Find("Envelope/Body/GetServicesResponse");
    for (const XMLElement* service : Children(response, "Service")) {
        const std::string_view uri = TextAt(service, "Namespace");
        const auto* row = std::find_if(std::begin(kNamespaceParts), std::end(kNamespaceParts),
                                       [uri](const NamespacePart& each) {
                                           return uri.find(each.part) != std::string_view::npos;
                                       });
        const XMLElement* address = FirstChild(service, "XAddr");
        if (row == std::end(kNamespaceParts)) {
            ++unknown;
        } else if (address != nullptr) {
            services.emplace(row->key, PathOfAddress(TextOf(address)));
        }
    }
    return unknown;
}

std::optional<EventService> ReadEventService(std::string_view reply) {
    const CXmlDocument trimmed(CXmlTransform::TrimXmlNamespace(reply));
    const XMLElement* response = trimmed.Find("Envelope/Body/GetServicesResponse");
    for (const XMLElement* service : Children(response, "Service")) {
        if (TextAt(service, "Namespace").find("/ver10/events/wsdl") == std::string_view::npos) {
            continue;
        }
        const XMLElement* address = FirstChild(service, "XAddr");
        const XMLElement* told = FirstChild(FirstChild(service, "Capabilities"), "Capabilities");
        const char* policy =
            told == nullptr ? nullptr : told->Attribute("WSSubscriptionPolicySupport");
        if (address != nullptr && policy != nullptr) {
            // Later editions of the standard do not ask any more: pull points are a must.
            const char* pullPoint = told->Attribute("WSPullPointSupport");
            return EventService{PathOfAddress(TextOf(address)),
                                {IsTrue(policy), pullPoint == nullptr || IsTrue(pullPoint)}};
        }
    }
    return std::nullopt;
}

void ReadCapabilities(std::string_view reply, ServiceTable& services, EventCapabilities& events) {
    const CXmlDocument trimmed(CXmlTransform::TrimXmlNamespace(reply));
    if (trimmed.Find("Envelope/Body/Fault") != nullptr) {
        return;
    }
    for (const CapabilityCategory& category : kCategories) {
        const XMLElement* element = FindCategory(trimmed.Root(), category.name);
        if (const XMLElement* address = FirstChild(element, "XAddr")) {
            services.emplace(category.key, PathOfAddress(TextOf(address)));
        }
    }
    ReadEventFlags(FindCategory(trimmed.Root(), "Events"), events);
}

std::optional<std::string> ReadCapability(std::string_view reply,
                                          const CapabilityCategory& category) {
    const CXmlDocument trimmed(CXmlTransform::TrimXmlNamespace(reply));
    const XMLElement* address = FirstChild(FindCategory(trimmed.Root(), category.name), "XAddr");
    if (address == nullptr) {
        return std::nullopt;
    }
    return PathOfAddress(TextOf(address));
}

}  // namespace onvif_client
