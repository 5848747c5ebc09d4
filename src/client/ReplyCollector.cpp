#include "client/ReplyCollector.h"

#include <algorithm>

#include "client/SoapExchange.h"

namespace onvif_client {

namespace {

constexpr std::size_t kLargestReply = 16777216;
constexpr std::uint32_t kRestOfEnvelopeMs = 250;

}  // namespace

bool CReplyCollector::IsNeeded(CExtensions extensions) {
    return extensions.Has(Extension::kHttpFraming) || extensions.Has(Extension::kLargeMessages);
}

CReplyCollector::CReplyCollector(CExtensions extensions, std::size_t capacity)
    : capacity_(extensions.Has(Extension::kLargeMessages) ? kLargestReply : capacity) {
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
    if (Ends() || state == ReplyState::kBroken) {
        return 0;
    }
    if (state != ReplyState::kComplete) {
        return kReplyGoesOn;
    }
    if (framing_->Chunked() || text_.find(kEnvelopeName) == std::string::npos) {
        return 0;
    }
    text_ += bytes;  // there are devices that state too small a length
    return Ends() ? 0 : kRestOfEnvelopeMs;
}

bool CReplyCollector::Ends() {
    constexpr std::string_view kMarker = kReplyEndMarker;
    text_.resize(std::min(text_.size(), capacity_));
    const std::size_t found = text_.find(kMarker, searched_);
    if (found != std::string::npos) {
        text_.resize(found + kMarker.size());
        return true;
    }
    searched_ = text_.size() - std::min(text_.size(), kMarker.size());
    return text_.size() == capacity_;
}

}  // namespace onvif_client
