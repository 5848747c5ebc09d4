/// @file
/// What is particular to the sockets of POSIX systems.
#ifndef ONVIF_CLIENT_TESTS_SUPPORT_POSIX_SYSTEMSOCKETS_H
#define ONVIF_CLIENT_TESTS_SUPPORT_POSIX_SYSTEMSOCKETS_H

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

namespace client_test::system_sockets {

using Socket = int;
constexpr int kSending = SHUT_WR;
constexpr int kBoth = SHUT_RDWR;

inline Socket Make(int type = SOCK_STREAM) {
    return socket(AF_INET, type | SOCK_CLOEXEC, 0);
}
inline Socket Accept(Socket listener) {
    return accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
}
inline void Close(Socket socket) {
    close(socket);
}
inline auto Send(Socket socket, std::string_view bytes) {
    return send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
}
inline void DoNotBlock(Socket socket) {
    fcntl(socket, F_SETFL, O_NONBLOCK);
}
inline int Poll(pollfd* polled, int timeoutMs) {
    return poll(polled, 1, timeoutMs);
}
inline void SetPatience(Socket socket, int seconds) {
    const timeval patience = {seconds, 0};
    setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
}
inline bool WasInVain() {
    return errno == EAGAIN || errno == EWOULDBLOCK;
}

}  // namespace client_test::system_sockets

#endif
