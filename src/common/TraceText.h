/// @file
/// Traces of the places in common/LogPoints.h, and of those without one.
#ifndef ONVIF_CLIENT_COMMON_TRACETEXT_H
#define ONVIF_CLIENT_COMMON_TRACETEXT_H

#include <cstdio>

#include "platform/Corekit.h"

namespace onvif_client {

/// Formats as printf does into 1024 bytes; of a longer text the rest is cut, and the line ended.
template <typename... Arguments>
void Trace(const char* format, Arguments... arguments) {
    char text[1024];
    if (std::snprintf(text, sizeof text, format, arguments...) >= int{sizeof text}) {
        text[sizeof text - 2] = '\n';
    }
    COREKIT_Trace(text);
}

}  // namespace onvif_client

#endif
