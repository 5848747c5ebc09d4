/// @file
/// How long a connection stays open behind an HTTP reply, as its head says (RFC 9112, 9.3). Pure
/// function; any thread.
#ifndef ONVIF_CLIENT_COMMON_HTTPPERSISTENCE_H
#define ONVIF_CLIENT_COMMON_HTTPPERSISTENCE_H

#include <cstdint>
#include <string_view>

namespace onvif_client {

/// @param reply  from the status line on; what stands behind its head is not looked at.
/// @return milliseconds, at most @p longest, and half a second less than the device says; 0: the
/// connection ends with the reply, or two fields
///         disagree about where that ends.
std::uint32_t PersistsForMs(std::string_view reply, std::uint32_t longest);

}  // namespace onvif_client

#endif
