#include "system/TcpConnection.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace onvifctl {

namespace {

Reach ReachOf(int error) {
    switch (error) {
        case 0:
            return Reach::kConnected;
        case EINPROGRESS:
            return Reach::kPending;
        case ETIMEDOUT:
            return Reach::kTimeOut;
        case ECONNREFUSED:
        case ECONNRESET:
            return Reach::kRefused;
        case EHOSTUNREACH:
        case EHOSTDOWN:
        case ENETUNREACH:
        case ENETDOWN:
            return Reach::kNoRoute;
        default:
            return Reach::kFailed;
    }
}

bool IsReady(std::intptr_t socket, short events, std::chrono::milliseconds patience) {
    pollfd entry = {static_cast<int>(socket), events, 0};
    return poll(&entry, 1, static_cast<int>(patience.count())) > 0;
}

}  // namespace

CTcpConnection::CTcpConnection(const std::string& address, unsigned short port)
    : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    sockaddr_in place = {};
    place.sin_family = AF_INET;
    place.sin_port = htons(port);
    inet_pton(AF_INET, address.c_str(), &place.sin_addr);
    const bool connected =
        socket_ != -1 && connect(static_cast<int>(socket_),
                                 reinterpret_cast<const sockaddr*>(&place), sizeof place) == 0;
    error_ = connected ? 0 : errno;
    reach_ = ReachOf(error_);
}

CTcpConnection::~CTcpConnection() {
    if (socket_ != -1) {
        close(static_cast<int>(socket_));
    }
}

Reach CTcpConnection::AwaitConnection(std::chrono::milliseconds patience) {
    if (reach_ == Reach::kPending && IsReady(socket_, POLLOUT, patience)) {
        socklen_t size = sizeof error_;
        getsockopt(static_cast<int>(socket_), SOL_SOCKET, SO_ERROR, &error_, &size);
        reach_ = ReachOf(error_);
    }
    return reach_;
}

std::string CTcpConnection::Error() const {
    return std::system_category().message(error_);
}

bool CTcpConnection::Send(std::string_view bytes) const {
    return send(static_cast<int>(socket_), bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(bytes.size());
}

Heard CTcpConnection::Read(std::string& bytes, std::chrono::milliseconds patience) const {
    if (!IsReady(socket_, POLLIN, patience)) {
        return Heard::kNothing;
    }
    std::array<char, 4096> block = {};
    const ssize_t count = recv(static_cast<int>(socket_), block.data(), block.size(), 0);
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
        return Heard::kNothing;
    }
    if (count <= 0) {
        return Heard::kEnd;
    }
    bytes.append(block.data(), static_cast<std::size_t>(count));
    return Heard::kBytes;
}

}  // namespace onvifctl
