/// @file
/// Sockets as the system has them: addresses, connecting, moving bytes, waiting.
/// Internal to this folder: what is particular to a system's sockets stands behind it.
#ifndef ONVIF_CLIENT_PLATFORM_SOCKETS_H
#define ONVIF_CLIENT_PLATFORM_SOCKETS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/Descriptor.h"

namespace onvif_client {

/// Has the system's sockets ready; as often as EndSockets afterwards. False: the system has none.
bool StartSockets();
void EndSockets();

/// The system's sockets are there while it lives; any number of these may.
class CSystemSockets {
 public:
    CSystemSockets() : there_(StartSockets()) {}
    ~CSystemSockets() {
        if (there_) {
            EndSockets();
        }
    }
    CSystemSockets(const CSystemSockets&) = delete;
    CSystemSockets& operator=(const CSystemSockets&) = delete;
    explicit operator bool() const { return there_; }

 private:
    const bool there_;
};

/// A place of the network.
struct Ipv4Endpoint {
    std::uint32_t address = 0;  ///< in network order; 0: all of this machine's
    std::uint16_t port = 0;

    bool operator==(const Ipv4Endpoint&) const = default;
};

/// @p ip (dotted IPv4) : @p port; nothing when that is none.
std::optional<Ipv4Endpoint> Ipv4Address(const char* ip, std::uint16_t port);

/// A TCP socket that does not block and that child processes do not inherit.
CDescriptor MakeTcpSocket();

enum class ConnectState {
    kConnecting,
    kEstablished,
    kRefused,  ///< the other side has nobody at this port
    kFailed,   ///< anything else
};

ConnectState StartConnecting(SystemHandle descriptor, const Ipv4Endpoint& address);
/// How a connection ended that was being made, once the socket is writable.
ConnectState ConnectOutcome(SystemHandle descriptor);
/// Whether a connection that cannot be made leaves its socket unwritable: whoever waits in the
/// background then waits for the failure as well. WaitFor does.
bool FailsWithoutBecomingWritable();

/// Makes a socket of MakeTcpSocket's listen; port 0 lets the system choose. What an earlier
/// listener left behind is no obstacle, another listener is.
bool Listen(SystemHandle descriptor, const Ipv4Endpoint& address);
/// The port that a socket has on this machine; 0 when it has none.
std::uint16_t LocalPort(SystemHandle descriptor);
/// The next connection that a listening socket has; none with @p again set: none just now, or one
/// that has gone already.
CDescriptor AcceptTcp(SystemHandle listener, bool& again);

/// Whether a wait that somebody else makes on a socket can be ended without closing what it waits
/// on. Where it cannot, the wait needs a second descriptor.
bool WaitsEndWithoutClosing();
/// A second descriptor of the same socket; none when the system has no more.
CDescriptor Duplicate(SystemHandle descriptor);

/// What became of bytes that were to move at once.
enum class Moved {
    kSome,       ///< as many as the system took or had
    kWouldWait,  ///< none, but some may later
    kEnded,      ///< the peer has closed, or the connection is broken
};

// Neither waits.
Moved SendNow(SystemHandle descriptor, std::string_view data, std::size_t& sent);
Moved ReceiveNow(SystemHandle descriptor, char* buffer, std::size_t capacity,
                 std::size_t& received);

/// Has the system acknowledge what comes next at once. On a connection that serves one request
/// after the other it would wait with that for the next bytes to send, and a peer that sends a
/// reply in pieces waits for the acknowledgement of the first one.
void AcknowledgeAtOnce(SystemHandle descriptor);

/// Breaks a connection off; whoever waits on it goes on.
void ShutDown(SystemHandle descriptor);

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
    friend Waited WaitFor(SystemHandle descriptor, Readiness what, int waitMs,
                          const CWakeUp* wakeUp);

    const CDescriptor descriptor_;
};

constexpr int kForever = -1;

/// Waits until the socket is ready or broken, @p wakeUp, if any, is set, or the time is over. It
/// may end in vain before that: deadlines are the caller's.
Waited WaitFor(SystemHandle descriptor, Readiness what, int waitMs,
               const CWakeUp* wakeUp = nullptr);

}  // namespace onvif_client

#endif
