/// @file
/// HTTP messages as they arrive in a buffer, piece by piece. Pure functions; any thread.
#ifndef ONVIF_CLIENT_EVENTS_HTTPMESSAGE_H
#define ONVIF_CLIENT_EVENTS_HTTPMESSAGE_H

#include <cstddef>
#include <string_view>

namespace onvif_client {

/// Bytes of a message that devices post; also all that is read for one that never ends.
constexpr std::size_t kLargestMessage = 1048576;

enum class MessageState {
    kComplete,
    kIncomplete,  ///< more bytes may complete it
    kImpossible,  ///< no bytes can: it is too long, or its Content-Length is no length
};

/// What is known so far of the message at the front of a buffer. A new buffer begins with a new
/// frame.
struct MessageFrame {
    std::size_t headerSize = 0;  ///< with its blank line; 0: its end is not there yet
    std::size_t bodySize = 0;    ///< as announced by Content-Length; 0 without
    bool announced = false;      ///< whether there is a Content-Length
    std::size_t searched = 0;    ///< the header does not end before
};

/// Looks at the message at the front of @p buffer; what follows it is ignored.
/// @param frame    what the last call left there; the buffer has only grown since.
/// @param largest  bytes; a message that is longer is never complete.
MessageState CutMessage(std::string_view buffer, MessageFrame& frame,
                        std::size_t largest = kLargestMessage);

}  // namespace onvif_client

#endif
