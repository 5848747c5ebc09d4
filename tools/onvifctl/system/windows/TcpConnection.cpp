#include "system/TcpConnection.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <array>
#include <system_error>

namespace onvifctl {

namespace {

Reach ReachOf(int error) {
    switch (error) {
        case 0:
            return Reach::kConnected;
        case WSAEWOULDBLOCK:
            return Reach::kPending;
        case WSAETIMEDOUT:
            return Reach::kTimeOut;
        case WSAECONNREFUSED:
        case WSAECONNRESET:
            return Reach::kRefused;
        case WSAEHOSTUNREACH:
        case WSAEHOSTDOWN:
        case WSAENETUNREACH:
        case WSAENETDOWN:
            return Reach::kNoRoute;
        default:
            return Reach::kFailed;
    }
}

enum class For { kReading, kConnecting };

// Not by WSAPoll, which on some versions says nothing of a connection that failed.
bool IsReady(std::intptr_t socket, For what, std::chrono::milliseconds patience) {
    fd_set ready = {};
    fd_set failed = {};
    ready.fd_count = 1;
    ready.fd_array[0] = static_cast<SOCKET>(socket);
    failed = ready;
    timeval time = {};
    time.tv_sec = static_cast<decltype(time.tv_sec)>(patience.count() / 1000);
    time.tv_usec = static_cast<decltype(time.tv_usec)>(patience.count() % 1000 * 1000);
    return select(0, what == For::kReading ? &ready : nullptr,
                  what == For::kConnecting ? &ready : nullptr, &failed, &time) > 0;
}

SOCKET MakeSocket() {
    WSADATA details = {};
    static const int started = WSAStartup(MAKEWORD(2, 2), &details);
    return started == 0 ? WSASocketW(AF_INET, SOCK_STREAM, IPPROTO_TCP, nullptr, 0,
                                     WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT)
                        : INVALID_SOCKET;
}

}  // namespace

CTcpConnection::CTcpConnection(const std::string& address, unsigned short port)
    : socket_(static_cast<std::intptr_t>(MakeSocket())) {
    sockaddr_in place = {};
    place.sin_family = AF_INET;
    place.sin_port = htons(port);
    inet_pton(AF_INET, address.c_str(), &place.sin_addr);
    const auto socket = static_cast<SOCKET>(socket_);
    u_long nonBlocking = 1;
    const bool connected =
        ioctlsocket(socket, static_cast<long>(FIONBIO), &nonBlocking) == 0 &&
        connect(socket, reinterpret_cast<const sockaddr*>(&place), sizeof place) == 0;
    error_ = connected ? 0 : WSAGetLastError();
    reach_ = ReachOf(error_);
}

CTcpConnection::~CTcpConnection() {
    closesocket(static_cast<SOCKET>(socket_));
}

Reach CTcpConnection::AwaitConnection(std::chrono::milliseconds patience) {
    if (reach_ == Reach::kPending && IsReady(socket_, For::kConnecting, patience)) {
        int size = sizeof error_;
        getsockopt(static_cast<SOCKET>(socket_), SOL_SOCKET, SO_ERROR,
                   reinterpret_cast<char*>(&error_), &size);
        reach_ = ReachOf(error_);
    }
    return reach_;
}

std::string CTcpConnection::Error() const {
    return std::system_category().message(error_);
}

bool CTcpConnection::Send(std::string_view bytes) const {
    return send(static_cast<SOCKET>(socket_), bytes.data(), static_cast<int>(bytes.size()), 0) ==
           static_cast<int>(bytes.size());
}

Heard CTcpConnection::Read(std::string& bytes, std::chrono::milliseconds patience) const {
    if (!IsReady(socket_, For::kReading, patience)) {
        return Heard::kNothing;
    }
    std::array<char, 4096> block = {};
    const int count =
        recv(static_cast<SOCKET>(socket_), block.data(), static_cast<int>(block.size()), 0);
    if (count == SOCKET_ERROR && WSAGetLastError() == WSAEWOULDBLOCK) {
        return Heard::kNothing;
    }
    if (count <= 0) {
        return Heard::kEnd;
    }
    bytes.append(block.data(), static_cast<std::size_t>(count));
    return Heard::kBytes;
}

}  // namespace onvifctl
