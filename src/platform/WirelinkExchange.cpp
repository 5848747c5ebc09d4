#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstring>
#include <string_view>

#include "platform/SocketLayer.h"
#include "platform/Sockets.h"
#include "platform/Wirelink.h"

namespace onvif_client {

namespace {

using SteadyClock = std::chrono::steady_clock;

/// The socket of one exchange with its deadline. Every wait ends at the deadline and when the layer
/// stops.
class CExchangeSocket {
 public:
    CExchangeSocket(int abortDescriptor, unsigned int timeoutMs)
        : descriptor_(MakeTcpSocket()),
          abortDescriptor_(abortDescriptor),
          deadline_(SteadyClock::now() + std::chrono::milliseconds(timeoutMs)) {}

    bool Connect(const sockaddr_in& address) const {
        if (!descriptor_) {
            return false;
        }
        ConnectState state = StartConnecting(descriptor_.Get(), address);
        if (state == ConnectState::kConnecting && Wait(POLLOUT)) {
            state = ConnectOutcome(descriptor_.Get());
        }
        return state == ConnectState::kEstablished;
    }

    bool SendAll(std::string_view data) const {
        while (!data.empty()) {
            const ssize_t sent = send(descriptor_.Get(), data.data(), data.size(), MSG_NOSIGNAL);
            if (sent > 0) {
                data.remove_prefix(static_cast<std::size_t>(sent));
            } else if (errno == EINTR) {
                continue;
            } else if (!WouldHaveWaited() || !Wait(POLLOUT)) {
                return false;
            }
        }
        return true;
    }

    /// @return the number of bytes received; 0 at the end of the data, whatever ended it.
    std::size_t Receive(char* buffer, std::size_t capacity) const {
        while (Wait(POLLIN)) {
            const ssize_t received = recv(descriptor_.Get(), buffer, capacity, 0);
            if (received >= 0) {
                return static_cast<std::size_t>(received);
            }
            if (!WouldHaveWaited() && errno != EINTR) {
                break;
            }
        }
        return 0;
    }

 private:
    /// @return false at the deadline and when the layer stops.
    bool Wait(short events) const {
        pollfd polled[] = {{descriptor_.Get(), events, 0}, {abortDescriptor_, POLLIN, 0}};
        for (;;) {
            const auto left =
                std::chrono::ceil<std::chrono::milliseconds>(deadline_ - SteadyClock::now());
            if (left.count() <= 0) {
                return false;
            }
            const auto wait = std::min<std::chrono::milliseconds::rep>(left.count(), INT_MAX);
            const int ready = poll(polled, std::size(polled), static_cast<int>(wait));
            if (ready > 0) {
                return polled[1].revents == 0;
            }
            if (ready < 0 && errno != EINTR) {
                return false;
            }
        }
    }

    const CDescriptor descriptor_;
    const int abortDescriptor_;
    const SteadyClock::time_point deadline_;
};

/// Reads until the marker is there.
/// @return how many bytes count: up to the end of the first marker, or all.
std::size_t ReceiveReply(const CExchangeSocket& socket, char* buffer, std::size_t capacity,
                         std::string_view marker) {
    std::size_t filled = 0;
    while (filled < capacity) {
        const std::size_t received = socket.Receive(buffer + filled, capacity - filled);
        if (received == 0) {
            break;
        }
        // The marker may have begun in what came before.
        const std::size_t searchFrom = filled - std::min(filled, marker.size());
        filled += received;
        const std::size_t found = std::string_view(buffer, filled).find(marker, searchFrom);
        if (!marker.empty() && found != std::string_view::npos) {
            const std::size_t end = found + marker.size();
            std::memset(buffer + end, 0, filled - end);
            return end;
        }
    }
    return filled;
}

}  // namespace

int WIRELINK_SimpleClientComm(const char* ip, unsigned short port, const char* request,
                              unsigned int requestLength, char* replyBuffer,
                              unsigned int replyCapacity, const char* endMarker,
                              unsigned int timeoutMs) {
    const auto address = Ipv4Address(ip, port);
    if (!address || request == nullptr || replyBuffer == nullptr || replyCapacity == 0) {
        return -1;
    }
    CSocketLayer& layer = CSocketLayer::Instance();
    const CSocketLayer::CVisit visit = layer.Enter();
    if (!visit) {
        return -1;
    }
    const CExchangeSocket socket(layer.AbortDescriptor(), timeoutMs);
    if (!socket.Connect(*address) || !socket.SendAll({request, requestLength})) {
        return -1;
    }
    return static_cast<int>(
        ReceiveReply(socket, replyBuffer, replyCapacity, endMarker == nullptr ? "" : endMarker));
}

}  // namespace onvif_client
