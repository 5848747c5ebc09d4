/// @file
/// The locks and conditions under those of Mutex.h, which everybody uses. Internal to this folder.
#ifndef ONVIF_CLIENT_PLATFORM_NATIVELOCKS_H
#define ONVIF_CLIENT_PLATFORM_NATIVELOCKS_H

// The one place where a header needs the system's own types.
#if defined(_WIN32)
#include "platform/windows/NativeLocks.h"
#else
#include "platform/posix/NativeLocks.h"
#endif

#endif
