/// @file
/// Connections by handle. Internal to this folder.
#ifndef ONVIF_CLIENT_PLATFORM_CONNECTIONS_H
#define ONVIF_CLIENT_PLATFORM_CONNECTIONS_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <utility>

#include "platform/Mutex.h"
#include "platform/Sockets.h"

namespace onvif_client {

class CConnectionWatch;

/// A non-blocking TCP socket, closed when the last user lets go of it. Any thread.
class CConnection {
 public:
    CConnection(CDescriptor descriptor, ConnectState state)
        : descriptor_(std::move(descriptor)), state_(state) {}
    CConnection(const CConnection&) = delete;
    CConnection& operator=(const CConnection&) = delete;

    SystemHandle Descriptor() const { return descriptor_.Get(); }

    /// Looks whether a connection that was being made stands by now.
    ConnectState Poll();

    /// Sends what the system takes, waiting at most @p waitMs for room.
    /// @return bytes sent; 0 with @p broken set when the connection is no more.
    std::size_t Send(std::string_view data, int waitMs, bool& broken) const;
    /// Receives what is there. @return bytes received; 0 with @p closed set at the end.
    std::size_t Receive(char* buffer, std::size_t capacity, bool& closed) const;

    /// Breaks the connection off; whoever waits on it goes on at once.
    void Break();

 private:
    const CDescriptor descriptor_;
    std::atomic<ConnectState> state_;
};

/// What stands behind a handle.
struct ConnectionEntry {
    std::shared_ptr<CConnection> connection;
    std::shared_ptr<CConnectionWatch> watch;  // null: not watched
};

class CConnectionTable {
 public:
    static CConnectionTable& Instance();

    /// @return its handle, the next one that is free.
    std::uint32_t Add(std::shared_ptr<CConnection> connection);
    /// Null for an unknown handle.
    std::shared_ptr<CConnection> Find(std::uint32_t handle);
    std::shared_ptr<CConnectionWatch> FindWatch(std::uint32_t handle);
    /// False for an unknown handle or one that is watched already.
    bool AddWatch(std::uint32_t handle, std::shared_ptr<CConnectionWatch> watch);
    /// Takes the whole entry out; empty for an unknown handle.
    ConnectionEntry Take(std::uint32_t handle);
    /// The entry with the smallest handle behind @p handle, 0 and an empty one at the end: a walk
    /// needs no memory, and goes on whatever happens to the table meanwhile.
    std::pair<std::uint32_t, ConnectionEntry> After(std::uint32_t handle);

 private:
    CMutex lock_;  // leaf
    std::map<std::uint32_t, ConnectionEntry> entries_ GUARDED_BY(lock_);
    std::uint32_t lastHandle_ GUARDED_BY(lock_) = 0;
};

}  // namespace onvif_client

#endif
