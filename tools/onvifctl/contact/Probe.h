/// @file
/// The first look at a host: what it is, before and beside a login. It goes past the library, which
/// says of whatever is no ONVIF device only that it gives no reply.
#ifndef ONVIFCTL_CONTACT_PROBE_H
#define ONVIFCTL_CONTACT_PROBE_H

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "contact/HttpReply.h"
#include "system/TcpConnection.h"

namespace onvifctl {

struct FirstContact {
    Reach reach = Reach::kPending;
    std::string reachError;  // the system's words for Reach::kFailed
    std::chrono::milliseconds connecting{0};

    std::chrono::milliseconds asking{0};  // the request for the clock
    bool speaksFirst = false;
    bool isTls = false;
    std::string bytes;       // the beginning of what came and is no HTTP
    bool hangsUp = false;    // closes without a word
    HttpReply reply;         // to a request for the clock, without credentials
    bool staysOpen = false;  // the connection, behind that reply
    HttpReply toUnsigned;    // to a request that wants credentials, without; asked where it helps
    std::optional<std::chrono::seconds> clock;  // the device's time minus ours
};

/// Looks at a host in a few seconds and with few bytes, and without any credentials.
/// @param ip      dotted IPv4.
/// @param goesOn  asked again and again: false breaks the look off.
FirstContact LookAt(
    const std::string& ip, unsigned short port,
    const std::function<bool()>& goesOn = [] { return true; });

/// How long LookAt waits for a connection, and for a reply.
inline constexpr std::chrono::seconds kContactPatience{4};

}  // namespace onvifctl

#endif
