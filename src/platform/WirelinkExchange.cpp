#include <algorithm>
#include <array>
#include <chrono>
#include <climits>
#include <cstring>
#include <string_view>

#include "platform/OrNothing.h"
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

    bool Connect(const Ipv4Endpoint& address) {
        if (!descriptor_) {
            end_ = ExchangeEnd::kNoConnection;
            return false;
        }
        ConnectState state = StartConnecting(descriptor_.Get(), address);
        if (state == ConnectState::kConnecting && Wait(Readiness::kWritable)) {
            state = ConnectOutcome(descriptor_.Get());
        }
        if (state == ConnectState::kRefused) {
            end_ = ExchangeEnd::kRefused;
        } else if (state != ConnectState::kEstablished && end_ != ExchangeEnd::kStopped) {
            end_ = ExchangeEnd::kNoConnection;
        }
        return state == ConnectState::kEstablished;
    }

    bool SendAll(std::string_view data) {
        while (!data.empty()) {
            std::size_t sent = 0;
            const Moved moved = SendNow(descriptor_.Get(), data, sent);
            data.remove_prefix(sent);
            if (moved == Moved::kEnded) {
                end_ = ExchangeEnd::kClosed;
            }
            if (moved == Moved::kEnded ||
                (moved == Moved::kWouldWait && !Wait(Readiness::kWritable))) {
                return false;
            }
        }
        return true;
    }

    /// Moves the deadline forward.
    void EndWithin(std::uint32_t milliseconds) {
        deadline_ =
            std::min(deadline_, SteadyClock::now() + std::chrono::milliseconds(milliseconds));
    }

    /// @return the number of bytes received; 0 at the end of the data, whatever ended it.
    std::size_t Receive(char* buffer, std::size_t capacity) {
        std::size_t received = 0;
        Moved moved = Moved::kWouldWait;
        while (moved == Moved::kWouldWait && Wait(Readiness::kReadable)) {
            moved = ReceiveNow(descriptor_.Get(), buffer, capacity, received);
        }
        if (moved == Moved::kEnded) {
            end_ = ExchangeEnd::kClosed;
        }
        return received;
    }

    /// What has ended it, if anything has.
    ExchangeEnd End() const { return end_; }

 private:
    /// @return false at the deadline and when the layer stops.
    bool Wait(Readiness what) {
        Waited waited = Waited::kInVain;
        while (waited == Waited::kInVain) {
            const auto left =
                std::chrono::ceil<std::chrono::milliseconds>(deadline_ - SteadyClock::now());
            if (left.count() <= 0) {
                end_ = ExchangeEnd::kTimeout;
                return false;
            }
            const auto wait = std::min<std::chrono::milliseconds::rep>(left.count(), INT_MAX);
            waited = WaitFor(descriptor_.Get(), what, static_cast<int>(wait), &abort_);
        }
        if (waited != Waited::kReady) {
            end_ = waited == Waited::kWoken ? ExchangeEnd::kStopped : ExchangeEnd::kClosed;
        }
        return waited == Waited::kReady;
    }

    const CDescriptor descriptor_;
    const CWakeUp& abort_;
    SteadyClock::time_point deadline_;
    ExchangeEnd end_ = ExchangeEnd::kReplied;
};

/// Reads until the marker is there.
/// @return how many bytes count: up to the end of the first marker, or all.
std::size_t ReceiveReply(CExchangeSocket& socket, char* buffer, std::size_t capacity,
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

void ObserveReply(CExchangeSocket& socket, CReplyObserver& observer) {
    std::array<char, 16384> block;
    for (std::uint32_t left = kReplyGoesOn; left > 0;) {
        const std::size_t received = socket.Receive(block.data(), block.size());
        left = received == 0 ? 0 : OrNothing([&] {
            return observer.OnReply(block.data(), static_cast<std::uint32_t>(received));
        });
        if (left != kReplyGoesOn) {
            socket.EndWithin(left);
        }
    }
}

/// Connects and sends. @p receive gets the socket. @p end becomes what ended it, unless it is null.
/// @return what @p receive gives; -1 without a connection, or when the request could not be sent.
template <typename Receive>
int RunExchange(const char* ip, unsigned short port, std::string_view request,
                unsigned int timeoutMs, ExchangeEnd* end, const Receive& receive) {
    ExchangeEnd ignored = ExchangeEnd::kStopped;
    ExchangeEnd& ended = end == nullptr ? ignored : *end;
    ended = ExchangeEnd::kStopped;
    const auto address = Ipv4Address(ip, port);
    CSocketLayer& layer = CSocketLayer::Instance();
    const CSocketLayer::CVisit visit = layer.Enter();
    if (!address || !visit) {
        return -1;
    }
    CExchangeSocket socket(layer.Abort(), timeoutMs);
    const int result = socket.Connect(*address) && socket.SendAll(request) ? receive(socket) : -1;
    ended = socket.End();
    return result;
}

}  // namespace

int WIRELINK_SimpleClientComm(const char* ip, unsigned short port, const char* request,
                              unsigned int requestLength, char* replyBuffer,
                              unsigned int replyCapacity, const char* endMarker,
                              unsigned int timeoutMs, ExchangeEnd* end) {
    if (request == nullptr || replyBuffer == nullptr || replyCapacity == 0) {
        return -1;
    }
    const std::string_view marker = endMarker == nullptr ? "" : endMarker;
    return RunExchange(ip, port, {request, requestLength}, timeoutMs, end, [&](auto& socket) {
        return static_cast<int>(ReceiveReply(socket, replyBuffer, replyCapacity, marker));
    });
}

bool WIRELINK_ObservedClientComm(const char* ip, unsigned short port, const char* request,
                                 unsigned int requestLength, CReplyObserver* observer,
                                 unsigned int timeoutMs, ExchangeEnd* end) {
    return request != nullptr && observer != nullptr &&
           RunExchange(ip, port, {request, requestLength}, timeoutMs, end, [&](auto& socket) {
               ObserveReply(socket, *observer);
               return 0;
           }) == 0;
}

}  // namespace onvif_client
