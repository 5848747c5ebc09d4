/// @file
/// A simulated ONVIF camera behind a real HTTP server on 127.0.0.1, for tests, benchmarks and
/// trials.
///
///     camera_sim::CCameraHost host;
///     camera_sim::CCamera& camera = host.Add({.model = "fixed"});
///     ... talk to 127.0.0.1:camera.Port() ...
///     camera.Inject("GetProfiles", {.kind = camera_sim::Fault::Kind::kClose, .remaining = 2});
///
/// The camera checks authentication by itself, answers with documents that the official schemas
/// accept and does not validate what it receives beyond what it needs. A refused change leaves its
/// state as it was. Every answer ends its connection. Besides the services under /onvif/ it serves
/// a picture of each profile under /snapshot/ and control requests under /control/, which GET
/// /control/ lists. Once its host answers probes, it is found by those who search for devices.
///
/// Threads: everything here may be called from any thread, except the destruction of a CCameraHost,
/// which must be the last call to it and its cameras.
#ifndef CAMERA_SIM_CAMERASIM_H
#define CAMERA_SIM_CAMERASIM_H

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "camera_sim/control/ControlledCamera.h"
#include "camera_sim/control/Fault.h"
#include "camera_sim/hostile/Spoiler.h"
#include "camera_sim/state/CameraOptions.h"
#include "camera_sim/state/CameraState.h"

namespace camera_sim {

class CCameraCore;

/// Made by CCameraHost.
class CCamera {
 public:
    explicit CCamera(std::unique_ptr<CCameraCore> core);
    ~CCamera();
    CCamera(const CCamera&) = delete;
    CCamera& operator=(const CCamera&) = delete;

    std::uint16_t Port() const;

    /// Adds a fault. Of several that meet a request the oldest takes effect, alone.
    void Inject(std::string operation, Fault fault);
    void ClearFaults();
    std::vector<PlannedFault> Faults() const;

    /// From now on whole replies are spoiled as bytes on their way out, after any fault; the kind
    /// "none" ends it. Replies to control requests stay as they are, but not their connections.
    /// False, and nothing changes, when there is no such kind.
    bool Spoil(const Spoiling& spoiling);

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
    std::unique_ptr<CCameraCore> core_;
};

/// Where probes for cameras are taken. Those to the group come from the interface's network, on the
/// loopback interface from this machine alone.
struct DiscoveryOptions {
    std::uint16_t port = 0;                    ///< of 127.0.0.1; 0: the system chooses
    bool joinsGroup = false;                   ///< also those to 239.255.255.250:3702
    std::string groupInterface = "127.0.0.1";  ///< the dotted address of an interface
};

/// Owns cameras and the one thread that serves them.
class CCameraHost {
 public:
    CCameraHost();
    /// Ends everything at once, whatever clients wait for.
    ~CCameraHost();
    CCameraHost(const CCameraHost&) = delete;
    CCameraHost& operator=(const CCameraHost&) = delete;

    /// Starts a camera; it lives as long as the host. Null on failure (unknown model or prefix
    /// style, line break in the realm, port in use); @p error then says why.
    CCamera* TryAdd(CameraOptions options, std::string& error);
    /// The same for tests: a failure is thrown as std::runtime_error.
    CCamera& Add(CameraOptions options);

    /// From now on all cameras, later ones too, answer Probe and Resolve of WS-Discovery. Returns
    /// the UDP port; nothing on failure, and @p error says why.
    std::optional<std::uint16_t> TryAnswerProbes(const DiscoveryOptions& options,
                                                 std::string& error);
    /// The same for tests: a failure is thrown as std::runtime_error.
    std::uint16_t AnswerProbes(const DiscoveryOptions& options = {});

 private:
    class CImpl;
    std::unique_ptr<CImpl> impl_;
};

}  // namespace camera_sim

#endif
