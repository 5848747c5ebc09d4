/// @file
/// Sockets as the system has them: addresses, connecting, moving bytes, waiting.
/// Internal to this folder: what is particular to a system's sockets stands here.
#ifndef ONVIF_CLIENT_PLATFORM_SOCKETS_H
#define ONVIF_CLIENT_PLATFORM_SOCKETS_H

#include <netinet/in.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/Descriptor.h"

namespace onvif_client {

/// The address of @p ip (dotted IPv4) : @p port; nothing when that is none.
std::optional<sockaddr_in> Ipv4Address(const char* ip, std::uint16_t port);

/// A TCP socket that does not block and that child processes do not inherit.
CDescriptor MakeTcpSocket();

enum class ConnectState { kConnecting, kEstablished, kFailed };

ConnectState StartConnecting(int descriptor, const sockaddr_in& address);
/// How a connection ended that was being made, once the socket is writable.
ConnectState ConnectOutcome(int descriptor);

/// The next connection that a listening socket has; none with @p again set: none just now, or one
/// that has gone already.
CDescriptor AcceptTcp(int listener, bool& again);

/// A second descriptor of the same socket; none when the system has no more.
CDescriptor Duplicate(int descriptor);

/// What became of bytes that were to move at once.
enum class Moved {
    kSome,       ///< as many as the system took or had
    kWouldWait,  ///< none, but some may later
    kEnded,      ///< the peer has closed, or the connection is broken
};

// Neither waits.
Moved SendNow(int descriptor, std::string_view data, std::size_t& sent);
Moved ReceiveNow(int descriptor, char* buffer, std::size_t capacity, std::size_t& received);

/// Breaks a connection off; whoever waits on it goes on.
void ShutDown(int descriptor);

enum class Readiness { kReadable, kWritable };
enum class Waited { kReady, kWoken, kInVain, kFailed };

/// Ends waits from another thread.
class CWakeUp {
 public:
    CWakeUp();
    explicit operator bool() const { return static_cast<bool>(descriptor_); }
    /// Every wait ends with kWoken, from now on.
    void Set() const;

 private:
    friend Waited WaitFor(int descriptor, Readiness what, int waitMs, const CWakeUp* wakeUp);

    const CDescriptor descriptor_;
};

/// Waits until the socket is ready or broken, @p wakeUp, if any, is set, or the time is over. It
/// may end in vain before that: deadlines are the caller's.
Waited WaitFor(int descriptor, Readiness what, int waitMs, const CWakeUp* wakeUp = nullptr);

}  // namespace onvif_client

#endif
