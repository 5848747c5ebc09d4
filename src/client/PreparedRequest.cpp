#include "client/PreparedRequest.h"

namespace onvif_client {

namespace {

/// Stands for a text of the header.
constexpr std::string_view kMissing = "missing";

/// Takes the stand-in behind the start tag out.
/// @return where it stood; npos: nowhere.
std::size_t TakeOut(std::string& text, std::string_view startTag) {
    const std::size_t tag = text.find(startTag);
    const std::size_t end = tag == std::string::npos ? tag : text.find('>', tag);
    const std::size_t at = end == std::string::npos ? end : text.find(kMissing, end);
    if (at != std::string::npos) {
        text.erase(at, kMissing.size());
    }
    return at;
}

}  // namespace

std::optional<CPreparedEnvelope> CPreparedEnvelope::Make(const Credentials& credentials,
                                                         std::string_view envelope) {
    CXmlTransform document(envelope);
    const std::string missing(kMissing);
    if (!FillSecurityHeader(credentials, document, {missing, missing, missing})) {
        return std::nullopt;
    }
    CPreparedEnvelope prepared;
    prepared.text_ = document.Document().Print();
    if (credentials.Present()) {
        prepared.digestAt_ = TakeOut(prepared.text_, "<wsse:Password");
        prepared.nonceAt_ = TakeOut(prepared.text_, "<wsse:Nonce");
        prepared.createdAt_ = TakeOut(prepared.text_, "<wsu:Created");
        if (prepared.digestAt_ > prepared.nonceAt_ || prepared.nonceAt_ > prepared.createdAt_ ||
            prepared.createdAt_ == std::string::npos) {
            return std::nullopt;  // no envelope of ours
        }
    }
    prepared.text_.shrink_to_fit();  // some are kept, one for each device
    return prepared;
}

std::optional<std::string> CPreparedEnvelope::Sign(
    const Credentials& credentials, const std::optional<CalendarTime>& created) const {
    if (!credentials.Present()) {
        return text_;
    }
    const auto token = MakeToken(credentials, created);
    if (!token) {
        return std::nullopt;
    }
    const std::string_view text = text_;
    std::string whole;
    whole.reserve(text.size() + token->digest.size() + token->nonce.size() + token->created.size());
    whole.append(text.substr(0, digestAt_)).append(token->digest);
    whole.append(text.substr(digestAt_, nonceAt_ - digestAt_)).append(token->nonce);
    whole.append(text.substr(nonceAt_, createdAt_ - nonceAt_)).append(token->created);
    whole.append(text.substr(createdAt_));
    return whole;
}

}  // namespace onvif_client
