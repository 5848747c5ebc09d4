/// @file
/// WS-Security UsernameToken as a camera checks it.
#ifndef CAMERA_SIM_SOAP_AUTHENTICATION_H
#define CAMERA_SIM_SOAP_AUTHENTICATION_H

#include <chrono>
#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

#include "camera_sim/soap/SoapRequest.h"
#include "camera_sim/state/CameraState.h"

namespace camera_sim {

/// Base64 (SHA-1 (nonce, created, password)), the nonce as bytes.
std::string PasswordDigest(std::string_view nonce, std::string_view created,
                           std::string_view password);
std::string EncodeBase64(std::string_view bytes);
/// Nothing when @p text is not Base64.
std::optional<std::string> DecodeBase64(std::string_view text);
/// The point in time that a UTC dateTime ("2024-05-06T07:08:09Z", fractions allowed) names.
std::optional<std::chrono::sys_seconds> ParseUtc(std::string_view text);

struct Credentials {
    bool valid = false;
    std::string refusal;  ///< why they are not valid; empty also when none were given
};

/// Remembers the nonces it has accepted: a fixed number, the oldest are forgotten first.
/// Not safe for use by several threads at once.
class Authenticator {
 public:
    Authenticator(std::chrono::seconds createdWindow, bool refuseReplays)
        : createdWindow_(createdWindow), refuseReplays_(refuseReplays) {}

    /// @param header the envelope's header or null
    /// @param now the camera's time
    Credentials Check(const XmlElement* header, const User& user, std::chrono::sys_seconds now);

 private:
    /// False when the nonce was remembered already.
    bool Remember(std::string nonce);

    const std::chrono::seconds createdWindow_;
    const bool refuseReplays_;
    std::unordered_set<std::string> nonces_;
    std::deque<std::string> order_;
};

}  // namespace camera_sim

#endif
