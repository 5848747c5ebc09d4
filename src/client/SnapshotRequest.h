/// @file
/// The texts of a picture download: where an address leads, the GET request with Basic (RFC 7617)
/// or Digest (RFC 2617, qop "auth") credentials, and what a reply's header says. Pure functions,
/// but for the fresh client nonce of each Digest request.
#ifndef ONVIF_CLIENT_CLIENT_SNAPSHOTREQUEST_H
#define ONVIF_CLIENT_CLIENT_SNAPSHOTREQUEST_H

#include <cstdint>
#include <string>
#include <string_view>

#include "client/HttpChallenges.h"
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

/// What the header of a reply says.
struct SnapshotHeader : ChallengeOffer {
    bool unauthorized = false;
    bool notFound = false;
    /// 0 when the header does not say.
    std::uint64_t contentLength = 0;
};

/// @param header  the text up to the empty line.
SnapshotHeader ReadSnapshotHeader(std::string_view header, DigestKinds kinds = DigestKinds::kMd5);

/// The request, of at most 8191 bytes. Empty for a challenge that cannot be answered: its texts, or
/// the user name, are too long for the digest or hold control characters.
/// @param kinds  kMd5: Digest is answered with qop "auth", whatever is asked for.
std::string BuildSnapshotRequest(const SnapshotAddress& address, const Credentials& credentials,
                                 const HttpChallenge& challenge,
                                 DigestKinds kinds = DigestKinds::kMd5);

}  // namespace onvif_client

#endif
