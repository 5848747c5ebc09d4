#include "client/HttpClient.h"

#include <cstring>
#include <new>

#include "client/ReplyCollector.h"
#include "client/SnapshotDownload.h"
#include "commands/DeviceRequests.h"
#include "commands/GetCmd.h"
#include "common/LogText.h"
#include "platform/Clock.h"
#include "platform/Wirelink.h"
#include "transform/EventResults.h"
#include "transform/TimeResults.h"

namespace onvif_client {

namespace {

constexpr std::size_t kLongestField = 64;
// To a challenge, and to the one that replaces it: it was too old already.
constexpr int kMostAnswers = 2;

std::string Field(std::string_view text) {
    return std::string(text.substr(0, kLongestField));
}

/// A buffer of the caller's with a zero byte behind the text.
ResponseBuffer MakeResponse(const std::string& document) {
    ResponseBuffer response;
    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): without memory there is no result, no throw
    response.data.reset(new (std::nothrow) char[document.size() + 1]);
    if (response.data == nullptr) {
        LogAssert(loglabel::kHttpClient, "no memory for a result");
        return response;
    }
    std::memcpy(response.data.get(), document.c_str(), document.size() + 1);
    response.size = static_cast<int>(document.size() + 1);
    return response;
}

}  // namespace

CHttpClient::CHttpClient(std::string_view user, std::string_view password, std::string_view ip,
                         std::uint16_t port, CExtensions extensions)
    : credentials_{Field(user), Field(password)},
      ip_(Field(ip)),
      port_(port),
      extensions_(extensions) {}

bool CHttpClient::Get(std::string_view request, ResponseBuffer& response) {
    response = {};
    GetAnswer answer = RunGet(*this, request);
    if (answer.picture.data != nullptr) {
        response = std::move(answer.picture);
    } else if (!answer.document.empty()) {
        response = MakeResponse(answer.document);
    }
    return answer.success;
}

bool CHttpClient::Set(std::string_view request, std::string& result) {
    return RunSet(*this, request, result);
}

int CHttpClient::AddReference() {
    const CLockGuard guard(countLock_);
    return ++referenceCount_;
}

int CHttpClient::ReleaseReference() {
    const CLockGuard guard(countLock_);
    if (referenceCount_ <= 0) {
        LogAssert(logpoint::kOverReleased, DeviceName(ip_, port_));
    }
    return --referenceCount_;
}

std::shared_ptr<const ProfileList> CHttpClient::Profiles() const {
    const CLockGuard guard(dataLock_);
    return profiles_;
}

void CHttpClient::ReplaceProfiles(ProfileList profiles) {
    auto replaced = std::make_shared<const ProfileList>(std::move(profiles));
    const CLockGuard guard(dataLock_);
    profiles_ = std::move(replaced);
}

ServiceTable CHttpClient::Services() const {
    const CLockGuard guard(dataLock_);
    return services_;
}

bool CHttpClient::HasMedia2() const {
    const CLockGuard guard(dataLock_);
    return hasMedia2_;
}

Reply CHttpClient::Exchange(const SignedRequest& request) {
    const std::string path = request.path.empty() ? ResolvePath(request.serviceKey) : request.path;
    const Target target{path, request.replyCapacity, request.timeoutMs};
    if (request.clock == SigningClock::kDevice && !KeepsClock()) {
        // A failed fetch is not looked at: the device then refuses the creation time.
        std::string deviceTime;
        FetchDeviceClock(ResolvePath("device"), deviceTime);
        return PostSignedByDeviceClock(target, request.envelope, deviceTime);
    }
    return PostSigned(target, request.envelope);
}

std::optional<PreparedRequest> CHttpClient::PrepareRequest(std::string_view request) const {
    const auto first = FirstRequest(*this, request);
    auto envelope = first ? CPreparedEnvelope::Make(credentials_, first->envelope) : std::nullopt;
    if (!envelope) {
        return std::nullopt;
    }
    return PreparedRequest{*std::move(envelope), first->path, first->serviceKey};
}

std::string CHttpClient::BuildHttpRequest(const PreparedRequest& prepared) {
    const auto body = prepared.envelope.Sign(
        credentials_, KeepsClock() ? std::optional(TimeOfPull()) : std::nullopt);
    if (!body) {
        return {};
    }
    const std::string path =
        prepared.path.empty() ? ResolvePath(prepared.serviceKey) : prepared.path;
    const Target target{path, kOrdinaryReplyCapacity};
    if (!AnswersDigest()) {
        return BuildExchange(target, *body);
    }
    const CDigestAnswers::Answer answer = digestAnswers_.Next("POST", PostTarget(path));
    const CLockGuard guard(dataLock_);
    pullAnswer_ = answer;
    return BuildExchange(target, *body, answer.field);
}

PullReply CHttpClient::ReadPullReply(std::string_view reply) {
    using enum CDigestAnswers::Verdict;
    CResultDocument result;
    std::string_view soap;
    reply = reply.substr(0, reply.find('\0'));
    const auto verdict = AnswersDigest() ? TakePullChallenge(reply) : kNotAsked;
    const int status = verdict == kNotAsked ? Classify(reply, soap) : status::kNotAuthorized;
    if (status == status::kSuccess) {
        BuildResult(kPullMessagesResult, soap, {}, result, FaultReadingOf(extensions_));
    }
    if (status == status::kNotAuthorized && verdict != kAskedAnew) {
        deviceClock_.NoteRefusal();
    }
    return {status, result.TakeParsed(), verdict == kAskedAnew};
}

CDigestAnswers::Verdict CHttpClient::TakePullChallenge(std::string_view reply) {
    CDigestAnswers::Answer answer;
    {
        const CLockGuard guard(dataLock_);
        answer = pullAnswer_;
    }
    return digestAnswers_.Take(reply, answer);
}

int CHttpClient::DownloadPicture(const std::string& address, ResponseBuffer& picture) {
    if (address.empty()) {
        return status::kNotSent;
    }
    CSnapshotDownload(ip_, credentials_, address, extensions_, digestAsked_).Run(picture);
    return status::kSuccess;
}

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

Reply CHttpClient::PostSignedAt(const Target& target, std::string_view envelope,
                                const std::optional<CalendarTime>& created) {
    const auto prepared = CPreparedEnvelope::Make(credentials_, envelope);
    return Post(target,
                [&] { return prepared ? prepared->Sign(credentials_, created) : std::nullopt; });
}

Reply CHttpClient::PostBare(const Target& target, std::string_view envelope) {
    return Post(target, [&] { return std::optional(std::string(envelope)); });
}

Reply CHttpClient::PostSigned(const Target& target, std::string_view envelope) {
    return KeepsClock() ? PostByKeptClock(target, envelope)
                        : PostSignedAt(target, envelope, std::nullopt);
}

Reply CHttpClient::PostSignedByDeviceClock(const Target& target, std::string_view envelope,
                                           const std::string& deviceTime) {
    return Post(target, [&]() -> std::optional<std::string> {
        CXmlTransform document(envelope);
        if (!Authentication_UseIPCTime(credentials_, document, deviceTime)) {
            return std::nullopt;
        }
        return document.Document().Print();
    });
}

int CHttpClient::FetchDeviceClock(std::string_view path, std::string& deviceTimeResult) {
    const Reply reply = PostBare({path, kOrdinaryReplyCapacity}, BareClockEnvelope());
    if (reply.status == status::kSuccess) {
        TransGetSystemDateAndTimeForAuthentication(reply.soap, deviceTimeResult);
    }
    return reply.status;
}

std::string CHttpClient::ResolvePath(std::string_view serviceKey) {
    const CLockGuard guard(dataLock_);
    if (const auto found = services_.find(serviceKey); found != services_.end()) {
        return found->second;
    }
    std::string path(kDefaultDevicePath);
    if (serviceKey == "events" && eventsPath_) {
        path = *eventsPath_;
    } else if (const auto device = services_.find("device"); device != services_.end()) {
        path = device->second;
    }
    services_.emplace(serviceKey, path);
    return path;
}

}  // namespace onvif_client
