/// @file
/// What a host has said to a request, as HTTP and as ONVIF: enough to tell what it is.
#ifndef ONVIFCTL_CONTACT_HTTPREPLY_H
#define ONVIFCTL_CONTACT_HTTPREPLY_H

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace onvifctl {

struct HttpReply {
    int status = 0;                                            // 0: what came is no HTTP
    std::vector<std::pair<std::string, std::string>> headers;  // names in small letters
    std::string body;                                          // without the frames of chunks
    bool hasEnd = false;   // it says where it ends: by a length, or by chunks
    bool isWhole = false;  // and has come so far
};

/// Interim replies (100 Continue) are passed over.
HttpReply ParseReply(std::string_view bytes);

/// All values of a header, with commas between; empty when there is none. @p name: in small
/// letters.
std::string HeaderOf(const HttpReply& reply, std::string_view name);

/// Whether a challenge (WWW-Authenticate) names a scheme, given in small letters.
bool Offers(const HttpReply& reply, std::string_view scheme);

enum class BodyKind { kNone, kEnvelope, kWebPage, kOther };
BodyKind KindOf(const HttpReply& reply);

/// Whether an envelope comes as every client takes it: behind an XML declaration and with a prefix.
bool IsPlainEnvelope(const HttpReply& reply);

/// The UTC time that an XML document shows, of the years 1970 to 2200.
std::optional<std::chrono::sys_seconds> ClockIn(const std::string& document);

}  // namespace onvifctl

#endif
