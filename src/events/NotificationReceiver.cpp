#include "events/NotificationReceiver.h"

#include <string>

#include "common/HttpHead.h"
#include "common/LogText.h"
#include "events/ContentTypes.h"
#include "events/HttpMessage.h"
#include "platform/Clock.h"
#include "platform/WirelinkHandle.h"

namespace onvif_client {

namespace {

constexpr int kMostFailures = 30;
constexpr std::uint32_t kPauseMs = 100;
constexpr std::uint32_t kBlock = 1023;

/// An accepted connection, destroyed at the end of its service.
class CPoster {
 public:
    explicit CPoster(std::uint32_t handle) : connection_(handle) {}

    /// Appends what arrives next. @return false when nothing more is to be had.
    bool ReadInto(std::string& buffer) {
        char block[kBlock];
        for (;;) {
            bool closed = false;
            const int received = WIRELINK_Recv_Immediate(connection_.Get(), block, kBlock, &closed);
            if (received >= 1) {
                buffer.append(block, static_cast<std::size_t>(received));
                return true;
            }
            if (closed || Failed()) {
                return false;
            }
            SleepMilliseconds(kPauseMs);
        }
    }

    void Send(std::string_view reply) {
        while (!reply.empty()) {
            bool broken = false;
            const int sent = WIRELINK_Send_Immediate(
                connection_.Get(), reply.data(), static_cast<std::uint32_t>(reply.size()), broken);
            if (broken || (sent < 1 && Failed())) {
                return;
            }
            reply.remove_prefix(static_cast<std::size_t>(sent));
        }
    }

 private:
    /// Counts reads and sends alike, and a success forgives nothing: no peer holds its thread for
    /// long.
    bool Failed() { return ++failures_ >= kMostFailures; }

    const CWirelinkHandle connection_;
    int failures_ = 0;
};

}  // namespace

void CNotificationReceiver::OnAccept(std::uint32_t handle) {
    CPoster poster(handle);
    std::string buffer;
    MessageFrame frame;
    MessageState state = MessageState::kIncomplete;
    while (state == MessageState::kIncomplete) {
        if (!poster.ReadInto(buffer)) {
            return;
        }
        state = CutMessage(buffer, frame);
    }
    if (state == MessageState::kImpossible) {
        return;
    }
    if (buffer.starts_with("HTTP")) {
        LogAssert(loglabel::kOnvifEvent, "a reply was posted, not a request");
    }
    if (frame.bodySize == 0) {
        while (buffer.size() < kLargestMessage && poster.ReadInto(buffer)) {
        }
        return;
    }
    const std::string_view message(buffer);
    sink_.OnNotify(message.substr(frame.headerSize, frame.bodySize));
    poster.Send(BuildEmptyReply(RequestPath(message.substr(0, frame.headerSize))));
}

}  // namespace onvif_client
