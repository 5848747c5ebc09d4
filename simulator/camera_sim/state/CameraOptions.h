/// @file
/// How a simulated camera is made: what it has, how it answers, how strict it is.
#ifndef CAMERA_SIM_STATE_CAMERAOPTIONS_H
#define CAMERA_SIM_STATE_CAMERAOPTIONS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "camera_sim/state/User.h"

namespace camera_sim {

/// How a camera protects its pictures, or its services as a whole. kDigest is MD5, kDigestEither
/// offers SHA-256 and, in a second challenge, MD5.
enum class HttpScheme { kNone, kBasic, kDigest, kDigestSha256, kDigestEither };

/// Whether a connection stays open after a reply: never, unless the client or HTTP/1.0 says
/// otherwise, or whatever the client says. Idle ones are closed after 30 s.
enum class KeepAlive { kNever, kPolite, kAlways };

/// How a camera is made. What a Set operation can change afterwards is in CameraState.
struct CameraOptions {
    /// "dome": PTZ, second media service, 3 profiles, 2 relays, 2 inputs.
    /// "fixed": 2 profiles, 1 relay, 1 input, neither PTZ nor second media service.
    /// "recorder": `channels` video sources of two profiles (Profile_1_Main, Profile_1_Sub ...) and
    /// one input each, second media service, 2 relays, no PTZ.
    std::string model = "dome";
    std::uint16_t port = 0;      ///< 0: the system chooses
    std::string user = "admin";  ///< empty: none; without accounts no authentication is needed
    std::string password = "camera-1";
    int channels = 16;             ///< of a recorder: 1 to 255
    std::vector<User> accounts{};  ///< beside the user, who is an administrator

    /// Services; unset: as the model has it.
    std::optional<bool> media2{};
    std::optional<bool> ptz{};
    bool media = true;          ///< the first media service
    bool brokenMedia2 = false;  ///< the second is offered, but implements none of its operations
    bool imaging = true;
    bool analytics = true;
    bool events = true;
    bool deviceIo = true;
    bool getServices = true;      ///< false: GetServices is refused as not implemented
    bool capabilitiesAll = true;  ///< false: GetCapabilities refuses the category All

    bool discoverable = true;  ///< answers probes, where the host takes any

    /// Operations that need no credentials.
    std::vector<std::string> openOperations = {"GetSystemDateAndTime", "GetServices",
                                               "GetCapabilities", "GetHostname",
                                               "GetServiceCapabilities"};

    /// HTTP authentication of the services. Other than kNone, requests without proper HTTP
    /// credentials are answered with a bare 401, and no UsernameToken is needed.
    HttpScheme httpAuthentication = HttpScheme::kNone;
    bool httpAuthenticationOrToken = false;    ///< a proper UsernameToken will do instead
    std::string httpRealm = "onvif services";  ///< any text without line breaks
    std::string httpQop = "auth";  ///< of Digest: also "auth,auth-int"; empty: as in RFC 2069
    /// A nonce is good for that long and for that many requests (0: any number).
    std::chrono::seconds httpNonceLifetime{300};
    std::uint32_t httpNonceUses = 0;

    std::chrono::seconds clockOffset{0};      ///< camera time minus this machine's time
    std::chrono::seconds createdWindow{300};  ///< how far Created may be from the camera's time
    /// Credentials that are given and not valid are refused at open operations as well.
    bool strictClock = false;
    /// What SetSystemDateAndTime answers: empty (done), or one of ClockRefusalNames().
    std::string clockRefusal{};
    bool httpDate = false;              ///< replies have the header Date, by the camera's clock
    bool refuseReplays = true;          ///< a second use of a nonce is refused
    unsigned unauthorizedStatus = 400;  ///< HTTP status beside NotAuthorized
    unsigned senderFaultStatus = 400;   ///< HTTP status of other faults of the sender

    /// How replies are sent, those to pulls and with pictures as well.
    KeepAlive keepAlive = KeepAlive::kNever;
    std::size_t chunkBytes = 0;     ///< bodies go in chunks of so many bytes; 0: in one piece
    bool noLength = false;          ///< no Content-Length: a body ends with the connection
    bool noBareLength = false;      ///< the same of replies that have no body, nothing ends those
    bool interimReply = false;      ///< HTTP 100 (Continue) goes before every reply
    bool looseEnvelopeEnd = false;  ///< envelopes end with "Envelope >"

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

/// The names that CameraOptions::clockRefusal takes, for the faults Sender/NotAuthorized,
/// Sender/OperationProhibited and Receiver/Action: "not-authorized", "prohibited", "failed".
std::vector<std::string> ClockRefusalNames();

/// The names that CameraOptions::topicStyle takes:
/// "cell-motion"    tns1:RuleEngine/CellMotionDetector/Motion, tns1:Device/Trigger/DigitalInput
/// "motion-region"  tns1:RuleEngine/MotionRegionDetector/Motion and the same for inputs
/// "source-alarm"   tns1:VideoSource/MotionAlarm and the same for inputs
/// "qualified"      the topics of "cell-motion" with a prefix at every level
/// "field"          tns1:RuleEngine/FieldDetector/ObjectsInside, IsInside, with a key ObjectId
/// "line"           tns1:RuleEngine/LineDetector/Crossed: no state, an event when motion begins
/// "detection"      tns1:VideoAnalytics/VMD/Motion, active
/// "analytics"      tns1:VideoAnalytics/MotionDetection
/// "objects"        tns1:RuleEngine/ObjectAnalytics/Scenario1, active; tns1:Device/IO/Port
/// "guards"         tns1:RuleEngine/MotionGuard/Profile1 and, never true but told with it,
///                  FenceGuard; tns1:Device/IO/Port
/// "human-shape"    tns1:UserAlarm/IVA/HumanShapeDetect, and relays: tns1:Device/Trigger/Relay
/// "two-rules"      "cell-motion" by two rules, of which RuleB is told with RuleA and never true;
///                  relays
/// "many"           motion by ten topics at once, those of "guards" among them; relays
std::vector<std::string> TopicStyleNames();

/// The names that CameraOptions::subscriptionStyle takes:
/// "address"        every subscription has its own address
/// "id"             one address; the reference parameters hold a SubscriptionId, which requests
///                  must carry in their header
/// "address-other"  an address each, and reference parameters without such an id
std::vector<std::string> SubscriptionStyleNames();

}  // namespace camera_sim

#endif
