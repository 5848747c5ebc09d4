/// @file
/// Log lines of the places in common/LogPoints.h, and of those without a number. Where the text
/// does not say which device a line is about, "IP:PORT" is given beside it and follows in brackets.
#ifndef ONVIF_CLIENT_COMMON_LOGTEXT_H
#define ONVIF_CLIENT_COMMON_LOGTEXT_H

#include <cstdint>
#include <cstdio>
#include <string>

#include "common/LogPoints.h"
#include "platform/Corekit.h"

namespace onvif_client {

/// A device as log lines name it.
inline std::string DeviceName(const std::string& ip, std::uint16_t port) {
    return ip + ":" + std::to_string(port);
}

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

/// The same about a device that the text does not name.
template <typename... Arguments>
void LogNormalOf(const std::string& device, const LogPoint& point, const char* format,
                 Arguments... arguments) {
    char text[256];
    std::snprintf(text, sizeof text, format, arguments...);
    COREKIT_NormalOutput(text, point.label, point.line, device.c_str());
}

/// "IP:PORT: what has changed".
inline void LogNews(const DeviceNews& news, const std::string& device) {
    COREKIT_NormalOutput((device + ": " + news.text).c_str(), news.label, 0);
}

/// A broken invariant or a failure; the program goes on.
inline void LogAssert(const LogPoint& point) {
    COREKIT_AbnormalOutput("ASSERT", point.label, point.line);
}
inline void LogAssert(const LogPoint& point, const std::string& device) {
    COREKIT_AbnormalOutput("ASSERT", point.label, point.line, device.c_str());
}
inline void LogAssert(const char* label, const char* what) {
    COREKIT_AbnormalOutput("ASSERT", label, what);
}
inline void LogAssert(const char* label, const char* what, const std::string& device) {
    COREKIT_AbnormalOutput("ASSERT", label, what, device.c_str());
}

}  // namespace onvif_client

#endif
