/// @file
/// A TCP connection for a look at a host: nothing here waits longer than it is told to.
#ifndef ONVIFCTL_SYSTEM_TCPCONNECTION_H
#define ONVIFCTL_SYSTEM_TCPCONNECTION_H

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace onvifctl {

/// How far a connection has come.
enum class Reach {
    kPending,  // no answer yet
    kConnected,
    kRefused,  // nobody listens there
    kTimeOut,  // the system has given up
    kNoRoute,  // no way to that network, or nobody there has the address
    kFailed,   // this machine does not let it begin
};

enum class Heard { kBytes, kNothing, kEnd };

class CTcpConnection {
 public:
    /// Begins to connect.
    /// @param address  dotted IPv4.
    CTcpConnection(const std::string& address, unsigned short port);
    ~CTcpConnection();
    CTcpConnection(const CTcpConnection&) = delete;
    CTcpConnection& operator=(const CTcpConnection&) = delete;

    /// Waits that long at most, and goes on where it was when it is called again.
    Reach AwaitConnection(std::chrono::milliseconds patience);

    /// The system's words for kFailed.
    std::string Error() const;

    /// At once, so no more than a connection takes by itself: a few KiB.
    bool Send(std::string_view bytes) const;

    /// Adds what has come. kEnd: the other side has closed, or has broken the connection off.
    Heard Read(std::string& bytes, std::chrono::milliseconds patience) const;

 private:
    std::intptr_t socket_;  // as the system names it
    Reach reach_ = Reach::kPending;
    int error_ = 0;
};

}  // namespace onvifctl

#endif
