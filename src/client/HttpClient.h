/// @file
/// A device session: what is known of one logged-in device, and the way to it.
///
/// A session is made with an address and credentials, logs in once, and then runs any number of
/// requests, from any number of threads at once; every exchange opens a TCP connection of its own
/// or, with keep-alive, goes over one that another exchange has left open. Sessions are made,
/// counted and destroyed by the session registry.
#ifndef ONVIF_CLIENT_CLIENT_HTTPCLIENT_H
#define ONVIF_CLIENT_CLIENT_HTTPCLIENT_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "client/DeviceClock.h"
#include "client/DigestAnswers.h"
#include "client/ExchangeTrace.h"
#include "client/LoginPatience.h"
#include "client/PreparedRequest.h"
#include "client/SecurityHeader.h"
#include "client/SoapExchange.h"
#include "commands/CommandSession.h"
#include "commands/ResponseBuffer.h"
#include "platform/KeptConnections.h"
#include "platform/Mutex.h"
#include "platform/Wirelink.h"

namespace onvif_client {

/// What came of a pull for messages.
struct PullReply {
    int status = status::kNoReply;                         // of the exchange
    std::shared_ptr<const CXmlDocument> result = nullptr;  // the result; null when there is none
    bool askedAnew = false;  // refused by a challenge that the next pull can answer
};

class CHttpClient final : public ICommandSession {
 public:
    /// User, password and address are cut to 64 bytes each. One reference is held from the start.
    CHttpClient(std::string_view user, std::string_view password, std::string_view ip,
                std::uint16_t port, CExtensions extensions = {});
    ~CHttpClient() override = default;
    CHttpClient(const CHttpClient&) = delete;
    CHttpClient& operator=(const CHttpClient&) = delete;

    /// Runs the login sequence: checks the device's answer and credentials, sets its clock (or,
    /// with keep-clock, reads it), learns its services and fetches its profiles. Called once,
    /// before other threads see the session.
    /// @return 0, or the status of the step that failed.
    int Login();

    /// Runs a Get request document.
    /// @param response  emptied first; then the result document with the zero byte that ends it, or
    ///                  the picture.
    /// @return true when the last command succeeded.
    bool Get(std::string_view request, ResponseBuffer& response);

    /// Runs a Set request document; @p result receives the result document.
    /// @return false when a command failed.
    bool Set(std::string_view request, std::string& result);

    /// The first command of a Get request document, for whoever sends it over connections of its
    /// own. Nothing when there is nothing to send.
    std::optional<PreparedRequest> PrepareRequest(std::string_view request) const;
    /// The HTTP request of it, signed. Empty when that fails.
    std::string BuildHttpRequest(const PreparedRequest& prepared);

    /// Whether the device has answered over a connection that was kept.
    bool TrustsKeptConnections() const { return keptTrust_ == KeptTrust::kProven; }

    /// What a pull for messages brought whose HTTP reply came over another connection.
    PullReply ReadPullReply(std::string_view reply);

    /// Begins to trace such a request. Null where nothing is traced.
    std::shared_ptr<CExchangeTrace> BeginTrace(std::string_view request) const;

    /// @return the new count.
    int AddReference();
    /// Gives a reference back; the caller that brings the count to 0 destroys the session. A count
    /// that is 0 or less already is reported and goes on downward.
    /// @return the new count.
    int ReleaseReference();

    const std::string& DeviceAddress() const { return ip_; }
    std::uint16_t Port() const { return port_; }
    /// True once a login has succeeded.
    bool LoggedIn() const { return loggedIn_; }
    /// What the device said of its event service at login.
    const EventCapabilities& Events() const { return eventCapabilities_; }

    // ICommandSession
    CExtensions Extensions() const override { return extensions_; }
    std::shared_ptr<const ProfileList> Profiles() const override;
    void ReplaceProfiles(ProfileList profiles) override;
    ServiceTable Services() const override;
    bool HasMedia2() const override;
    PtzRanges SpeedRanges() const override { return ptzRanges_.value_or(PtzRanges{}); }
    Reply Exchange(const SignedRequest& request) override;
    void NoteClockSet() override;
    int DownloadPicture(const std::string& address, ResponseBuffer& picture) override;

 private:
    /// Where and how an exchange goes.
    struct Target {
        std::string_view path;
        std::uint32_t replyCapacity;
        std::uint32_t timeoutMs = kExchangeTimeoutMs;
        bool overNewConnection = false;
    };

    /// Makes the body of a request, signed anew each time; nothing when that fails.
    using MakeBody = std::function<std::optional<std::string>()>;

    // SessionExchanges.cpp
    /// During a login, as long as that has patience.
    Reply Post(const Target& target, const MakeBody& make);
    /// Once more over a new connection, in the time that is left, where a kept one turned out to be
    /// closed.
    Reply PostOpenly(const Target& target, const MakeBody& make);
    /// @param outcome  of the kept connection that it went over.
    Reply PostOnce(const Target& target, std::string_view body, OverKept& outcome);
    /// What the reply says, as the session's extensions have it.
    int Classify(std::string_view reply, std::string_view& soap) const;
    /// A POST, cut where the session's requests end.
    std::string BuildRequest(std::string_view path, std::string_view body,
                             std::string_view authorization = {},
                             std::string_view persistence = {}) const;
    /// The same for an exchange, which may ask for a connection that stays open.
    std::string BuildExchange(const Target& target, std::string_view body,
                              std::string_view authorization = {}) const;
    /// With http-digest: up to three times, to answer what the device asks for. Each has the
    /// target's time.
    /// @param refused  becomes true when the device does not accept the answer.
    std::string TransferAnswering(const Target& target, std::string_view body, bool& refused,
                                  OverKept& outcome);
    CDigestAnswers::Verdict TakePullChallenge(std::string_view reply);
    bool AnswersDigest() const { return extensions_.Has(Extension::kHttpDigest); }
    /// One exchange over TCP.
    /// @return what came, head and body, up to the target's capacity, with the extension
    ///         large-messages up to 16 MiB; with http-framing without the frames of chunks.
    std::string Transfer(const Target& target, const std::string& request, OverKept& outcome);
    std::string TransferSimply(const Target& target, const std::string& request,
                               ExchangeEnd& end) const;
    std::string TransferObserved(const Target& target, const std::string& request, ExchangeEnd& end,
                                 OverKept& outcome);
    /// Whether connections are kept at present.
    bool KeepsConnections() const;
    /// How long a connection may have been idle that this request goes over.
    std::uint32_t LongestIdleMs(const Target& target, std::string_view request) const;
    /// Learns from what came of a kept connection.
    void NoteOverKept(OverKept outcome);

    // HttpClient.cpp: signing
    Reply PostSignedAt(const Target& target, std::string_view envelope,
                       const std::optional<CalendarTime>& created);
    Reply PostBare(const Target& target, std::string_view envelope);
    /// By our clock, or by the device's that is kept.
    Reply PostSigned(const Target& target, std::string_view envelope);
    /// @param deviceTime  what FetchDeviceClock gave.
    Reply PostSignedByDeviceClock(const Target& target, std::string_view envelope,
                                  const std::string& deviceTime);
    /// Asks for the device's clock without a security header.
    /// @param deviceTimeResult  stays as it is when the device does not answer properly.
    int FetchDeviceClock(std::string_view path, std::string& deviceTimeResult);
    /// The path of a service key. A key that is not in the table gets the device's path and stays.
    std::string ResolvePath(std::string_view serviceKey);

    // ClockKeeping.cpp: with the extension keep-clock
    bool KeepsClock() const { return extensions_.Has(Extension::kKeepClock); }
    /// Asks the device for its clock: bare, else signed, else by the date of its replies.
    /// @return 5 when there was no reply; else 0, whether or not the clock was learned.
    int LookAtClock(std::string_view path);
    bool LearnClock(const Reply& reply);
    /// Whether another signature is worth a request after a refusal of one by @p signedBy.
    bool ClockMoved(const SigningTime& signedBy) EXCLUDES(clockReading_);
    /// Tries a refused request again when the clock turns out to have moved.
    Reply PostByKeptClock(const Target& target, std::string_view envelope);
    /// The time to sign a pull by, of which a refusal is not seen here.
    CalendarTime TimeOfPull() EXCLUDES(clockReading_);

    // Login.cpp: the steps of a login
    int TakeLoginSteps();
    int FetchProfiles();
    int ReadOptionsBehind(int profilesStatus);
    int AlignDeviceClock();
    /// @param deviceTime  what FetchDeviceClock gave.
    int CheckDeviceClock(std::string& deviceTime);
    int SetDeviceClock(std::string deviceTime);
    int GetServersUrl(ServiceTable& services);
    void TakeServices(std::string_view reply, ServiceTable& services);
    int ReadAllCapabilities(ServiceTable& services);
    int ProbeCapability(const CapabilityCategory& category, ServiceTable& services);
    int DiscoverWithoutServices(ServiceTable& services);
    int CompleteServices(ServiceTable& services, bool eventsTold = false);
    int DiscoverServices();
    int ReadOptions();
    int ReadPtzOptions(const std::string& token);
    int ReadFocusOptions(const std::string& token);

    // QuickLogin.cpp: with the extension quick-login
    bool IsQuick() const { return extensions_.Has(Extension::kQuickLogin); }
    int TakeQuickLoginSteps();
    int LearnProfilesBesideServices(ServiceTable services,
                                    const std::optional<EventService>& events);
    int ReadOptionsSideBySide(const MediaProfile& profile);
    void AddServices(const ServiceTable& services);
    // For the rest of the login nothing goes side by side then.
    void GiveWay();
    void GoOnAlone();

    const Credentials credentials_;
    const std::string ip_;
    const std::uint16_t port_;
    const CExtensions extensions_;

    CDigestAnswers digestAnswers_{credentials_};
    CDeviceClock deviceClock_;
    // Who is refused while another thread looks waits for what that finds. Held during two
    // exchanges, before the data lock and those of the two above; never taken by the socket layer's
    // threads.
    CMutex clockReading_;

    mutable CMutex dataLock_;  // leaf
    ServiceTable services_ GUARDED_BY(dataLock_);
    // Known beside the table: GetServices never yields it.
    std::optional<std::string> eventsPath_ GUARDED_BY(dataLock_);
    std::shared_ptr<const ProfileList> profiles_ GUARDED_BY(dataLock_) =
        std::make_shared<ProfileList>();
    bool hasMedia2_ GUARDED_BY(dataLock_) = false;
    CDigestAnswers::Answer pullAnswer_ GUARDED_BY(dataLock_);  // of the last pull

    // Written by the login only, before other threads see the session.
    std::optional<PtzRanges> ptzRanges_;
    std::optional<FocusSpeedRange> focusSpeedRange_;
    EventCapabilities eventCapabilities_;
    bool loggedIn_ = false;
    bool sideBySide_ = IsQuick();
    std::optional<CLoginPatience> patience_;  // nothing but during the login

    /// What is known of the device's kept connections.
    enum class KeptTrust : std::uint8_t {
        kUntried,
        kProven,   // it has answered over one
        kRefused,  // it has failed at the first: no more are kept
    };
    std::atomic<KeptTrust> keptTrust_ = KeptTrust::kUntried;
    const CKeptConnections kept_;  // none without keep-alive

    std::atomic<bool> digestAsked_ = false;  // for a picture; Basic is not answered any more

    CMutex countLock_;  // behind the registry lock
    int referenceCount_ GUARDED_BY(countLock_) = 1;
};

}  // namespace onvif_client

#endif
