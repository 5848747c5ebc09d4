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

/// A connection made with blocking calls; -1 when that fails.
inline int BareConnection(std::uint16_t port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
        return descriptor;
    }
    close(descriptor);
    return -1;
}

/// Over a connection that stays open. With blocking calls; ends as soon as the reply ends with
/// ":Envelope>" or the peer closes.
/// @return the number of bytes received, 0 on failure.
inline std::size_t BareExchangeOver(int descriptor, std::string_view request, char* buffer,
                                    std::size_t capacity) {
    std::size_t filled = 0;
    if (send(descriptor, request.data(), request.size(), MSG_NOSIGNAL) ==
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
    return filled;
}

/// The same over a connection of its own.
inline std::size_t BareExchange(std::uint16_t port, std::string_view request, char* buffer,
                                std::size_t capacity) {
    const int descriptor = BareConnection(port);
    const std::size_t filled =
        descriptor < 0 ? 0 : BareExchangeOver(descriptor, request, buffer, capacity);
    close(descriptor);
    return filled;
}

#endif
