#include "camera_sim/CameraCore.h"

#include <algorithm>
#include <utility>

#include "camera_sim/events/EventReplies.h"
#include "camera_sim/http/Framing.h"
#include "camera_sim/picture/Snapshot.h"
#include "camera_sim/services/Services.h"

namespace camera_sim {
namespace {

constexpr std::size_t kMostGarbage = std::size_t{64} * 1024 * 1024;

std::chrono::sys_seconds SystemTime() {
    return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

/// Bytes from a linear congruential generator: the same each time, of all values.
std::string Garbage(std::size_t size) {
    std::string bytes(std::min(size, kMostGarbage), '\0');
    std::uint32_t value = 12345;
    for (char& byte : bytes) {
        value = value * 1103515245U + 12345U;
        byte = static_cast<char>(value >> 16U & 0xFFU);
    }
    return bytes;
}

}  // namespace

CCameraCore::CCameraCore(CameraOptions options, CameraState state, const PrefixStyle& style)
    : options_(std::move(options)),
      style_(style),
      state_(std::move(state)),
      authenticator_(options_.createdWindow, options_.refuseReplays),
      httpAuthenticator_({options_.httpAuthentication, options_.httpRealm, options_.httpQop,
                          options_.httpNonceLifetime, options_.httpNonceUses}),
      snapshotAuthenticator_(SnapshotAuthentication(options_)),
      evidence_(options_.recordLimit),
      events_(options_) {
    events_.Observe(state_);
}

CCameraCore::Understood::Understood(const HttpRequest& request)
    : soap(request.body),
      method(request.method),
      path(PathOf(request.target)),
      isSnapshot(IsSnapshotRequest(request.target)),
      keepAlive(request.keepAlive) {
    if (isSnapshot) {
        service = kSnapshotService;
        operation = kSnapshotOperation;
    } else if (const XmlElement* element = soap.Operation()) {
        ns = FindNamespace(NamespaceUri(*element));
        operation = LocalName(*element);
        if (ns) {
            service = NamespaceOf(*ns).usualPrefix;
        }
    }
}

Reply CCameraCore::Handle(HttpRequest request, std::function<void()> wake) {
    Understood understood(request);
    const std::lock_guard guard(lock_);
    evidence_.CountRequest(understood.service, understood.operation);
    CheckCredentialsLocked(request, understood);
    const auto fault = faults_.Take(understood.service, understood.operation);
    Reply reply =
        fault ? DisturbLocked(understood, *fault) : AnswerLocked(understood, options_.xmlProlog);
    if (!fault) {
        FrameLocked(reply, understood.keepAlive);
    }
    const std::uint64_t record = evidence_.Record(
        {std::string(understood.service), std::string(understood.operation),
         std::string(understood.path), std::move(request.head), std::move(request.body),
         understood.credentials.valid, std::move(understood.credentials.refusal), reply.status});
    if (reply.ending == Reply::Ending::kDeferred) {
        Deferred& deferred = deferred_.at(reply.ticket);
        deferred.fault = fault;
        deferred.wake = std::move(wake);
        deferred.keepAlive = understood.keepAlive;
        deferred.record = record;
        reply = ResumeLocked(reply.ticket);
    } else {
        spoiler_.Spoil(understood.operation, reply);
    }
    PublishLocked();
    return reply;
}

void CCameraCore::CheckCredentialsLocked(const HttpRequest& http, Understood& request) {
    CHttpAuthenticator& authenticator =
        request.isSnapshot ? snapshotAuthenticator_ : httpAuthenticator_;
    const bool byHttp = request.isSnapshot || authenticator.IsOn(state_.users);
    if (byHttp) {
        auto result = authenticator.Check(http, state_.users, std::chrono::steady_clock::now());
        request.credentials = std::move(result.credentials);
        request.staleNonce = result.stale;
    }
    if (byHttp &&
        (request.isSnapshot || request.credentials.valid || !options_.httpAuthenticationOrToken)) {
        return;
    }
    Credentials token = authenticator_.Check(request.soap.Header(), state_.users,
                                             SystemTime() + state_.clock.offset);
    if (!byHttp || token.valid) {
        request.credentials = std::move(token);
    }
}

Reply CCameraCore::ChallengeLocked(CHttpAuthenticator& authenticator, const Understood& request) {
    const std::string fields =
        authenticator.Challenges(request.staleNonce, std::chrono::steady_clock::now());
    return HttpReply(401, fields, {}, {});
}

bool CCameraCore::IsAdmittedLocked(const Understood& request) const {
    const bool mayLack = !options_.strictClock || request.credentials.refusal.empty();
    return request.credentials.valid || (mayLack && IsOpen(request.operation));
}

bool CCameraCore::IsOpen(std::string_view operation) const {
    const auto& open = options_.openOperations;
    return std::find(open.begin(), open.end(), operation) != open.end();
}

Reply CCameraCore::AnswerSnapshotLocked(const Understood& request) {
    const SnapshotTime time{SystemTime(), std::chrono::steady_clock::now()};
    if (request.credentials.valid) {
        return SnapshotReply(state_, options_, request.method, request.path, time);
    }
    return ChallengeLocked(snapshotAuthenticator_, request);
}

Reply CCameraCore::AnswerLocked(const Understood& request, bool xmlProlog) {
    if (request.isSnapshot) {
        return AnswerSnapshotLocked(request);
    }
    if (!IsServicePath(options_, request.path)) {
        return HttpReply(404);
    }
    if (request.method != "POST") {
        return HttpReply(405);
    }
    if (httpAuthenticator_.IsOn(state_.users) && !IsAdmittedLocked(request)) {
        return ChallengeLocked(httpAuthenticator_, request);
    }
    CXmlWriter out(style_, options_.prettyXml);
    std::optional<PullWait> wait;
    if (const Answer fault = RunLocked(request, out, wait)) {
        return FaultReply(*fault, xmlProlog);
    }
    if (wait) {
        return DeferLocked(*std::move(wait));
    }
    return HttpReply(200, kSoapType, out.Envelope(xmlProlog));
}

Answer CCameraCore::RunLocked(const Understood& request, CXmlWriter& out,
                              std::optional<PullWait>& wait) {
    switch (request.soap.GetProblem()) {
        case CSoapRequest::Problem::kNone:
            break;
        case CSoapRequest::Problem::kNotXml:
            return SoapFault{"Sender", "WellFormed", {}, "Well-formed error"};
        case CSoapRequest::Problem::kNotSoap12:
            return SoapFault{"VersionMismatch", {}, {}, "Not a SOAP 1.2 envelope"};
        case CSoapRequest::Problem::kNoOperation:
            return SoapFault{"Sender", "MissingAttr", {}, "The body is empty"};
    }
    if (!IsAdmittedLocked(request)) {
        return NotAuthorized();
    }
    const Operation* operation =
        request.ns ? FindOperation(options_, *request.ns, request.operation) : nullptr;
    if (operation == nullptr) {
        return NotSupported("Optional action not implemented");
    }
    if (!IsOpen(request.operation) &&
        request.credentials.role < NeededRole(*request.ns, request.operation)) {
        return NotAuthorized();
    }
    if (!IsServedAt(options_, *request.ns, request.path)) {
        return NotSupported("The action belongs to another service address");
    }

    const XmlElement* header = request.soap.Header();
    Call call{state_, options_,    *request.soap.Operation(), out, SystemTime(), events_,
              header, request.path};
    if (IsEventService(*request.ns)) {
        WriteAddressing(out, AnswerAction(header), ChildText(header, "MessageID"));
    }
    const CXmlWriter::CScope response(out, *request.ns,
                                      operation->response.empty()
                                          ? std::string(operation->name) + "Response"
                                          : std::string(operation->response));
    Answer answer = operation->handler(call);
    wait = std::move(call.wait);
    if (call.reboot) {
        RebootLocked();
    }
    return answer;
}

Reply CCameraCore::FaultReply(const SoapFault& fault, bool xmlProlog) const {
    CXmlWriter out(style_, options_.prettyXml);
    WriteFault(out, fault);
    unsigned status = fault.code == "Receiver" ? 500 : options_.senderFaultStatus;
    if (fault.subcode == "NotAuthorized") {
        status = options_.unauthorizedStatus;
    }
    return HttpReply(status, kSoapType, out.Envelope(xmlProlog));
}

Reply CCameraCore::DisturbLocked(const Understood& request, const Fault& fault) {
    using Kind = Fault::Kind;
    Reply reply;
    switch (fault.kind) {
        case Kind::kDelay:
        case Kind::kSegments:
        case Kind::kTruncate:
            reply = AnswerLocked(request, options_.xmlProlog);
            break;
        case Kind::kNoProlog:
            reply = AnswerLocked(request, false);
            break;
        case Kind::kSilence:
            reply.ending = Reply::Ending::kSilence;
            break;
        case Kind::kClose:
            reply.ending = Reply::Ending::kClose;
            break;
        case Kind::kGarbage:
            reply.bytes = Garbage(fault.bytes);
            break;
        case Kind::kSoapFault:
            reply = FaultReply(fault.soapFault, options_.xmlProlog);
            break;
        case Kind::kUnauthorized:
            reply = request.isSnapshot ? HttpReply(401, {}, {}, {}) : HttpReply(401);
            break;
        case Kind::kRawReply:
            reply.bytes = fault.reply;
            break;
        case Kind::kBareStatus:
            reply = HttpReply(fault.status, {}, {}, {});
            break;
    }
    FrameLocked(reply, request.keepAlive);
    DisturbReply(reply, fault);
    return reply;
}

void CCameraCore::FrameLocked(Reply& reply, bool clientKeeps) const {
    Frame(reply, options_, clientKeeps, SystemTime() + state_.clock.offset);
}

std::optional<std::string> CCameraCore::AnswerProbe(const CProbe& probe, AppSequence sequence) {
    const std::lock_guard guard(lock_);
    auto answer = probe.Answer(options_, state_, style_, sequence);
    evidence_.CountEvents("discovery:answers", answer ? 1 : 0);
    return answer;
}

void DisturbReply(Reply& reply, const Fault& fault) {
    reply.delay = fault.delay;
    if (fault.kind == Fault::Kind::kTruncate) {
        reply.bytes.resize(std::min(reply.bytes.size(), fault.bytes));
        reply.keepOpen = false;
    }
    if (fault.kind == Fault::Kind::kSegments) {
        reply.segment = fault.bytes;
        reply.pause = fault.pause;
    }
}

bool CCameraCore::Spoil(const Spoiling& spoiling) {
    const std::lock_guard guard(lock_);
    return spoiler_.Begin(spoiling);
}

std::optional<Reply::Ending> CCameraCore::EndingAtConnection() {
    const std::lock_guard guard(lock_);
    return spoiler_.AtConnection();
}

void CCameraCore::Inject(PlannedFault fault) {
    const std::lock_guard guard(lock_);
    faults_.Add(std::move(fault));
}

void CCameraCore::ClearFaults() {
    const std::lock_guard guard(lock_);
    faults_.Clear();
}

std::vector<PlannedFault> CCameraCore::Faults() const {
    const std::lock_guard guard(lock_);
    return faults_.List();
}

std::uint64_t CCameraCore::Count(std::string_view operation) const {
    const std::lock_guard guard(lock_);
    return evidence_.Count(operation);
}

Counters CCameraCore::AllCounts() const {
    const std::lock_guard guard(lock_);
    return evidence_.AllCounts();
}

std::vector<RecordedRequest> CCameraCore::Requests() const {
    const std::lock_guard guard(lock_);
    return evidence_.Requests();
}

void CCameraCore::ClearEvidence() {
    const std::lock_guard guard(lock_);
    evidence_.Clear();
}

CameraState CCameraCore::State() const {
    const std::lock_guard guard(lock_);
    return state_;
}

void CCameraCore::Change(const std::function<void(CameraState&)>& change) {
    const std::lock_guard guard(lock_);
    change(state_);
    PublishLocked();
}

}  // namespace camera_sim
