/// @file
/// Datagrams over IPv4, and the interfaces by which they leave. Addresses are dotted.
#ifndef ONVIFCTL_SYSTEM_DATAGRAMSOCKET_H
#define ONVIFCTL_SYSTEM_DATAGRAMSOCKET_H

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace onvifctl {

struct NetworkInterface {
    std::string name;
    std::string address;
    bool multicasts;  // it is up and can multicast
};

/// Those that have an IPv4 address; one with several is there for each.
std::vector<NetworkInterface> NetworkInterfaces();

/// One socket on a port that the system chooses. Its multicasts stay in the network of the
/// interface, and programs of this machine get them, too.
class CDatagramSocket {
 public:
    /// @p from: the address of an interface; empty: the one that the system finds best.
    /// Throws CFailure when none can be opened there.
    explicit CDatagramSocket(const std::string& from);
    ~CDatagramSocket();
    CDatagramSocket(CDatagramSocket&& other) noexcept
        : socket_(std::exchange(other.socket_, kNone)) {}
    CDatagramSocket& operator=(CDatagramSocket&&) = delete;

    /// False when it cannot even be sent.
    bool Send(const std::string& to, std::uint16_t port, std::string_view bytes) const;

    /// Waits until one of the sockets has something, for that long at most.
    /// @return a datagram of each that has.
    static std::vector<std::string> Receive(const std::vector<CDatagramSocket>& sockets,
                                            std::chrono::milliseconds patience);

 private:
    static constexpr std::intptr_t kNone = -1;

    std::intptr_t socket_;  // as the system names it
};

}  // namespace onvifctl

#endif
