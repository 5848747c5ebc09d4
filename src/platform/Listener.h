/// @file
/// Listening sockets. Internal to this folder.
#ifndef ONVIF_CLIENT_PLATFORM_LISTENER_H
#define ONVIF_CLIENT_PLATFORM_LISTENER_H

#include <cstdint>
#include <memory>

#include "platform/Wirelink.h"

namespace onvif_client {

/// Accepts connections and hands each to an observer on a thread of its own. Any thread.
class CListener {
 public:
    /// @p address is dotted IPv4, port 0 lets the system choose. Null when the port cannot be had.
    static std::shared_ptr<CListener> Make(const char* address, std::uint16_t port,
                                           CListenSocketObserver* observer);
    CListener() = default;
    virtual ~CListener() = default;
    CListener(const CListener&) = delete;
    CListener& operator=(const CListener&) = delete;

    virtual std::uint16_t Port() const = 0;
    /// Accepts nothing any more.
    virtual void Close() = 0;
    /// After Close: no callback runs after it has returned, but for the one that it is called from.
    virtual void Wait() = 0;
    void Stop() {
        Close();
        Wait();
    }
};

}  // namespace onvif_client

#endif
