/// @file
/// A camera without its sockets: takes requests, keeps state, faults and evidence.
#ifndef CAMERA_SIM_CAMERACORE_H
#define CAMERA_SIM_CAMERACORE_H

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "camera_sim/Authentication.h"
#include "camera_sim/CameraSim.h"
#include "camera_sim/FaultPlan.h"
#include "camera_sim/Http.h"
#include "camera_sim/HttpAuthentication.h"
#include "camera_sim/Operations.h"

namespace camera_sim {

/// Any thread may call any operation.
class CameraCore {
 public:
    using Counters = std::map<std::string, std::uint64_t, std::less<>>;

    /// @p options must be complete, @p style must outlive the camera.
    CameraCore(CameraOptions options, CameraState state, const PrefixStyle& style);

    /// What the camera answers to a request for one of its services.
    Reply Handle(HttpRequest request);

    const CameraOptions& Options() const { return options_; }
    void Inject(PlannedFault fault);
    void ClearFaults();
    std::vector<PlannedFault> Faults() const;
    std::uint64_t Count(std::string_view operation) const;
    /// By qualified operation ("tds:GetServices"), "*" for all together.
    Counters AllCounts() const;
    std::vector<RecordedRequest> Requests() const;
    void ClearEvidence();
    CameraState State() const;
    void Change(const std::function<void(CameraState&)>& change);

 private:
    /// A request as far as it could be read.
    struct Understood {
        SoapRequest soap;
        std::string_view method;
        std::string_view path;
        std::optional<Ns> ns;
        std::string_view service;
        std::string_view operation;
        Credentials credentials;
        bool isSnapshot = false;
        bool staleNonce = false;  ///< of a snapshot's credentials
    };

    void CheckCredentialsLocked(const HttpRequest& http, Understood& request);
    Reply AnswerSnapshotLocked(const Understood& request);

    Reply AnswerLocked(const Understood& request, bool xmlProlog);
    Reply DisturbLocked(const Understood& request, const Fault& fault);
    /// Runs the operation; @p out holds the body of the answer when there is no fault.
    Answer RunLocked(const Understood& request, XmlWriter& out);
    Reply FaultReply(const SoapFault& fault, bool xmlProlog) const;
    bool ServedAt(Ns ns, std::string_view path) const;
    bool IsServicePath(std::string_view path) const;
    void CountLocked(const Understood& request);
    void RecordLocked(RecordedRequest request);

    const CameraOptions options_;
    const PrefixStyle& style_;

    mutable std::mutex lock_;  // guards everything below; leaf
    CameraState state_;
    Authenticator authenticator_;
    HttpAuthenticator snapshotAuthenticator_;
    FaultPlan faults_;
    Counters counters_;
    std::deque<RecordedRequest> requests_;
    std::size_t recordedBytes_ = 0;
};

}  // namespace camera_sim

#endif
