/// @file
/// The WS-Security UsernameToken of a request (UsernameToken Profile 1.0, password digest).
#ifndef ONVIF_CLIENT_CLIENT_SECURITYHEADER_H
#define ONVIF_CLIENT_CLIENT_SECURITYHEADER_H

#include <optional>
#include <string>

#include "platform/Clock.h"
#include "transform/XmlTransform.h"

namespace onvif_client {

struct Credentials {
    std::string user;
    std::string password;

    /// Without credentials requests go out unsigned.
    bool Present() const { return !user.empty() || !password.empty(); }
};

/// A text that no other call in this process gives: 32 lower-case hexadecimal digits; empty where
/// the system has no MD5. Any thread.
std::string MakeNonceText();

/// What a security header says anew each time.
struct TokenTexts {
    std::string digest;
    std::string nonce;
    std::string created;
};

/// For a header created at that time, else by this machine's clock. Nothing when there is no nonce
/// or no digest to be had.
std::optional<TokenTexts> MakeToken(const Credentials& credentials,
                                    const std::optional<CalendarTime>& created = std::nullopt);

/// Fills the security header. Without credentials the whole SOAP header is removed.
/// @return false when the envelope lacks an element of the header.
bool FillSecurityHeader(const Credentials& credentials, CXmlTransform& envelope,
                        const TokenTexts& texts);

/// The same with a new token, created by the device's clock.
/// @param deviceTimeResult  result document with the device's time; missing fields are sent as an
///                          empty year and zeros. Without credentials only the security element is
///                          removed, and an empty SOAP header stays.
bool Authentication_UseIPCTime(const Credentials& credentials, CXmlTransform& envelope,
                               const std::string& deviceTimeResult);

}  // namespace onvif_client

#endif
