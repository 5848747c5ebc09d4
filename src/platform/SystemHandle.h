/// @file
/// What the system names sockets and files by. Internal to this folder.
#ifndef ONVIF_CLIENT_PLATFORM_SYSTEMHANDLE_H
#define ONVIF_CLIENT_PLATFORM_SYSTEMHANDLE_H

#include <cstdint>

namespace onvif_client {

/// A file descriptor on POSIX systems; on Windows a SOCKET or a HANDLE.
using SystemHandle = std::intptr_t;

constexpr SystemHandle kNoHandle = -1;

}  // namespace onvif_client

#endif
