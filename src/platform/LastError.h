/// @file
/// Why the calling thread's last operation of the socket layer failed, for WIRELINK_GetLastError.
/// Internal to this folder.
#ifndef ONVIF_CLIENT_PLATFORM_LASTERROR_H
#define ONVIF_CLIENT_PLATFORM_LASTERROR_H

#include <cstdint>

namespace onvif_client {

inline thread_local std::uint32_t lastError = 0;

}  // namespace onvif_client

#endif
