/// @file
/// WS-Security UsernameToken as a camera checks it.
#ifndef CAMERA_SIM_SOAP_AUTHENTICATION_H
#define CAMERA_SIM_SOAP_AUTHENTICATION_H

#include <chrono>
#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "camera_sim/http/Credentials.h"
#include "camera_sim/soap/SoapRequest.h"
#include "camera_sim/state/User.h"

namespace camera_sim {

/// Base64 (SHA-1 (nonce, created, password)), the nonce as bytes.
std::string PasswordDigest(std::string_view nonce, std::string_view created,
                           std::string_view password);

/// Remembers the nonces it has accepted: a fixed number, the oldest are forgotten first.
/// Not safe for use by several threads at once.
class CAuthenticator {
 public:
    CAuthenticator(std::chrono::seconds createdWindow, bool refuseReplays)
        : createdWindow_(createdWindow), refuseReplays_(refuseReplays) {}

    /// @param header the envelope's header or null
    /// @param now the camera's time
    /// @param users none: everybody is an administrator
    Credentials Check(const XmlElement* header, const std::vector<User>& users,
                      std::chrono::sys_seconds now);

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
