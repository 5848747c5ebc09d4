/// @file
/// The end of a descriptor that Boost.Asio waits on. Internal to this folder.
#ifndef ONVIF_CLIENT_PLATFORM_ASIODESCRIPTOR_H
#define ONVIF_CLIENT_PLATFORM_ASIODESCRIPTOR_H

#include <boost/system/error_code.hpp>

#include "platform/Descriptor.h"

namespace onvif_client {

/// Closes what Asio waited on. The descriptor has been released to Asio, and comes back for that.
template <typename Socket>
void CloseDescriptor(Socket& socket) {
    boost::system::error_code ignored;
    if (socket.is_open()) {
        const CDescriptor closed(socket.release(ignored));
    }
}

}  // namespace onvif_client

#endif
