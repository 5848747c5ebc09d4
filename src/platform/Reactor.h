/// @file
/// What waits in the background: reading from registered connections, and listening. Internal to
/// this folder; the only user of Boost.Asio. Its two threads start with the first waiter.
#ifndef ONVIF_CLIENT_PLATFORM_REACTOR_H
#define ONVIF_CLIENT_PLATFORM_REACTOR_H

#include <cstdint>
#include <memory>

#include "platform/Connections.h"
#include "platform/Wirelink.h"

namespace onvif_client {

/// Hands the bytes of a connection to an observer, one callback at a time. Any thread.
class CReadRegistration {
 public:
    /// Null when the system has no room for it.
    static std::shared_ptr<CReadRegistration> Make(std::shared_ptr<CConnection> connection,
                                                   std::uint32_t handle,
                                                   CSocketDataObserver* observer);
    CReadRegistration() = default;
    virtual ~CReadRegistration() = default;
    CReadRegistration(const CReadRegistration&) = delete;
    CReadRegistration& operator=(const CReadRegistration&) = delete;

    virtual void Start() = 0;
    virtual void Stop() = 0;
    /// No callback runs after it has returned, but for the one that it is called from.
    virtual void End() = 0;
};

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
    /// No callback runs after it has returned, but for the one that it is called from.
    virtual void Stop() = 0;
};

/// Ends the registration, waiting for its callback, and breaks the connection off.
void EndConnection(const ConnectionEntry& entry);

/// Ends the background threads; those who wait must have ended before. The next waiter starts new
/// ones.
void StopReactor();

}  // namespace onvif_client

#endif
