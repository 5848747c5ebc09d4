/// @file
/// The answer to a request, and its content type. Pure functions; any thread.
#ifndef ONVIF_CLIENT_EVENTS_CONTENTTYPES_H
#define ONVIF_CLIENT_EVENTS_CONTENTTYPES_H

#include <string>
#include <string_view>

namespace onvif_client {

/// The content type for a request path without its leading slash: by the extension behind the last
/// dot; XML without one, HTML for an empty path, "application/octet-stream" for an extension that
/// is not known.
std::string_view ContentTypeOf(std::string_view path);

/// The whole answer "done" to a request for @p path, without a body.
std::string BuildEmptyReply(std::string_view path);

}  // namespace onvif_client

#endif
