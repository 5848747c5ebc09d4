/// @file
/// Formatted log lines.
#ifndef ONVIF_CLIENT_COMMON_LOGTEXT_H
#define ONVIF_CLIENT_COMMON_LOGTEXT_H

#include <cstdio>

#include "platform/Corekit.h"

namespace onvif_client {

/// Formats as printf does into 256 bytes (255 characters at most, the rest is cut) and writes the
/// text with COREKIT_NormalOutput.
template <typename... Arguments>
void LogNormal(const char* source, int line, const char* format, Arguments... arguments) {
    char text[256];
    std::snprintf(text, sizeof text, format, arguments...);
    COREKIT_NormalOutput(text, source, line);
}

}  // namespace onvif_client

#endif
