/// A port of 127.0.0.1 where nobody answers.
#ifndef ONVIF_CLIENT_TESTS_SUPPORT_CLOSEDPORT_H
#define ONVIF_CLIENT_TESTS_SUPPORT_CLOSEDPORT_H

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <bit>
#include <cstdint>

namespace client_test {

/// Holds the port, or a test that runs beside this one could be given it and answer.
class CClosedPort {
 public:
    CClosedPort() : descriptor_(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        if (bind(descriptor_, std::bit_cast<sockaddr*>(&address), size) == 0 &&
            getsockname(descriptor_, std::bit_cast<sockaddr*>(&address), &size) == 0) {
            port_ = ntohs(address.sin_port);
        }
    }
    ~CClosedPort() { close(descriptor_); }
    CClosedPort(const CClosedPort&) = delete;
    CClosedPort& operator=(const CClosedPort&) = delete;

    std::uint16_t Port() const { return port_; }

 private:
    int descriptor_;
    std::uint16_t port_ = 0;
};

}  // namespace client_test

#endif
