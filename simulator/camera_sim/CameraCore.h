/// @file
/// A camera without its sockets: takes requests, keeps state, faults and evidence.
#ifndef CAMERA_SIM_CAMERACORE_H
#define CAMERA_SIM_CAMERACORE_H

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "camera_sim/Evidence.h"
#include "camera_sim/FaultPlan.h"
#include "camera_sim/control/ControlledCamera.h"
#include "camera_sim/discovery/Probes.h"
#include "camera_sim/events/EventHub.h"
#include "camera_sim/hostile/Spoiler.h"
#include "camera_sim/http/Http.h"
#include "camera_sim/http/HttpAuthentication.h"
#include "camera_sim/services/Operation.h"
#include "camera_sim/soap/Authentication.h"
#include "camera_sim/soap/Namespaces.h"
#include "camera_sim/soap/SoapRequest.h"
#include "camera_sim/soap/XmlWriter.h"

namespace camera_sim {

/// Any thread may call any operation.
class CCameraCore final : public IControlledCamera {
 public:
    /// @p options must be complete, @p style must outlive the camera.
    CCameraCore(CameraOptions options, CameraState state, const PrefixStyle& style);

    /// What the camera does to the world by itself. Called with the camera's lock held, from any
    /// thread: they must neither wait nor call the camera.
    struct Outlets {
        std::function<void()> dropConnections;
        /// Sends an HTTP request body and calls NotificationSent.
        std::function<void(std::uint64_t subscription, NotifyTarget target, std::string body)>
            notify;
    };
    /// Must come before everything else.
    void Attach(Outlets outlets) { outlets_ = std::move(outlets); }

    /// How a new connection ends before its request is read, if it does.
    std::optional<Reply::Ending> EndingAtConnection();
    /// What the camera answers to a request for one of its services. @p wake is called, from any
    /// thread and with the camera's lock held, when a deferred reply may be ready; it must neither
    /// wait nor call the camera.
    Reply Handle(HttpRequest request, std::function<void()> wake);
    /// The reply that was deferred; it may be deferred again.
    Reply Resume(std::uint64_t ticket);
    /// Nobody waits for that reply any more.
    void Abandon(std::uint64_t ticket);
    /// What the camera answers when devices are searched for, if anything.
    std::optional<std::string> AnswerProbe(const CProbe& probe, AppSequence sequence);
    void NotificationSent(std::uint64_t subscription, bool accepted);

    const CameraOptions& Options() const override { return options_; }
    void Inject(PlannedFault fault) override;
    void ClearFaults() override;
    std::vector<PlannedFault> Faults() const override;
    Counters AllCounts() const override;
    std::vector<RecordedRequest> Requests() const override;
    void ClearEvidence() override;
    CameraState State() const override;
    void Change(const std::function<void(CameraState&)>& change) override;
    std::vector<SubscriptionInfo> Subscriptions() const override;
    void Reboot() override;

    /// False when there is no such kind.
    bool Spoil(const Spoiling& spoiling);
    /// @p operation as in PlannedFault.
    std::uint64_t Count(std::string_view operation) const;

 private:
    /// A request as far as it could be read.
    struct Understood {
        explicit Understood(const HttpRequest& request);

        CSoapRequest soap;
        std::string_view method;
        std::string_view path;
        std::optional<Ns> ns;
        std::string_view service;
        std::string_view operation;
        Credentials credentials;
        bool isSnapshot = false;
        bool keepAlive = false;
        bool staleNonce = false;  ///< of HTTP credentials
    };

    struct Deferred {
        PullWait pull;
        std::optional<Fault> fault;  ///< meets the reply
        bool keepAlive = false;
        std::function<void()> wake;
        std::uint64_t record = 0;
    };

    void CheckCredentialsLocked(const HttpRequest& http, Understood& request);
    Reply AnswerSnapshotLocked(const Understood& request);
    /// A bare 401 that asks for HTTP credentials.
    Reply ChallengeLocked(CHttpAuthenticator& authenticator, const Understood& request);
    /// Whether the credentials, or the lack of them, permit the operation.
    bool IsAdmittedLocked(const Understood& request) const;
    /// Whether the operation needs no credentials.
    bool IsOpen(std::string_view operation) const;

    Reply AnswerLocked(const Understood& request, bool xmlProlog);
    Reply DeferLocked(PullWait pull);
    Reply ResumeLocked(std::uint64_t ticket);
    Reply PulledLocked(const PullWait& pull, Subscription& subscription, bool xmlProlog);
    /// Queues the messages for what has changed and sees to it that they are delivered.
    void PublishLocked();
    void NotifyLocked(Subscription& subscription);
    /// The reply to the request that asked for it is still sent.
    void RebootLocked();
    void FrameLocked(Reply& reply, bool clientKeeps) const;
    Reply DisturbLocked(const Understood& request, const Fault& fault);
    /// Runs the operation; @p out holds the body of the answer when there is no fault.
    Answer RunLocked(const Understood& request, CXmlWriter& out, std::optional<PullWait>& wait);
    Reply FaultReply(const SoapFault& fault, bool xmlProlog) const;

    const CameraOptions options_;
    const PrefixStyle& style_;
    Outlets outlets_;

    mutable std::mutex lock_;  // guards everything below; leaf
    CameraState state_;
    CAuthenticator authenticator_;
    CHttpAuthenticator httpAuthenticator_;
    CHttpAuthenticator snapshotAuthenticator_;
    CFaultPlan faults_;
    CSpoiler spoiler_;
    CEvidence evidence_;
    mutable CEventHub events_;  // drops expired subscriptions whenever it is asked
    std::map<std::uint64_t, Deferred> deferred_;  // by ticket, oldest first
    std::uint64_t lastTicket_ = 0;
};

/// What a fault does to a reply that is otherwise sent properly.
void DisturbReply(Reply& reply, const Fault& fault);

}  // namespace camera_sim

#endif
