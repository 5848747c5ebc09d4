/// @file
/// Fetches a picture from a device over HTTP, answering one Basic or Digest challenge.
#ifndef ONVIF_CLIENT_CLIENT_SNAPSHOTDOWNLOAD_H
#define ONVIF_CLIENT_CLIENT_SNAPSHOTDOWNLOAD_H

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "client/ExchangeTrace.h"
#include "client/SnapshotRequest.h"
#include "commands/ResponseBuffer.h"
#include "common/Extensions.h"
#include "common/HttpReplyFraming.h"
#include "platform/WirelinkHandle.h"

namespace onvif_client {

/// One download: at most two attempts, each on a connection of its own, the second with the
/// credentials that the first was asked for. Runs on the calling thread; an attempt takes at most
/// 0.75 s to connect, 5 s to send and, once nothing more is there to read, 5 s to receive.
///
/// The picture goes into one buffer of exactly its Content-Length (1 MiB when the device does not
/// state it); what is longer is cut. A length of more than 64 MiB gives no picture. With the
/// extension http-framing, chunks become a picture of up to 64 MiB, and the last one ends it.
///
/// Digest goes before Basic, which discloses the password: to a device that has asked for Digest
/// once, Basic is not answered any more; only where it always offers both, and a Digest that cannot
/// be answered, it is; with no-basic it never is. A challenge that is not answered is logged.
class CSnapshotDownload {
 public:
    /// @param ip  connected to in place of the address's host, whatever that is.
    /// @param digestAsked  whether the device has asked for Digest in this session: for what could
    ///                     be answered, or without Basic beside it. Set and read by all downloads.
    /// All but the address must outlive the download.
    CSnapshotDownload(const std::string& ip, const Credentials& credentials,
                      std::string_view address, CExtensions extensions,
                      std::atomic<bool>& digestAsked);

    /// @param picture  has no data when nothing came; else its size tells how many bytes did.
    void Run(ResponseBuffer& picture);

 private:
    /// A reply as far as it has come: its header, and what is known of its end.
    struct CollectedHead {
        std::string text;
        std::size_t searched = 0;
        std::optional<CHttpReplyFraming> framing;
    };

    /// What came of an attempt.
    struct Received {
        CollectedHead head;
        ExchangeEnd end = ExchangeEnd::kReplied;
    };

    void Attempt(ResponseBuffer& picture);
    static bool SendRequest(const CWirelinkHandle& connection, std::string_view request,
                            ExchangeEnd& end);
    void Receive(const CWirelinkHandle& connection, Received& taken, ResponseBuffer& picture);
    CExchangeTrace::Outcome OutcomeOf(const Received& received,
                                      const ResponseBuffer& picture) const;
    /// Chooses the challenge that the next attempt answers, or makes this attempt the last one.
    void Answer(const std::vector<HttpChallenge>& challenges);
    /// Looks at the reply once its header is complete.
    /// @return true when a picture follows, and @p picture is ready for it.
    bool ReadHeader(std::string_view header, ResponseBuffer& picture);
    /// Sets the limit, and makes room for the picture.
    bool PrepareFor(std::uint64_t contentLength, ResponseBuffer& picture);
    /// Makes room for @p size bytes and keeps those that are there.
    bool Grow(std::uint64_t size, ResponseBuffer& picture);
    // All return false once nothing more is wanted.
    bool Add(std::string_view bytes, CollectedHead& head, ResponseBuffer& picture);
    bool AddToHeader(std::string_view bytes, CollectedHead& head, ResponseBuffer& picture);
    bool AddToPicture(std::string_view bytes, ResponseBuffer& picture);

    const std::string& ip_;
    const Credentials& credentials_;
    const SnapshotAddress address_;
    const DigestKinds digestKinds_;
    const bool noBasic_;
    std::atomic<bool>& digestAsked_;
    std::string request_;  // of the next attempt
    const bool framed_;
    bool chunked_ = false;
    std::uint64_t limit_ = 0;
    std::uint64_t room_ = 0;
    bool final_ = false;  // no further attempt
};

}  // namespace onvif_client

#endif
