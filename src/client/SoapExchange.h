/// @file
/// SOAP over HTTP/1.1 as text: the POST request around an envelope, and what a raw reply says.
/// Pure functions.
#ifndef ONVIF_CLIENT_CLIENT_SOAPEXCHANGE_H
#define ONVIF_CLIENT_CLIENT_SOAPEXCHANGE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace onvif_client {

/// Ends a reply: its length header is not looked at.
constexpr const char* kReplyEndMarker = ":Envelope>";

/// Ends one without a prefix, where that is read.
constexpr std::string_view kBareEndMarker = "</Envelope>";

/// A reply without it is no answer.
constexpr std::string_view kEnvelopeName = ":Envelope";

/// The time-out of a login's service search, in milliseconds.
constexpr std::uint32_t kDiscoveryTimeoutMs = 2500;

/// Bytes of a list of services.
constexpr std::uint32_t kServicesCapacity = 30720;

/// The path that a device without any better knowledge is addressed by.
constexpr std::string_view kDefaultDevicePath = "onvif/device_service";

/// Bytes of a request; and with the extension large-messages.
constexpr std::size_t kLargestRequest = 8191;
constexpr std::size_t kLargestExtendedRequest = 1048576;

/// A request of at most @p largest bytes; what goes beyond is cut, while Content-Length states the
/// whole body. Tabs are left out of the body; path and host are encoded (HeadText).
/// @param authorization  the value of that field; empty: there is none.
/// @param persistence    kKeepAliveField, or nothing.
std::string BuildPost(std::string_view path, std::string_view host, std::string_view body,
                      std::string_view authorization = {}, std::size_t largest = kLargestRequest,
                      std::string_view persistence = {});

/// The field by which a request asks for a connection that stays open, for BuildPost.
constexpr std::string_view kKeepAliveField = "\r\nConnection: keep-alive";

/// Whether the operation of an envelope changes nothing, so that it can be asked for twice: its
/// name begins with "Get".
bool OnlyReads(std::string_view envelope);

/// What such a request is for, as its first line says.
std::string PostTarget(std::string_view path);

/// Classifies a raw reply by what it contains, not by its HTTP status. An empty reply is logged.
/// @param soap  with status 0: the part of @p reply from "<?xml" on; else untouched.
int ClassifyReply(std::string_view host, std::uint16_t port, std::string_view reply,
                  std::string_view& soap);

/// The same with the extension open-faults: an envelope is an answer whatever its prefix, with or
/// without prolog and whatever HTTP status it came with, unless its fault refuses the credentials.
/// That and the status 401 alone give 401; no envelope gives 7.
int ClassifyOpenly(std::string_view host, std::uint16_t port, std::string_view reply,
                   std::string_view& soap);

/// The status of an HTTP reply, that of interim ones passed over; empty where there is none.
std::string_view HttpStatus(std::string_view reply);

/// Puts the start tag of the envelope on one line, with blanks alone: what trims tags of a text
/// takes a name without prefix for one that goes on over line breaks and tabs.
void JoinEnvelopeTag(std::string& soap);

}  // namespace onvif_client

#endif
