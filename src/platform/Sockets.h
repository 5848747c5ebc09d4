/// @file
/// Sockets as the system has them: owned descriptors, addresses, connecting. Internal to this
/// folder; beside the waits themselves, what is particular to a system's sockets stands here.
#ifndef ONVIF_CLIENT_PLATFORM_SOCKETS_H
#define ONVIF_CLIENT_PLATFORM_SOCKETS_H

#include <netinet/in.h>

#include <cstdint>
#include <optional>
#include <utility>

namespace onvif_client {

/// A file descriptor, closed at the end of its owner.
class CDescriptor {
 public:
    /// Takes it over; -1 is none.
    explicit CDescriptor(int descriptor) : descriptor_(descriptor) {}
    ~CDescriptor();
    CDescriptor(CDescriptor&& other) noexcept : descriptor_(other.Release()) {}
    CDescriptor& operator=(CDescriptor&&) = delete;

    int Get() const { return descriptor_; }
    explicit operator bool() const { return descriptor_ >= 0; }
    /// Whoever asks closes it.
    int Release() { return std::exchange(descriptor_, -1); }

 private:
    int descriptor_;
};

/// The address of @p ip (dotted IPv4) : @p port; nothing when that is none.
std::optional<sockaddr_in> Ipv4Address(const char* ip, std::uint16_t port);

/// A TCP socket that does not block and that child processes do not inherit.
CDescriptor MakeTcpSocket();

enum class ConnectState { kConnecting, kEstablished, kFailed };

ConnectState StartConnecting(int descriptor, const sockaddr_in& address);
/// How a connection ended that was being made, once the socket is writable.
ConnectState ConnectOutcome(int descriptor);

/// Whether the last operation failed only because it would have had to wait.
bool WouldHaveWaited();

}  // namespace onvif_client

#endif
