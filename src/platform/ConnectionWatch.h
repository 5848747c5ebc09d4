/// @file
/// Waits in the background for a connection to come about, to take bytes and to bring some.
/// Internal to this folder.
#ifndef ONVIF_CLIENT_PLATFORM_CONNECTIONWATCH_H
#define ONVIF_CLIENT_PLATFORM_CONNECTIONWATCH_H

#include <cstdint>
#include <memory>

#include "platform/Connections.h"
#include "platform/Wirelink.h"

namespace onvif_client {

/// Tells observers what happens on a connection, one callback at a time. Any thread.
class CConnectionWatch {
 public:
    /// Null when the system has no room for it.
    static std::shared_ptr<CConnectionWatch> Make(std::shared_ptr<CConnection> connection,
                                                  std::uint32_t handle);
    CConnectionWatch() = default;
    virtual ~CConnectionWatch() = default;
    CConnectionWatch(const CConnectionWatch&) = delete;
    CConnectionWatch& operator=(const CConnectionWatch&) = delete;

    /// The bytes go to that observer, from Start on. False when there is one already.
    virtual bool Register(CSocketDataObserver* observer) = 0;
    // Both return false when nobody is registered.
    virtual bool Start() = 0;
    virtual bool Stop() = 0;
    /// Calls the observer once: when the connection stands and takes bytes, when it is broken, or
    /// when the time is over. False while another call is awaited, or without memory.
    virtual bool AwaitSendable(CSendableObserver* observer, std::uint32_t timeoutMs) = 0;
    // No callback runs after these have returned, but for the one that they are called from.
    /// Forgets the observers; others may come. False when none has come since the last time.
    virtual bool UnRegister() = 0;
    /// For good: nobody can register any more.
    virtual void End() = 0;
};

/// Ends the watch, waiting for its callback, and breaks the connection off.
void EndConnection(const ConnectionEntry& entry);

}  // namespace onvif_client

#endif
