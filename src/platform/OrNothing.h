/// @file
/// For operations whose callers know no exceptions: without memory, or whatever else the system
/// refuses, they come to nothing.
#ifndef ONVIF_CLIENT_PLATFORM_ORNOTHING_H
#define ONVIF_CLIENT_PLATFORM_ORNOTHING_H

#include <exception>

namespace onvif_client {

/// @return what @p make does; 0, null or false when it throws.
template <typename Make>
auto OrNothing(const Make& make) -> decltype(make()) {
    try {
        return make();
    } catch (const std::exception&) {
        return {};
    }
}

}  // namespace onvif_client

#endif
