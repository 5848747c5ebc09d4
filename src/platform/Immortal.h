/// @file
/// Objects that are never destroyed, for what threads may still use while the process ends.
#ifndef ONVIF_CLIENT_PLATFORM_IMMORTAL_H
#define ONVIF_CLIENT_PLATFORM_IMMORTAL_H

#include <memory>

namespace onvif_client {

/// For the initialiser of a function-local static reference.
template <typename T, typename... Arguments>
T& MakeImmortal(Arguments&... arguments) {
    return *std::make_unique<T>(arguments...).release();
}

}  // namespace onvif_client

#endif
