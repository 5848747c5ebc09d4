/// @file
/// What a device's Notify message says. Pure functions; any thread.
#ifndef ONVIF_CLIENT_EVENTS_NOTIFYMESSAGE_H
#define ONVIF_CLIENT_EVENTS_NOTIFYMESSAGE_H

#include <string>
#include <string_view>
#include <vector>

namespace onvif_client {

/// One notification; what the message leaves out is empty or false.
struct NotifyItem {
    std::string topic;
    bool active = false;                ///< the value of the first data item
    std::string subscriptionReference;  ///< address of the subscription that it belongs to
};

struct NotifyMessage {
    std::string to;  ///< the address that the message is meant for
    std::vector<NotifyItem> items;
};

/// Reads the body of a posted Notify. Elements are known by their usual names, prefixes included. A
/// text that does not parse, or is something else, gives no items.
NotifyMessage ReadNotify(std::string_view body);

/// Whether the renew address begins with the scheme, host and port of the subscription reference.
/// A reference that is no "http://" address with a host agrees with nothing.
bool AddressesAgree(std::string_view reference, std::string_view renewAddress);

}  // namespace onvif_client

#endif
