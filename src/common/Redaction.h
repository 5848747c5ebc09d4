/// @file
/// HTTP messages made fit to be shown to others: without what lets in. Pure functions.
#ifndef ONVIF_CLIENT_COMMON_REDACTION_H
#define ONVIF_CLIENT_COMMON_REDACTION_H

#include <string>
#include <string_view>

#include "common/RedactedFields.h"

namespace onvif_client {

/// What is known of a session beforehand, and goes wherever it stands as a word of its own. Words
/// that are too short could be anything.
struct KnownSecrets {
    std::string_view user;      // of three bytes and more, in the texts of elements
    std::string_view password;  // of four bytes and more, anywhere
};

/// A message, or the front of one, with kRemoved in the place of
/// - credentials, challenges and cookies in HTTP fields (RedactedFields.h),
/// - contents of XML elements with names as Username, Password, Nonce, Created, and values of
///   attributes, of items and of parameters in URIs with such names,
/// - user and password in front of a URI's host,
/// - what is known.
/// What is not understood goes rather than stays. Time and memory are in proportion to the text.
std::string Redacted(std::string_view message, const KnownSecrets& known = {});

}  // namespace onvif_client

#endif
