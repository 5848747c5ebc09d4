/// A port of 127.0.0.1 that leaves attempts to connect unanswered, as a device without power does.
#ifndef ONVIF_CLIENT_TESTS_SUPPORT_DROPPINGPORT_H
#define ONVIF_CLIENT_TESTS_SUPPORT_DROPPINGPORT_H

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <bit>
#include <cstdint>
#include <vector>

namespace client_test {

/// Its queue of connections is full, so that the system drops further ones.
class CDroppingPort {
 public:
    /// @param port  0: the system chooses.
    explicit CDroppingPort(std::uint16_t port = 0)
        : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        const int on = 1;
        setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
        const timeval patience = {30, 0};  // also of what is accepted
        setsockopt(listener_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        address_.sin_family = AF_INET;
        address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address_.sin_port = htons(port);
        socklen_t size = sizeof address_;
        drops_ = bind(listener_, std::bit_cast<sockaddr*>(&address_), size) == 0 &&
                 listen(listener_, 0) == 0 &&
                 getsockname(listener_, std::bit_cast<sockaddr*>(&address_), &size) == 0;
        while (drops_ && Connects()) {
        }
    }
    ~CDroppingPort() {
        Answer();
        close(listener_);
    }
    CDroppingPort(const CDroppingPort&) = delete;
    CDroppingPort& operator=(const CDroppingPort&) = delete;

    bool Drops() const { return drops_; }
    std::uint16_t Port() const { return ntohs(address_.sin_port); }

    /// From now on the next attempt comes about.
    void Answer() {
        for (const int each : fillers_) {
            close(each);
            const int accepted = accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
            if (accepted >= 0) {
                close(accepted);
            }
        }
        fillers_.clear();
    }
    /// Waits for the next connection, not for ever.
    int Accept() const { return accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC); }

 private:
    /// Fills one place of the queue; false when there was none.
    bool Connects() {
        const int filler = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        const bool atOnce =
            connect(filler, std::bit_cast<sockaddr*>(&address_), sizeof address_) == 0;
        pollfd polled = {filler, POLLOUT, 0};
        const bool connected = atOnce || poll(&polled, 1, 50) > 0;
        if (connected) {
            fillers_.push_back(filler);
        } else {
            close(filler);
        }
        return connected;
    }

    int listener_;
    sockaddr_in address_ = {};
    bool drops_ = false;
    std::vector<int> fillers_;
};

}  // namespace client_test

#endif
