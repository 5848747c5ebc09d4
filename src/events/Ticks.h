/// @file
/// Time spans on the tick counter, which wraps.
#ifndef ONVIF_CLIENT_EVENTS_TICKS_H
#define ONVIF_CLIENT_EVENTS_TICKS_H

#include <cstdint>

namespace onvif_client {

/// True when more than @p milliseconds lie between the two. A time that another thread stored after
/// @p now was read lies ahead of it, and nothing has passed since.
constexpr bool HavePassed(std::uint32_t now, std::uint32_t since, std::int32_t milliseconds) {
    return static_cast<std::int32_t>(now - since) > milliseconds;
}

/// After how many milliseconds that is true; 0: now.
constexpr std::uint32_t UntilPassed(std::uint32_t now, std::uint32_t since,
                                    std::int32_t milliseconds) {
    const std::int64_t left =
        std::int64_t{milliseconds} + 1 - static_cast<std::int32_t>(now - since);
    return left > 0 ? static_cast<std::uint32_t>(left) : 0;
}

}  // namespace onvif_client

#endif
