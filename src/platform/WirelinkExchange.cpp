#include <algorithm>
#include <array>
#include <chrono>
#include <climits>
#include <cstring>
#include <string_view>
#include <utility>

#include "platform/KeptTable.h"
#include "platform/LastError.h"
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
    CExchangeSocket(CDescriptor descriptor, const CWakeUp& abort, unsigned int timeoutMs)
        : descriptor_(std::move(descriptor)),
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
            sentAny_ = sentAny_ || sent > 0;
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

    /// Behind the request: sending undoes it.
    void AcknowledgeReplyAtOnce() const { AcknowledgeAtOnce(descriptor_.Get()); }

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
        receivedAny_ = receivedAny_ || received > 0;
        return received;
    }

    /// What has ended it, if anything has.
    ExchangeEnd End() const { return end_; }

    /// What came of an exchange over a connection that was kept.
    OverKept OutcomeOverKept() const {
        if (receivedAny_) {
            return OverKept::kAnswered;
        }
        if (end_ != ExchangeEnd::kClosed) {
            return OverKept::kSilent;
        }
        return sentAny_ ? OverKept::kClosed : OverKept::kUnsent;
    }

    /// For whoever keeps the connection.
    CDescriptor Release() { return std::move(descriptor_); }

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

    CDescriptor descriptor_;
    const CWakeUp& abort_;
    SteadyClock::time_point deadline_;
    ExchangeEnd end_ = ExchangeEnd::kReplied;
    bool sentAny_ = false;
    bool receivedAny_ = false;
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

/// An exchange from its connection to its end.
struct Course {
    const char* ip;
    unsigned short port;
    std::string_view request;
    unsigned int timeoutMs;
    ExchangeEnd* end;         // becomes what ended it, unless it is null
    KeptUse* kept = nullptr;  // null: no connection is kept
};

/// Connects and sends. @p receive gets the socket.
/// @param keepsOpenMs  tells how long the connection can be kept once a reply is there.
/// @return what @p receive gives; -1 without a connection, or when the request could not be sent.
template <typename Receive, typename KeepsOpenMs>
int RunExchange(const Course& course, const Receive& receive, const KeepsOpenMs& keepsOpenMs) {
    ExchangeEnd ignored = ExchangeEnd::kStopped;
    ExchangeEnd& ended = course.end == nullptr ? ignored : *course.end;
    ended = ExchangeEnd::kStopped;
    const auto address = Ipv4Address(course.ip, course.port);
    CSocketLayer& layer = CSocketLayer::Instance();
    const CSocketLayer::CVisit visit = layer.Enter();
    if (!address || !visit) {
        return -1;
    }
    CDescriptor taken = course.kept == nullptr
                            ? CDescriptor(kNoHandle)
                            : TakeKept(course.kept->connections, *address, course.kept->idleMs);
    const bool isKept = static_cast<bool>(taken);
    CDescriptor descriptor = isKept ? std::move(taken) : MakeTcpSocketForUse();
    lastError = descriptor ? 0 : kWirelinkNoSocket;
    CExchangeSocket socket(std::move(descriptor), layer.Abort(), course.timeoutMs);
    const bool sent = (isKept || socket.Connect(*address)) && socket.SendAll(course.request);
    if (isKept && sent) {
        socket.AcknowledgeReplyAtOnce();
    }
    const int result = sent ? receive(socket) : -1;
    ended = socket.End();
    if (course.kept != nullptr) {
        course.kept->outcome = isKept ? socket.OutcomeOverKept() : OverKept::kNot;
        const std::uint32_t keepMs = sent && ended == ExchangeEnd::kReplied ? keepsOpenMs() : 0;
        if (keepMs > 0) {
            Keep(course.kept->connections, socket.Release(), *address, keepMs);
        }
    }
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
    return RunExchange(
        {ip, port, {request, requestLength}, timeoutMs, end},
        [&](auto& socket) {
            return static_cast<int>(ReceiveReply(socket, replyBuffer, replyCapacity, marker));
        },
        [] { return std::uint32_t{0}; });
}

bool WIRELINK_ObservedClientComm(const char* ip, unsigned short port, const char* request,
                                 unsigned int requestLength, CReplyObserver* observer,
                                 unsigned int timeoutMs, ExchangeEnd* end, KeptUse* kept) {
    return request != nullptr && observer != nullptr &&
           RunExchange(
               {ip, port, {request, requestLength}, timeoutMs, end, kept},
               [&](auto& socket) {
                   ObserveReply(socket, *observer);
                   return 0;
               },
               [&] { return observer->KeepsOpenMs(); }) == 0;
}

}  // namespace onvif_client
