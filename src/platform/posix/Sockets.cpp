#include "platform/Sockets.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

namespace onvif_client {

namespace {

int Number(SystemHandle descriptor) {
    return static_cast<int>(descriptor);
}

bool WouldHaveWaited() {
    return errno == EAGAIN || errno == EWOULDBLOCK;
}

ConnectState FailureOf(int error) {
    return error == ECONNREFUSED ? ConnectState::kRefused : ConnectState::kFailed;
}

sockaddr_in SystemAddress(const Ipv4Endpoint& endpoint) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(endpoint.port);
    address.sin_addr.s_addr = endpoint.address;
    return address;
}

}  // namespace

bool StartSockets() {
    return true;
}

void EndSockets() {}

std::optional<Ipv4Endpoint> Ipv4Address(const char* ip, std::uint16_t port) {
    in_addr address = {};
    if (ip == nullptr || inet_pton(AF_INET, ip, &address) != 1) {
        return std::nullopt;
    }
    return Ipv4Endpoint{address.s_addr, port};
}

CDescriptor MakeTcpSocket() {
    return CDescriptor(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

ConnectState StartConnecting(SystemHandle descriptor, const Ipv4Endpoint& endpoint) {
    const sockaddr_in address = SystemAddress(endpoint);
    if (connect(Number(descriptor), reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
        0) {
        return ConnectState::kEstablished;
    }
    return errno == EINPROGRESS ? ConnectState::kConnecting : FailureOf(errno);
}

ConnectState ConnectOutcome(SystemHandle descriptor) {
    int error = 0;
    socklen_t size = sizeof error;
    if (getsockopt(Number(descriptor), SOL_SOCKET, SO_ERROR, &error, &size) != 0) {
        return ConnectState::kFailed;
    }
    return error == 0 ? ConnectState::kEstablished : FailureOf(error);
}

bool FailsWithoutBecomingWritable() {
    return false;
}

bool Listen(SystemHandle descriptor, const Ipv4Endpoint& endpoint) {
    const sockaddr_in address = SystemAddress(endpoint);
    const int reuse = 1;
    return setsockopt(Number(descriptor), SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse) == 0 &&
           bind(Number(descriptor), reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
               0 &&
           listen(Number(descriptor), SOMAXCONN) == 0;
}

std::uint16_t LocalPort(SystemHandle descriptor) {
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    const int got = getsockname(Number(descriptor), reinterpret_cast<sockaddr*>(&address), &size);
    return got == 0 ? ntohs(address.sin_port) : std::uint16_t{0};
}

CDescriptor AcceptTcp(SystemHandle listener, bool& again) {
    CDescriptor accepted(accept4(Number(listener), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    again = !accepted && (WouldHaveWaited() || errno == EINTR || errno == ECONNABORTED);
    return accepted;
}

bool WaitsEndWithoutClosing() {
    return true;
}

CDescriptor Duplicate(SystemHandle descriptor) {
    return CDescriptor(fcntl(Number(descriptor), F_DUPFD_CLOEXEC, 0));
}

Moved SendNow(SystemHandle descriptor, std::string_view data, std::size_t& sent) {
    for (;;) {
        const ssize_t taken =
            send(Number(descriptor), data.data(), data.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        sent = static_cast<std::size_t>(std::max<ssize_t>(taken, 0));
        if (taken >= 0) {
            return Moved::kSome;
        }
        if (errno != EINTR) {
            return WouldHaveWaited() ? Moved::kWouldWait : Moved::kEnded;
        }
    }
}

Moved ReceiveNow(SystemHandle descriptor, char* buffer, std::size_t capacity,
                 std::size_t& received) {
    for (;;) {
        const ssize_t given = recv(Number(descriptor), buffer, capacity, MSG_DONTWAIT);
        received = static_cast<std::size_t>(std::max<ssize_t>(given, 0));
        if (given >= 0) {
            return given > 0 ? Moved::kSome : Moved::kEnded;
        }
        if (errno != EINTR) {
            return WouldHaveWaited() ? Moved::kWouldWait : Moved::kEnded;
        }
    }
}

void AcknowledgeAtOnce(SystemHandle descriptor) {
    const int on = 1;
    setsockopt(Number(descriptor), IPPROTO_TCP, TCP_QUICKACK, &on, sizeof on);
}

void ShutDown(SystemHandle descriptor) {
    shutdown(Number(descriptor), SHUT_RDWR);
}

CWakeUp::CWakeUp() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void CWakeUp::Set() const {
    eventfd_write(Number(descriptor_.Get()), 1);
}

Waited WaitFor(SystemHandle descriptor, Readiness what, int waitMs, const CWakeUp* wakeUp) {
    const short events = what == Readiness::kReadable ? POLLIN : POLLOUT;
    pollfd polled[] = {{Number(descriptor), events, 0},
                       {wakeUp == nullptr ? -1 : Number(wakeUp->descriptor_.Get()), POLLIN, 0}};
    const int ready = poll(polled, wakeUp == nullptr ? 1 : 2, waitMs);
    if (ready > 0) {
        return polled[1].revents == 0 ? Waited::kReady : Waited::kWoken;
    }
    return ready < 0 && errno != EINTR ? Waited::kFailed : Waited::kInVain;
}

}  // namespace onvif_client
