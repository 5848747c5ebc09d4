/// @file
/// A line of the log, for those of this floor that have its text ready.
#ifndef ONVIF_CLIENT_PLATFORM_LOGLINES_H
#define ONVIF_CLIENT_PLATFORM_LOGLINES_H

#include <string_view>

namespace onvif_client {

/// Information, written as it is: ShownText has made it fit. Any thread. Throws without memory.
void WriteLogLine(std::string_view text);

}  // namespace onvif_client

#endif
