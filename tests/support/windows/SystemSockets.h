/// @file
/// What is particular to the sockets of Windows.
#ifndef ONVIF_CLIENT_TESTS_SUPPORT_WINDOWS_SYSTEMSOCKETS_H
#define ONVIF_CLIENT_TESTS_SUPPORT_WINDOWS_SYSTEMSOCKETS_H

#include <winsock2.h>
#include <ws2tcpip.h>

#include <string_view>

namespace client_test::system_sockets {

using Socket = SOCKET;
constexpr int kSending = SD_SEND;
constexpr int kBoth = SD_BOTH;

inline Socket Make(int type = SOCK_STREAM) {
    WSADATA ignored;
    static const int started = WSAStartup(MAKEWORD(2, 2), &ignored);  // until the process ends
    return started != 0 ? INVALID_SOCKET
                        : WSASocketW(AF_INET, type, 0, nullptr, 0,
                                     WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT);
}
inline Socket Accept(Socket listener) {
    const Socket accepted = accept(listener, nullptr, nullptr);
    SetHandleInformation(reinterpret_cast<HANDLE>(accepted), HANDLE_FLAG_INHERIT, 0);
    return accepted;
}
inline void Close(Socket socket) {
    closesocket(socket);
}
inline void DoNotBlock(Socket socket, u_long on = 1) {
    ioctlsocket(socket, static_cast<long>(FIONBIO), &on);
}
/// A send that waits for room goes on for ever under Wine when the peer closes, so this one looks.
inline auto Send(Socket socket, std::string_view bytes) {
    constexpr int kLookAgainMs = 50;
    DoNotBlock(socket);
    int sent = 0;
    while ((sent = send(socket, bytes.data(), static_cast<int>(bytes.size()), 0)) < 0 &&
           WSAGetLastError() == WSAEWOULDBLOCK) {
        pollfd room = {socket, POLLOUT, 0};
        WSAPoll(&room, 1, kLookAgainMs);
    }
    DoNotBlock(socket, 0);
    return sent;
}
inline int Poll(pollfd* polled, int timeoutMs) {
    return WSAPoll(polled, 1, timeoutMs);
}
inline void SetPatience(Socket socket, int seconds) {
    const auto milliseconds = static_cast<DWORD>(seconds) * 1000;
    setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&milliseconds),
               sizeof milliseconds);
}
inline bool WasInVain() {
    return WSAGetLastError() == WSAETIMEDOUT;
}

}  // namespace client_test::system_sockets

#endif
