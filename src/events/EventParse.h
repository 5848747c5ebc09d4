/// @file
/// Collects the reply to a pull from the blocks in which it arrives, and hands on what it says.
#ifndef ONVIF_CLIENT_EVENTS_EVENTPARSE_H
#define ONVIF_CLIENT_EVENTS_EVENTPARSE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "common/HttpReplyFraming.h"
#include "events/EventDocuments.h"
#include "events/HttpMessage.h"
#include "events/SessionSource.h"
#include "platform/Wirelink.h"

namespace onvif_client {

/// Takes the answers to pulls; implemented by the device's record. On the socket layer's threads.
class IPullSink {
 public:
    virtual ~IPullSink() = default;
    /// @return false when what arrives is of no interest.
    virtual bool Pulls() const = 0;
    /// For the trace: what came, whole or up to the connection's end.
    virtual void OnPullReply(ExchangeEnd /*end*/, std::string_view /*reply*/) {}
    /// A whole reply came. One that could not be read says nothing, and was an answer all the same.
    virtual void OnPullAnswer(const PullAnswer& answer) = 0;
    /// The connection ended before a byte of a reply.
    virtual void OnNoReply() {}
    /// The pull found no way to the device.
    virtual void OnNoConnection() = 0;
    /// The process has no socket left for it, or for the subscription.
    virtual void OnNoSocket() { OnNoConnection(); }
};

/// The data observer of a pull's connection; its callbacks are serial. A reply that is larger than
/// the buffer, or says nothing of its length, is lost: the pull then runs into its time-out. Once
/// the reply is there, no byte can complete one any more, or 1 MiB has come without one, the
/// connection is not read any further. Of a reply nothing is kept once it was handed on.
///
/// With the extension http-framing a reply without length ends with the connection, and chunks are
/// put together. With large-messages a reply may have 4 MiB, and no more is read for one.
class CEventParse final : public CSocketDataObserver {
 public:
    static constexpr std::size_t kCapacity = 32768;
    static constexpr std::size_t kExtendedCapacity = 4194304;

    /// Sink and sessions must outlive the parser.
    /// @param device  as log lines name it.
    CEventParse(IPullSink& sink, ISessionSource& sessions, std::uint32_t loginId,
                CExtensions extensions = {}, std::string device = {});

    /// Consumes the whole block.
    std::uint32_t OnData(std::uint32_t handle, const char* data, std::uint32_t length,
                         std::uint32_t* wanted) override;
    void OnEnd(std::uint32_t handle) override;

    // Not while the connection calls:
    /// Makes ready for the next reply.
    void Reset();
    /// Whether the reply came whole, and the device leaves the connection open behind it.
    bool LeavesOpen() const { return leavesOpen_; }

 private:
    /// @return true when the reply has just become complete.
    bool Accumulate(std::string_view block);
    bool AddAnnounced(std::string_view block);
    bool AddFramed(std::string_view block);
    /// Whether more bytes are of use.
    bool GoesOn() const;
    void Forget();
    /// @param size  of the reply, which is at the front of the buffer.
    void HandleReply(std::size_t size);

    IPullSink& sink_;
    ISessionSource& sessions_;
    const std::uint32_t loginId_;
    const std::string device_;
    const bool perSource_;
    const bool framed_;
    const std::size_t capacity_;
    const std::size_t mostRead_;
    std::string buffer_;
    std::size_t readInAll_ = 0;  // of this pull, lost replies included
    MessageFrame frame_;
    std::optional<CHttpReplyFraming> framing_;  // from the first byte on
    bool impossible_ = false;
    bool handled_ = false;  // the reply is complete
    bool whole_ = false;    // and nothing came behind it
    bool leavesOpen_ = false;
};

}  // namespace onvif_client

#endif
