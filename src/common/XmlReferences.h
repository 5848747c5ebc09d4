/// @file
/// References in XML text ("&amp;", "&#65;") and what merely looks like them.
#ifndef ONVIF_CLIENT_COMMON_XMLREFERENCES_H
#define ONVIF_CLIENT_COMMON_XMLREFERENCES_H

#include <optional>
#include <string>
#include <string_view>

namespace onvif_client {

/// Devices send names that XML does not have ("&copy;") and plain ampersands. Both are text and
/// stay text, whatever stands before them. The parser decodes texts in their place and leaves
/// pieces of the decoded ones where it skips such an ampersand, so it must find it escaped.
/// @return the document with every ampersand of a text or an attribute that starts no reference
///         written as "&amp;", and every number that names no character of XML ("&#0;", "&#xD800;")
///         as U+FFFD; nothing when it has neither.
std::optional<std::string> EscapeStrayAmpersands(std::string_view document);

}  // namespace onvif_client

#endif
