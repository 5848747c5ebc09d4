/// @file
/// Log lines of the places in common/LogPoints.h, and of those without a number.
#ifndef ONVIF_CLIENT_COMMON_LOGTEXT_H
#define ONVIF_CLIENT_COMMON_LOGTEXT_H

#include <cstdio>

#include "common/LogPoints.h"
#include "platform/Corekit.h"

namespace onvif_client {

/// Formats as printf does into 256 bytes (255 characters at most, the rest is cut) and writes the
/// text with COREKIT_NormalOutput.
template <typename... Arguments>
void LogNormal(const LogPoint& point, const char* format, Arguments... arguments) {
    char text[256];
    std::snprintf(text, sizeof text, format, arguments...);
    COREKIT_NormalOutput(text, point.label, point.line);
}

/// The same at a place without a number, whose text tells it apart.
template <typename... Arguments>
void LogNormal(const char* label, const char* format, Arguments... arguments) {
    LogNormal(LogPoint{label, 0}, format, arguments...);
}

/// A broken invariant or a failure; the program goes on.
inline void LogAssert(const LogPoint& point) {
    COREKIT_AbnormalOutput("ASSERT", point.label, point.line);
}
inline void LogAssert(const char* label, const char* what) {
    COREKIT_AbnormalOutput("ASSERT", label, what);
}

}  // namespace onvif_client

#endif
