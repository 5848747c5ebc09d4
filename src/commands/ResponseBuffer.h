/// @file
/// The bytes that a request gives back to the application.
#ifndef ONVIF_CLIENT_COMMANDS_RESPONSEBUFFER_H
#define ONVIF_CLIENT_COMMANDS_RESPONSEBUFFER_H

#include <memory>

namespace onvif_client {

/// Empty: no data and size 0. The application frees the array through the library.
struct ResponseBuffer {
    std::unique_ptr<char[]> data;
    int size = 0;
};

}  // namespace onvif_client

#endif
