/// @file
/// SOAP over HTTP/1.1 as text: the POST request around an envelope, and what a raw reply says.
/// Pure functions.
#ifndef ONVIF_CLIENT_CLIENT_SOAPEXCHANGE_H
#define ONVIF_CLIENT_CLIENT_SOAPEXCHANGE_H

#include <cstdint>
#include <string>
#include <string_view>

namespace onvif_client {

/// Ends a reply: its length header is not looked at.
constexpr const char* kReplyEndMarker = ":Envelope>";

/// What a reply without it does not answer with.
constexpr std::string_view kEnvelopeName = ":Envelope";

/// The time-out of a login's service search, in milliseconds.
constexpr std::uint32_t kDiscoveryTimeoutMs = 2500;

/// The path that a device without any better knowledge is addressed by.
constexpr std::string_view kDefaultDevicePath = "onvif/device_service";

/// A request of at most 8191 bytes; what goes beyond is cut, while Content-Length states the whole
/// body. Tabs are left out of the body; path and host are encoded (HeadText).
std::string BuildPost(std::string_view path, std::string_view host, std::string_view body);

/// Classifies a raw reply by what it contains, not by its HTTP status. An empty reply is logged.
/// @param soap  with status 0: the part of @p reply from "<?xml" on; else untouched.
int ClassifyReply(std::string_view host, std::uint16_t port, std::string_view reply,
                  std::string_view& soap);

}  // namespace onvif_client

#endif
