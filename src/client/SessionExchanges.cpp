#include <cstring>

#include "client/HttpClient.h"
#include "client/ReplyCollector.h"
#include "platform/Clock.h"
#include "platform/Wirelink.h"

namespace onvif_client {

namespace {

// To a challenge, and to the one that replaces it: it was too old already.
constexpr int kMostAnswers = 2;

}  // namespace

Reply CHttpClient::Post(const Target& target, const MakeBody& make) {
    if (!patience_) {
        return PostOpenly(target, make);
    }
    if (patience_->Lost()) {
        return {status::kNoReply, {}};
    }
    const std::uint32_t began = TickCount();
    Reply reply = PostOpenly(target, make);
    if (reply.status != status::kNotSent) {
        patience_->Count(TickCount() - began, reply.status != status::kNoReply);
    }
    return reply;
}

Reply CHttpClient::PostOpenly(const Target& target, const MakeBody& make) {
    auto body = make();
    if (!body) {
        return {status::kNotSent, {}};
    }
    const std::uint32_t began = TickCount();
    auto outcome = OverKept::kNot;
    Reply reply = PostOnce(target, *body, outcome);
    const std::uint32_t passed = TickCount() - began;
    // What may have arrived is only asked for twice, never set twice.
    const bool mayRepeat =
        outcome == OverKept::kUnsent || (outcome == OverKept::kClosed && OnlyReads(*body));
    if (!mayRepeat || passed >= target.timeoutMs) {
        return reply;
    }
    body = make();
    Target left = target;
    left.timeoutMs -= passed;
    left.overNewConnection = true;
    return body ? PostOnce(left, *body, outcome) : reply;
}

Reply CHttpClient::PostOnce(const Target& target, std::string_view body, OverKept& outcome) {
    bool refused = false;
    std::string buffer = AnswersDigest() ? TransferAnswering(target, body, refused, outcome)
                                         : Transfer(target, BuildExchange(target, body), outcome);
    Reply reply;
    if (KeepsClock()) {
        reply.date = ReadHttpDate(buffer);
    }
    std::string_view soap;
    reply.status = refused ? status::kNotAuthorized : Classify(buffer, soap);
    if (reply.status == status::kSuccess) {
        buffer.erase(0, buffer.size() - soap.size());
        reply.soap = std::move(buffer);
        if (extensions_.Has(Extension::kOpenFaults)) {
            JoinEnvelopeTag(reply.soap);
        }
    }
    return reply;
}

int CHttpClient::Classify(std::string_view reply, std::string_view& soap) const {
    return extensions_.Has(Extension::kOpenFaults) ? ClassifyOpenly(ip_, port_, reply, soap)
                                                   : ClassifyReply(ip_, port_, reply, soap);
}

std::string CHttpClient::BuildRequest(std::string_view path, std::string_view body,
                                      std::string_view authorization,
                                      std::string_view persistence) const {
    const bool large = extensions_.Has(Extension::kLargeMessages);
    return BuildPost(path, ip_, body, authorization,
                     large ? kLargestExtendedRequest : kLargestRequest, persistence);
}

std::string CHttpClient::BuildExchange(const Target& target, std::string_view body,
                                       std::string_view authorization) const {
    return BuildRequest(target.path, body, authorization,
                        KeepsConnections() ? kKeepAliveField : std::string_view());
}

std::string CHttpClient::TransferAnswering(const Target& target, std::string_view body,
                                           bool& refused, OverKept& outcome) {
    using enum CDigestAnswers::Verdict;
    const std::string uri = PostTarget(target.path);
    std::string buffer;
    auto verdict = kAskedAnew;
    for (int answers = 0; verdict == kAskedAnew && answers <= kMostAnswers; ++answers) {
        const CDigestAnswers::Answer answer = digestAnswers_.Next("POST", uri);
        buffer = Transfer(target, BuildExchange(target, body, answer.field), outcome);
        verdict = digestAnswers_.Take(buffer, answer);
    }
    refused = verdict != kNotAsked;
    return buffer;
}

std::shared_ptr<CExchangeTrace> CHttpClient::BeginTrace(std::string_view request) const {
    return CExchangeTrace::Begin(ip_, port_, credentials_, request);
}

std::string CHttpClient::Transfer(const Target& target, const std::string& request,
                                  OverKept& outcome) {
    const auto trace = BeginTrace(request);
    ExchangeEnd end = ExchangeEnd::kReplied;
    std::string reply = CReplyCollector::IsNeeded(extensions_)
                            ? TransferObserved(target, request, end, outcome)
                            : TransferSimply(target, request, end);
    if (trace != nullptr) {
        trace->End({end, reply});
    }
    return reply;
}

std::string CHttpClient::TransferSimply(const Target& target, const std::string& request,
                                        ExchangeEnd& end) const {
    std::string buffer(target.replyCapacity, '\0');
    WIRELINK_SimpleClientComm(ip_.c_str(), port_, request.data(),
                              static_cast<unsigned int>(request.size()), buffer.data(),
                              target.replyCapacity, kReplyEndMarker, target.timeoutMs, &end);
    buffer.resize(std::strlen(buffer.c_str()));
    return buffer;
}

std::string CHttpClient::TransferObserved(const Target& target, const std::string& request,
                                          ExchangeEnd& end, OverKept& outcome) {
    CReplyCollector collector(extensions_, target.replyCapacity);
    KeptUse use{kept_, LongestIdleMs(target, request)};
    WIRELINK_ObservedClientComm(ip_.c_str(), port_, request.data(),
                                static_cast<unsigned int>(request.size()), &collector,
                                target.timeoutMs, &end, KeepsConnections() ? &use : nullptr);
    outcome = use.outcome;
    NoteOverKept(outcome);
    std::string reply = collector.Take();
    reply.resize(std::strlen(reply.c_str()));
    return reply;
}

bool CHttpClient::KeepsConnections() const {
    return extensions_.Has(Extension::kKeepAlive) && keptTrust_ != KeptTrust::kRefused;
}

std::uint32_t CHttpClient::LongestIdleMs(const Target& target, std::string_view request) const {
    if (target.overNewConnection) {
        return 0;
    }
    // What is not repeated waits for proof that the device means it, and goes over a connection
    // that the device is not about to close.
    constexpr std::uint32_t kFreshMs = 1000;
    const std::uint32_t unrepeated = keptTrust_ == KeptTrust::kProven ? kFreshMs : 0;
    return OnlyReads(request) ? kLongestKeptMs : unrepeated;
}

void CHttpClient::NoteOverKept(OverKept outcome) {
    if (outcome == OverKept::kAnswered) {
        keptTrust_ = KeptTrust::kProven;
    } else if (outcome != OverKept::kNot) {
        auto untried = KeptTrust::kUntried;
        if (keptTrust_.compare_exchange_strong(untried, KeptTrust::kRefused)) {
            kept_.Close();
        }
    }
}

}  // namespace onvif_client
