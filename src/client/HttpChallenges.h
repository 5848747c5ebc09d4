/// @file
/// What a device asks for when it refuses a request with "401 Unauthorized" (RFC 9110, 7616, 7617).
/// Pure functions; any thread.
#ifndef ONVIF_CLIENT_CLIENT_HTTPCHALLENGES_H
#define ONVIF_CLIENT_CLIENT_HTTPCHALLENGES_H

#include <string>
#include <string_view>
#include <vector>

namespace onvif_client {

enum class AuthorizationScheme { kNone, kBasic, kDigest };

/// What a device asks for with "401 Unauthorized".
struct HttpChallenge {
    AuthorizationScheme scheme = AuthorizationScheme::kNone;
    // Of a Digest challenge, empty where it does not say.
    std::string realm;
    std::string nonce;
    std::string qop;
    std::string opaque;
    std::string algorithm = {};
    bool stale = false;  // only the nonce of the answer was too old

    bool IsSha256() const;
};

/// Which challenges to Digest are taken.
enum class DigestKinds {
    kMd5,
    kAll,  // SHA-256 as well
};

struct ChallengeOffer {
    /// Those to Digest before those to Basic, else in the device's order.
    std::vector<HttpChallenge> challenges;
    /// Whether there is a challenge to Digest, in whatever algorithm.
    bool asksForDigest = false;
};

/// @param head  from the status line up to the empty line. Field names compare without case; a
/// field
///              may hold several challenges, and be folded over several lines. Whoever calls bounds
///              it: seven bytes of it may become a challenge.
ChallengeOffer ReadChallenges(std::string_view head, DigestKinds kinds);

}  // namespace onvif_client

#endif
