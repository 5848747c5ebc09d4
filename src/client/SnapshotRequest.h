/// @file
/// The texts of a picture download: where an address leads, the GET request with Basic (RFC 7617)
/// or Digest (RFC 2617, qop "auth") credentials, and what a reply's header says. Pure functions,
/// but for the fresh client nonce of each Digest request.
#ifndef ONVIF_CLIENT_CLIENT_SNAPSHOTREQUEST_H
#define ONVIF_CLIENT_CLIENT_SNAPSHOTREQUEST_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "client/SecurityHeader.h"

namespace onvif_client {

/// Both texts as they go into a request (HeadText).
struct SnapshotAddress {
    std::string host;  // with the port, if the address has one
    std::string path;  // from "/" on
    std::uint16_t port = 80;
};

/// Takes "http://host:port/path" apart, with or without white space around it. A port that is none
/// gives 0.
SnapshotAddress ParseSnapshotAddress(std::string_view address);

enum class AuthorizationScheme { kNone, kBasic, kDigest };

/// What a device asks for with "401 Unauthorized".
struct HttpChallenge {
    AuthorizationScheme scheme = AuthorizationScheme::kNone;
    // Of a Digest challenge, empty where it does not say.
    std::string realm;
    std::string nonce;
    std::string qop;
    std::string opaque;
};

/// What the header of a reply says.
struct SnapshotHeader {
    bool unauthorized = false;
    bool notFound = false;
    /// With unauthorized: the challenges that this client speaks, those to Digest (MD5) before
    /// those to Basic, else in the device's order.
    std::vector<HttpChallenge> challenges;
    /// With unauthorized: whether there is a challenge to Digest, in whatever algorithm.
    bool asksForDigest = false;
    /// 0 when the header does not say.
    std::uint64_t contentLength = 0;
};

/// @param header  the text up to the empty line. Field names compare without case; a field may
///                hold several challenges, and be folded over several lines.
SnapshotHeader ReadSnapshotHeader(std::string_view header);

/// The response of a Digest authentication for GET: 32 hexadecimal digits. Nothing when a text to
/// be hashed has more than 511 bytes.
std::optional<std::string> DigestResponse(const Credentials& credentials,
                                          const HttpChallenge& challenge, std::string_view qop,
                                          std::string_view cnonce, std::string_view nc,
                                          std::string_view path);

/// The request, of at most 8191 bytes. Empty for a challenge that cannot be answered: its texts, or
/// the user name, are too long for the digest or hold control characters.
std::string BuildSnapshotRequest(const SnapshotAddress& address, const Credentials& credentials,
                                 const HttpChallenge& challenge);

}  // namespace onvif_client

#endif
