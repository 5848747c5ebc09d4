#include "platform/Sockets.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

namespace onvif_client {

namespace {

bool WouldHaveWaited() {
    return errno == EAGAIN || errno == EWOULDBLOCK;
}

}  // namespace

std::optional<sockaddr_in> Ipv4Address(const char* ip, std::uint16_t port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    if (ip == nullptr || inet_pton(AF_INET, ip, &address.sin_addr) != 1) {
        return std::nullopt;
    }
    return address;
}

CDescriptor MakeTcpSocket() {
    return CDescriptor(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

ConnectState StartConnecting(int descriptor, const sockaddr_in& address) {
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
        return ConnectState::kEstablished;
    }
    return errno == EINPROGRESS ? ConnectState::kConnecting : ConnectState::kFailed;
}

ConnectState ConnectOutcome(int descriptor) {
    int error = 0;
    socklen_t size = sizeof error;
    const bool stands =
        getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
    return stands ? ConnectState::kEstablished : ConnectState::kFailed;
}

CDescriptor AcceptTcp(int listener, bool& again) {
    CDescriptor accepted(accept4(listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    again = !accepted && (WouldHaveWaited() || errno == EINTR || errno == ECONNABORTED);
    return accepted;
}

CDescriptor Duplicate(int descriptor) {
    return CDescriptor(fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
}

Moved SendNow(int descriptor, std::string_view data, std::size_t& sent) {
    for (;;) {
        const ssize_t taken =
            send(descriptor, data.data(), data.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        sent = static_cast<std::size_t>(std::max<ssize_t>(taken, 0));
        if (taken >= 0) {
            return Moved::kSome;
        }
        if (errno != EINTR) {
            return WouldHaveWaited() ? Moved::kWouldWait : Moved::kEnded;
        }
    }
}

Moved ReceiveNow(int descriptor, char* buffer, std::size_t capacity, std::size_t& received) {
    for (;;) {
        const ssize_t given = recv(descriptor, buffer, capacity, MSG_DONTWAIT);
        received = static_cast<std::size_t>(std::max<ssize_t>(given, 0));
        if (given >= 0) {
            return given > 0 ? Moved::kSome : Moved::kEnded;
        }
        if (errno != EINTR) {
            return WouldHaveWaited() ? Moved::kWouldWait : Moved::kEnded;
        }
    }
}

void ShutDown(int descriptor) {
    shutdown(descriptor, SHUT_RDWR);
}

CWakeUp::CWakeUp() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void CWakeUp::Set() const {
    eventfd_write(descriptor_.Get(), 1);
}

Waited WaitFor(int descriptor, Readiness what, int waitMs, const CWakeUp* wakeUp) {
    const short events = what == Readiness::kReadable ? POLLIN : POLLOUT;
    pollfd polled[] = {{descriptor, events, 0},
                       {wakeUp == nullptr ? -1 : wakeUp->descriptor_.Get(), POLLIN, 0}};
    const int ready = poll(polled, wakeUp == nullptr ? 1 : 2, waitMs);
    if (ready > 0) {
        return polled[1].revents == 0 ? Waited::kReady : Waited::kWoken;
    }
    return ready < 0 && errno != EINTR ? Waited::kFailed : Waited::kInVain;
}

}  // namespace onvif_client
