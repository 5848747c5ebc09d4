/// @file
/// A camera as the control requests see it: its evidence, its faults, its state.
#ifndef CAMERA_SIM_CONTROL_CONTROLLEDCAMERA_H
#define CAMERA_SIM_CONTROL_CONTROLLEDCAMERA_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "camera_sim/control/Fault.h"
#include "camera_sim/state/CameraOptions.h"
#include "camera_sim/state/CameraState.h"

namespace camera_sim {

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

/// How often operations were asked for, by qualified name ("tds:GetServices"); "*" for all
/// together.
using Counters = std::map<std::string, std::uint64_t, std::less<>>;

/// Any thread may call any operation.
class IControlledCamera {
 public:
    virtual const CameraOptions& Options() const = 0;

    virtual void Inject(PlannedFault fault) = 0;
    virtual void ClearFaults() = 0;
    virtual std::vector<PlannedFault> Faults() const = 0;

    virtual Counters AllCounts() const = 0;
    virtual std::vector<RecordedRequest> Requests() const = 0;
    virtual void ClearEvidence() = 0;

    virtual CameraState State() const = 0;
    virtual void Change(const std::function<void(CameraState&)>& change) = 0;
    virtual std::vector<SubscriptionInfo> Subscriptions() const = 0;
    /// Forgets all subscriptions and drops all connections.
    virtual void Reboot() = 0;

 protected:
    ~IControlledCamera() = default;
};

}  // namespace camera_sim

#endif
