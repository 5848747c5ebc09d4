/// @file
/// Collects the reply of an exchange and finds its end, where the extensions of the session let it
/// end otherwise, or be longer, than a buffer and the end of an envelope do.
#ifndef ONVIF_CLIENT_CLIENT_REPLYCOLLECTOR_H
#define ONVIF_CLIENT_CLIENT_REPLYCOLLECTOR_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "common/Extensions.h"
#include "common/HttpReplyFraming.h"
#include "platform/Wirelink.h"

namespace onvif_client {

/// The text of a reply ends with the envelope (kReplyEndMarker, with open-faults also without a
/// prefix), at its capacity, with a million of "<" and "=", and, as HTTP frames it, with its
/// length, its last chunk or a chunk that is none. Where an envelope goes on behind the length, 250
/// ms are left for its end. What HTTP frames is not waited for once the envelope has ended. One
/// exchange, on one thread.
class CReplyCollector final : public CReplyObserver {
 public:
    /// Whether one of the extensions needs a collector.
    static bool IsNeeded(CExtensions extensions);

    /// @param capacity  bytes; a longer text is cut. With large-messages that is 16 MiB.
    CReplyCollector(CExtensions extensions, std::size_t capacity);

    std::uint32_t OnReply(const char* data, std::uint32_t length) override;
    /// Above 0 for a reply that came whole by its frame, with nothing behind it.
    std::uint32_t KeepsOpenMs() const override;

    /// The text so far; it is gone then.
    std::string Take() { return std::move(text_); }

 private:
    std::size_t EndOfEnvelope() const;
    bool EnvelopeBegins() const;
    /// Cuts the text at its end or its capacity.
    /// @return true when one of them is reached, or the text has too many parts.
    bool Ends();

    const std::size_t capacity_;
    const bool withoutPrefix_;
    std::optional<CHttpReplyFraming> framing_;
    std::string text_;
    std::size_t searched_ = 0;  // the envelope does not end before
    std::size_t counted_ = 0;   // up to there
    std::size_t marks_ = 0;
    bool whole_ = false;  // the frame has ended with the last bytes
};

}  // namespace onvif_client

#endif
