#include "client/ReplyCollector.h"

#include <algorithm>

#include "client/SoapExchange.h"
#include "common/HttpPersistence.h"
#include "platform/KeptConnections.h"

namespace onvif_client {

namespace {

constexpr std::size_t kLargestReply = 16777216;
constexpr std::uint32_t kRestOfEnvelopeMs = 250;
// Tags and attributes, each of which costs a parser a hundred bytes and more.
constexpr std::size_t kMostMarks = 1000000;

bool IsMark(char c) {
    return c == '<' || c == '=';
}

}  // namespace

bool CReplyCollector::IsNeeded(CExtensions extensions) {
    return extensions.Has(Extension::kHttpFraming) || extensions.Has(Extension::kLargeMessages) ||
           extensions.Has(Extension::kOpenFaults);
}

CReplyCollector::CReplyCollector(CExtensions extensions, std::size_t capacity)
    : capacity_(extensions.Has(Extension::kLargeMessages) ? kLargestReply : capacity),
      withoutPrefix_(extensions.Has(Extension::kOpenFaults)) {
    if (extensions.Has(Extension::kHttpFraming)) {
        framing_.emplace();
    }
}

std::uint32_t CReplyCollector::OnReply(const char* data, std::uint32_t length) {
    std::string_view bytes(data, length);
    if (!framing_) {
        text_ += bytes;
        return Ends() ? 0 : kReplyGoesOn;
    }
    const ReplyState state = framing_->Add(bytes, text_);
    // Behind the last chunk an empty line belongs to the frame.
    whole_ = state == ReplyState::kComplete && bytes == (framing_->Chunked() ? "\r\n" : "");
    if (Ends() || state == ReplyState::kBroken) {
        return 0;
    }
    if (state != ReplyState::kComplete) {
        return kReplyGoesOn;
    }
    if (framing_->Chunked() || !EnvelopeBegins()) {
        return 0;
    }
    text_ += bytes;  // there are devices that state too small a length
    return Ends() ? 0 : kRestOfEnvelopeMs;
}

std::uint32_t CReplyCollector::KeepsOpenMs() const {
    return whole_ ? PersistsForMs(text_, kLongestKeptMs) : 0;
}

std::size_t CReplyCollector::EndOfEnvelope() const {
    constexpr std::string_view kMarker = kReplyEndMarker;
    const std::size_t found = text_.find(kMarker, searched_);
    const std::size_t bare =
        withoutPrefix_ ? text_.find(kBareEndMarker, searched_) : std::string::npos;
    if (found == std::string::npos && bare == std::string::npos) {
        return found;
    }
    return found < bare ? found + kMarker.size() : bare + kBareEndMarker.size();
}

bool CReplyCollector::EnvelopeBegins() const {
    return text_.find(kEnvelopeName) != std::string::npos ||
           (withoutPrefix_ && text_.find("<Envelope") != std::string::npos);
}

bool CReplyCollector::Ends() {
    text_.resize(std::min(text_.size(), capacity_));
    const std::size_t end = EndOfEnvelope();
    if (end != std::string::npos) {
        text_.resize(end);
        return true;
    }
    const auto counted = text_.begin() + static_cast<std::ptrdiff_t>(counted_);
    marks_ += static_cast<std::size_t>(std::count_if(counted, text_.end(), IsMark));
    counted_ = text_.size();
    searched_ = text_.size() - std::min(text_.size(), kBareEndMarker.size());
    return text_.size() == capacity_ || marks_ >= kMostMarks;
}

}  // namespace onvif_client
