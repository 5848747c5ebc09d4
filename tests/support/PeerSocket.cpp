#include "support/PeerSocket.h"

#include <SystemSockets.h>

namespace client_test {

namespace {

using system_sockets::Socket;

Socket Number(std::intptr_t socket) {
    return static_cast<Socket>(socket);
}

sockaddr_in Loopback(std::uint16_t port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

void SetTrue(Socket socket, int level, int option) {
    const int value = 1;
    setsockopt(socket, level, option, reinterpret_cast<const char*>(&value), sizeof value);
}

}  // namespace

CPeerSocket::CPeerSocket(Kind kind)
    : CPeerSocket(static_cast<std::intptr_t>(
          system_sockets::Make(kind == Kind::kDatagrams ? SOCK_DGRAM : SOCK_STREAM))) {}

CPeerSocket::~CPeerSocket() {
    if (*this) {
        system_sockets::Close(Number(socket_));
    }
}

bool CPeerSocket::Bind(std::uint16_t port) const {
    const sockaddr_in address = Loopback(port);
    if (port != 0) {
        SetTrue(Number(socket_), SOL_SOCKET, SO_REUSEADDR);
    }
    return bind(Number(socket_), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

std::uint16_t CPeerSocket::Port() const {
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    const int got = getsockname(Number(socket_), reinterpret_cast<sockaddr*>(&address), &size);
    return got == 0 ? ntohs(address.sin_port) : std::uint16_t{0};
}

bool CPeerSocket::Listen(int queue) const {
    return listen(Number(socket_), queue) == 0;
}

CPeerSocket CPeerSocket::Accept() const {
    return CPeerSocket(static_cast<std::intptr_t>(system_sockets::Accept(Number(socket_))));
}

bool CPeerSocket::Connect(std::uint16_t port) const {
    const sockaddr_in address = Loopback(port);
    SetTrue(Number(socket_), IPPROTO_TCP, TCP_NODELAY);
    return connect(Number(socket_), reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
           0;
}

bool CPeerSocket::ConnectsSoon(std::uint16_t port) const {
    constexpr int kSoonMs = 50;
    system_sockets::DoNotBlock(Number(socket_));
    if (Connect(port)) {
        return true;
    }
    pollfd polled = {Number(socket_), POLLOUT, 0};
    return system_sockets::Poll(&polled, kSoonMs) > 0 && polled.revents == POLLOUT;
}

void CPeerSocket::BePatientForAMinute() const {
    system_sockets::SetPatience(Number(socket_), 60);
}

std::string CPeerSocket::Read(std::size_t length, bool* inVain) const {
    std::string bytes;
    char block[4096];
    while (bytes.size() < length) {
        const auto received = recv(Number(socket_), block, sizeof block, 0);
        if (received <= 0) {
            if (inVain != nullptr) {
                *inVain = received < 0 && system_sockets::WasInVain();
            }
            break;
        }
        bytes.append(block, static_cast<std::size_t>(received));
    }
    return bytes;
}

bool CPeerSocket::Send(std::string_view bytes) const {
    while (!bytes.empty()) {
        const auto sent = system_sockets::Send(Number(socket_), bytes);
        if (sent <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

void CPeerSocket::WaitForClose() const {
    while (!Read(1).empty()) {
    }
}

void CPeerSocket::EndSending() const {
    shutdown(Number(socket_), system_sockets::kSending);
}

void CPeerSocket::BreakOff() const {
    shutdown(Number(socket_), system_sockets::kBoth);
}

bool CPeerSocket::SendTo(std::uint16_t port, std::string_view datagram) const {
    return Connect(port) && Send(datagram);
}

std::string CPeerSocket::ReceiveFrom(std::uint16_t& port) const {
    sockaddr_in from = {};
    socklen_t size = sizeof from;
    char datagram[65536];
    BePatientForAMinute();
    const auto received = recvfrom(Number(socket_), datagram, sizeof datagram, 0,
                                   reinterpret_cast<sockaddr*>(&from), &size);
    port = ntohs(from.sin_port);
    return {datagram, received < 0 ? 0 : static_cast<std::size_t>(received)};
}

}  // namespace client_test
