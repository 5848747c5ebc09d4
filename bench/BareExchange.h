/// @file
/// The least that an exchange over TCP takes: connect, send, receive up to the peer's close, close.
#ifndef ONVIF_CLIENT_BENCH_BAREEXCHANGE_H
#define ONVIF_CLIENT_BENCH_BAREEXCHANGE_H

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <string_view>

/// With blocking calls; ends as soon as the reply holds "Envelope>" a second time or the peer
/// closes.
/// @return the number of bytes received, 0 on failure.
inline std::size_t BareExchange(std::uint16_t port, std::string_view request, char* buffer,
                                std::size_t capacity) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::size_t filled = 0;
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        send(descriptor, request.data(), request.size(), MSG_NOSIGNAL) ==
            static_cast<ssize_t>(request.size())) {
        while (filled < capacity) {
            const ssize_t received = recv(descriptor, buffer + filled, capacity - filled, 0);
            if (received <= 0) {
                break;
            }
            filled += static_cast<std::size_t>(received);
            if (std::string_view(buffer, filled).ends_with(":Envelope>")) {
                break;
            }
        }
    }
    close(descriptor);
    return filled;
}

#endif
