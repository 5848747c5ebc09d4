/// @file
/// HTTP authentication, Basic and Digest, as a camera checks it.
#ifndef CAMERA_SIM_HTTP_HTTPAUTHENTICATION_H
#define CAMERA_SIM_HTTP_HTTPAUTHENTICATION_H

#include <chrono>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "camera_sim/http/Credentials.h"
#include "camera_sim/http/Http.h"
#include "camera_sim/state/CameraOptions.h"
#include "camera_sim/state/User.h"

namespace camera_sim {

/// What a camera asks of those who want its pictures or use its services.
struct HttpAuthenticationSettings {
    HttpScheme scheme = HttpScheme::kNone;
    std::string realm{};
    std::string qop{};  ///< of Digest: "auth", "auth,auth-int", or empty to offer none
    std::chrono::seconds nonceLifetime{0};
    std::uint32_t nonceUses = 0;  ///< requests that a nonce is good for; 0: any number
};

/// Digest makes a new nonce for every challenge; it remembers a fixed number of them,
/// the oldest are forgotten first. Not safe for use by several threads at once.
class CHttpAuthenticator {
 public:
    using Time = std::chrono::steady_clock::time_point;

    explicit CHttpAuthenticator(HttpAuthenticationSettings settings);

    struct Result {
        Credentials credentials;
        bool stale = false;  ///< the credentials would be valid with another nonce
    };
    /// @param users none: everybody is an administrator
    Result Check(const HttpRequest& request, const std::vector<User>& users, Time now);

    /// Whether there is anything to check.
    bool IsOn(const std::vector<User>& users) const;

    /// The header lines WWW-Authenticate for a refused request.
    std::string Challenges(bool stale, Time now);

 private:
    struct Nonce {
        std::string text;
        Time made{};
        std::uint32_t uses = 0;
        std::uint32_t lastCount = 0;
    };
    struct DigestFields;

    static Credentials CheckBasic(std::string_view credentials, const std::vector<User>& users);
    Result CheckDigest(std::string_view fields, const HttpRequest& request,
                       const std::vector<User>& users, Time now);
    /// Why the fields cannot be right, whatever the password; empty when they can.
    std::string_view Mismatch(const DigestFields& fields, const HttpRequest& request) const;
    /// Why the nonce of proper credentials is not accepted; empty when it is, which counts as use.
    std::string_view UseNonce(const DigestFields& fields, Time now);

    const HttpAuthenticationSettings settings_;
    const std::string opaque_;
    std::deque<Nonce> nonces_;
};

}  // namespace camera_sim

#endif
