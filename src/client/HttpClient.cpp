#include "client/HttpClient.h"

#include <cstring>
#include <new>

#include "client/SnapshotDownload.h"
#include "commands/DeviceRequests.h"
#include "commands/GetCmd.h"
#include "common/LogText.h"
#include "transform/EventResults.h"
#include "transform/TimeResults.h"

namespace onvif_client {

namespace {

constexpr std::size_t kLongestField = 64;

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
