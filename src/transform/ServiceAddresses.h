/// @file
/// Where a device's services live, read from the replies to GetServices and GetCapabilities.
#ifndef ONVIF_CLIENT_TRANSFORM_SERVICEADDRESSES_H
#define ONVIF_CLIENT_TRANSFORM_SERVICEADDRESSES_H

#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace onvif_client {

/// Service key ("device", "media2", ...) to path without a leading slash ("onvif/device_service").
/// Whoever stores into one keeps an entry that is there already (std::map::emplace does).
using ServiceTable = std::map<std::string, std::string, std::less<>>;

/// What the Events category of the capabilities says of subscriptions.
struct EventCapabilities {
    bool subscriptionPolicySupport = true;
    bool pullPointSupport = false;
};

/// Where the event service lives, and what it says of subscriptions.
struct EventService {
    std::string path;
    EventCapabilities capabilities;
};

/// One category of GetCapabilities and the key of the service it tells of.
struct CapabilityCategory {
    const char* name;  // as in requests and replies: "Media"
    const char* key;   // "media"
    bool inSchema;     // whether requests may name it by the schema
};

/// All twelve, in the order in which a login probes them.
std::span<const CapabilityCategory> CapabilityCategories();

/// The path of an address: what follows the first "/" behind "http://host". An address without
/// "http://" is taken whole; one without a path gives the empty path. White space around the
/// address does not count.
std::string PathOfAddress(std::string_view address);

/// Adds the services that a reply to GetServices lists.
/// @return how many were passed over, for their namespace is none we know.
int ReadServices(std::string_view reply, ServiceTable& services);

/// What a reply to GetServices with capabilities tells of the event service; nothing where it does
/// not tell all that GetCapabilities would.
std::optional<EventService> ReadEventService(std::string_view reply);

/// Adds the services that a reply to GetCapabilities lists; a fault adds nothing. Reads the event
/// flags where the reply has them.
void ReadCapabilities(std::string_view reply, ServiceTable& services, EventCapabilities& events);

/// The path that a reply to GetCapabilities gives for one category.
std::optional<std::string> ReadCapability(std::string_view reply,
                                          const CapabilityCategory& category);

}  // namespace onvif_client

#endif
