/// @file
/// HTTP fields without credentials: a part of what Redaction.h promises. Pure functions.
#ifndef ONVIF_CLIENT_COMMON_REDACTEDFIELDS_H
#define ONVIF_CLIENT_COMMON_REDACTEDFIELDS_H

#include <string>
#include <string_view>

namespace onvif_client {

/// Stands where something was.
inline constexpr std::string_view kRemoved = "(removed)";

/// The text without the values of such fields, wherever a line begins with one's name. Of
/// credentials and challenges the scheme stays, and what says nothing secret (realm, algorithm,
/// ...), as far as it is written as it should be.
std::string WithoutCredentialFields(std::string_view text);

}  // namespace onvif_client

#endif
