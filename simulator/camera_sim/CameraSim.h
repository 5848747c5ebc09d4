/// @file
/// A simulated ONVIF camera behind a real HTTP server on 127.0.0.1, for tests, benchmarks and
/// trials.
///
///     camera_sim::CameraHost host;
///     camera_sim::Camera& camera = host.Add({.model = "fixed"});
///     ... talk to 127.0.0.1:camera.Port() ...
///     camera.Inject("GetProfiles", {.kind = camera_sim::Fault::Kind::kClose, .remaining = 2});
///
/// The camera checks authentication by itself, answers with documents that the official schemas
/// accept and does not validate what it receives beyond what it needs. A refused change leaves its
/// state as it was. Every answer ends its connection. Besides the services under /onvif/ it serves
/// a picture of each profile under /snapshot/ and control requests under /control/, which GET
/// /control/ lists.
///
/// Threads: everything here may be called from any thread, except the destruction of a CameraHost,
/// which must be the last call to it and its cameras.
#ifndef CAMERA_SIM_CAMERASIM_H
#define CAMERA_SIM_CAMERASIM_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "camera_sim/state/CameraState.h"

namespace camera_sim {

/// How a camera protects its pictures.
enum class HttpScheme { kNone, kBasic, kDigest };

/// How a camera is made. What a Set operation can change afterwards is in CameraState.
struct CameraOptions {
    /// "dome": PTZ, second media service, 3 profiles, 2 relays, 2 inputs.
    /// "fixed": 2 profiles, 1 relay, 1 input, neither PTZ nor second media service.
    std::string model = "dome";
    std::uint16_t port = 0;      ///< 0: the system chooses
    std::string user = "admin";  ///< empty: no authentication is needed
    std::string password = "camera-1";

    /// Services; unset: as the model has it.
    std::optional<bool> media2{};
    std::optional<bool> ptz{};
    bool imaging = true;
    bool analytics = true;
    bool events = true;
    bool deviceIo = true;
    bool getServices = true;      ///< false: GetServices is refused as not implemented
    bool capabilitiesAll = true;  ///< false: GetCapabilities refuses the category All

    /// Operations that need no credentials.
    std::vector<std::string> openOperations = {"GetSystemDateAndTime", "GetServices",
                                               "GetCapabilities", "GetHostname"};

    std::chrono::seconds clockOffset{0};      ///< camera time minus this machine's time
    std::chrono::seconds createdWindow{300};  ///< how far Created may be from the camera's time
    bool refuseReplays = true;                ///< a second use of a nonce is refused
    unsigned unauthorizedStatus = 400;        ///< HTTP status beside NotAuthorized: 400 or 401
    unsigned senderFaultStatus = 400;  ///< HTTP status of other faults of the sender: 400 or 500

    /// Namespace prefixes of answers, one of PrefixStyleNames().
    std::string prefixStyle = "SOAP-ENV";
    bool xmlProlog = true;
    bool prettyXml = false;
    /// Advertised service addresses; {host}, {port} and {path} are replaced. Without {path} every
    /// service answers at "/" too.
    std::string addressShape = "http://{host}:{port}{path}";
    /// The address of a picture; {host}, {port} and {path} (/snapshot/PROFILE) are replaced.
    std::string snapshotAddressShape = "http://{host}:{port}{path}";
    /// Unset: dome has Digest (MD5), fixed Basic. Without a user there is never any.
    std::optional<HttpScheme> snapshotAuthentication{};
    std::string snapshotRealm = "onvif-camera-sim";  ///< any text without line breaks
    std::string snapshotQop = "auth";  ///< of Digest: also "auth,auth-int"; empty: none offered
    /// A nonce is good for that long and for that many requests (0: any number).
    std::chrono::seconds snapshotNonceLifetime{300};
    std::uint32_t snapshotNonceUses = 0;
    /// False: any service answers at any path outside /control/ and /snapshot/.
    bool strictPaths = true;
    /// How many requests are kept as evidence (the oldest go first; also at most 16 MiB).
    std::size_t recordLimit = 1000;

    /// Events.
    std::string topicStyle = "cell-motion";  ///< one of TopicStyleNames()
    bool numericStates = false;              ///< LogicalState is "1" or "0", not "true" or "false"
    std::string subscriptionStyle = "address";  ///< one of SubscriptionStyleNames()
    std::size_t maxSubscriptions = 32;
    std::chrono::seconds defaultTermination{60};  ///< of a subscription that asks for no time
    std::chrono::seconds maxTermination{24 * 3600};
    /// A pull extends its subscription to the time that was first asked for; false: only Renew
    /// does.
    bool pullsRenew = false;
    std::chrono::seconds maxPullTimeout{120};
    int maxMessageLimit = 1024;
    /// Messages that wait in one subscription; beyond it the oldest are dropped.
    std::size_t messageQueueLimit = 1000;
    /// How often motion, or every digital input, changes by itself; 0: never.
    std::chrono::milliseconds motionPeriod{0};
    std::chrono::milliseconds inputPeriod{0};
};

/// The names that CameraOptions::prefixStyle takes.
std::vector<std::string> PrefixStyleNames();

/// The names that CameraOptions::topicStyle takes:
/// "cell-motion"    tns1:RuleEngine/CellMotionDetector/Motion, tns1:Device/Trigger/DigitalInput
/// "motion-region"  tns1:RuleEngine/MotionRegionDetector/Motion and the same for inputs
/// "source-alarm"   tns1:VideoSource/MotionAlarm and the same for inputs
/// "qualified"      the topics of "cell-motion" with a prefix at every level
std::vector<std::string> TopicStyleNames();

/// The names that CameraOptions::subscriptionStyle takes:
/// "address"        every subscription has its own address
/// "id"             one address; the reference parameters hold a SubscriptionId, which requests
///                  must carry in their header
/// "address-other"  an address each, and reference parameters without such an id
std::vector<std::string> SubscriptionStyleNames();

/// A SOAP 1.2 fault.
struct SoapFault {
    std::string code = "Sender";  ///< "Sender" or "Receiver"
    /// Below the ONVIF error namespace, e.g. "NotAuthorized", or with another namespace's usual
    /// prefix, e.g. "wsrf-rw:ResourceUnknownFault"; empty: none.
    std::string subcode{};
    std::string detailCode{};  ///< the subcode's own subcode, e.g. "NoProfile"; empty: none
    std::string reason{};
    std::string detail{};  ///< an XML element that declares its namespaces; empty: none
};

/// A misbehaviour that meets requests. Every kind waits `delay` first. An HTTP 401 in place of a
/// picture has no challenge.
struct Fault {
    enum class Kind {
        kDelay,         ///< answers properly, only late
        kSilence,       ///< never answers, keeps the connection open; nothing is executed
        kClose,         ///< closes without an answer; nothing is executed
        kTruncate,      ///< closes after the first `bytes` bytes of the reply, HTTP head included
        kGarbage,       ///< sends `bytes` meaningless bytes (the same ones each time) instead
        kSoapFault,     ///< answers `soapFault`; nothing is executed
        kUnauthorized,  ///< answers HTTP 401 without a body; nothing is executed
        kNoProlog,      ///< answers without the XML declaration
        kSegments,      ///< sends the reply in pieces of `bytes` bytes, `pause` apart
        kRawReply,      ///< sends `reply` as it is, HTTP head and all; nothing is executed
    };
    Kind kind = Kind::kDelay;
    std::int64_t remaining = -1;  ///< how many requests it still meets; negative: all
    std::chrono::milliseconds delay{0};
    std::size_t bytes = 0;
    std::chrono::milliseconds pause{0};
    SoapFault soapFault{};
    std::string reply{};
};

/// A fault and the requests that it meets.
struct PlannedFault {
    /// An operation ("GetProfiles"), an operation of one service by its usual prefix
    /// ("tr2:GetProfiles"), "http:snapshot" for pictures, or "*" for all requests, unreadable ones
    /// included.
    std::string operation;
    Fault fault;
};

/// Reads OPERATION[@COUNT]=KIND[:ARGUMENT], the form of the command line and of control requests
/// (FaultSyntax() explains it). Nothing when @p text is not of that form; @p error then says why.
std::optional<PlannedFault> ParseFault(std::string_view text, std::string& error);
std::string_view FaultSyntax();

/// Evidence of one request.
struct RecordedRequest {
    std::string service;    ///< usual prefix of the operation's namespace, "tds"; pictures: "http"
    std::string operation;  ///< empty when the request could not be read
    std::string path;
    std::string head;  ///< request line and header fields as received, with the empty line
    std::string body;
    bool authenticated = false;  ///< carried valid credentials
    std::string refusal;         ///< why the credentials were not accepted; empty: none were given
    unsigned status = 0;         ///< HTTP status of the answer; 0: none, or a raw one
};

struct SubscriptionInfo {
    std::uint64_t id = 0;
    std::string consumer;  ///< empty: a pull point
    std::chrono::milliseconds rest{0};
    std::size_t waitingPulls = 0;
    std::size_t queued = 0;
    std::uint64_t delivered = 0;
    std::uint64_t dropped = 0;
};

class CameraCore;

/// Made by CameraHost.
class Camera {
 public:
    explicit Camera(std::unique_ptr<CameraCore> core);
    ~Camera();
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    std::uint16_t Port() const;

    /// Adds a fault. Of several that meet a request the oldest takes effect, alone.
    void Inject(std::string operation, Fault fault);
    void ClearFaults();
    std::vector<PlannedFault> Faults() const;

    /// How often an operation was asked for, refused and disturbed requests included. @p operation
    /// as in PlannedFault; "*" counts everything but control requests. Counted beside the
    /// operations: "event:messages" (made), "event:pulled" and "event:notified" (messages that
    /// arrived), "event:failed" (that a consumer did not take).
    std::uint64_t Count(std::string_view operation) const;
    /// The kept requests, oldest first.
    std::vector<RecordedRequest> Requests() const;
    /// Empties counters and requests.
    void ClearEvidence();

    CameraState State() const;
    /// Changes the state while no request is being answered. @p change must not call the camera.
    /// Whatever changes motion or an input, this or a request, every subscription reports it.
    void Change(const std::function<void(CameraState&)>& change);

    std::vector<SubscriptionInfo> Subscriptions() const;
    /// Drops all connections but those of control requests, and forgets all subscriptions.
    void Reboot();

 private:
    std::unique_ptr<CameraCore> core_;
};

/// Owns cameras and the one thread that serves them.
class CameraHost {
 public:
    CameraHost();
    /// Ends everything at once, whatever clients wait for.
    ~CameraHost();
    CameraHost(const CameraHost&) = delete;
    CameraHost& operator=(const CameraHost&) = delete;

    /// Starts a camera; it lives as long as the host. Null on failure (unknown model or prefix
    /// style, line break in the realm, port in use); @p error then says why.
    Camera* TryAdd(CameraOptions options, std::string& error);
    /// The same for tests: a failure is thrown as std::runtime_error.
    Camera& Add(CameraOptions options);

 private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace camera_sim

#endif
