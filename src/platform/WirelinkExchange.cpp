#include <algorithm>
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
    CExchangeSocket(const CWakeUp& abort, unsigned int timeoutMs)
        : descriptor_(MakeTcpSocket()),
          abort_(abort),
          deadline_(SteadyClock::now() + std::chrono::milliseconds(timeoutMs)) {}

    bool Connect(const sockaddr_in& address) const {
        if (!descriptor_) {
            return false;
        }
        ConnectState state = StartConnecting(descriptor_.Get(), address);
        if (state == ConnectState::kConnecting && Wait(Readiness::kWritable)) {
            state = ConnectOutcome(descriptor_.Get());
        }
        return state == ConnectState::kEstablished;
    }

    bool SendAll(std::string_view data) const {
        while (!data.empty()) {
            std::size_t sent = 0;
            const Moved moved = SendNow(descriptor_.Get(), data, sent);
            data.remove_prefix(sent);
            if (moved == Moved::kEnded ||
                (moved == Moved::kWouldWait && !Wait(Readiness::kWritable))) {
                return false;
            }
        }
        return true;
    }

    /// @return the number of bytes received; 0 at the end of the data, whatever ended it.
    std::size_t Receive(char* buffer, std::size_t capacity) const {
        std::size_t received = 0;
        while (Wait(Readiness::kReadable) &&
               ReceiveNow(descriptor_.Get(), buffer, capacity, received) == Moved::kWouldWait) {
        }
        return received;
    }

 private:
    /// @return false at the deadline and when the layer stops.
    bool Wait(Readiness what) const {
        Waited waited = Waited::kInVain;
        while (waited == Waited::kInVain) {
            const auto left =
                std::chrono::ceil<std::chrono::milliseconds>(deadline_ - SteadyClock::now());
            if (left.count() <= 0) {
                return false;
            }
            const auto wait = std::min<std::chrono::milliseconds::rep>(left.count(), INT_MAX);
            waited = WaitFor(descriptor_.Get(), what, static_cast<int>(wait), &abort_);
        }
        return waited == Waited::kReady;
    }

    const CDescriptor descriptor_;
    const CWakeUp& abort_;
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
    const CExchangeSocket socket(layer.Abort(), timeoutMs);
    if (!socket.Connect(*address) || !socket.SendAll({request, requestLength})) {
        return -1;
    }
    return static_cast<int>(
        ReceiveReply(socket, replyBuffer, replyCapacity, endMarker == nullptr ? "" : endMarker));
}

}  // namespace onvif_client
