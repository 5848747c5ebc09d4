/// @file
/// The alarms of many cameras at an MQTT broker, and commands from there to the cameras.
///
/// What is retained tells the present state of each camera, and what keeps it true is this:
/// - Each retained state expires at the broker after some time, E, and is published again three
///   times in it. So nothing that a bridge has left behind outlives it by more than E.
/// - The bridge's own "availability" is one of them, and "offline" as its last will. A broker that
///   hears nothing from a bridge for E (one and a half times the keep-alive) publishes the will; it
///   does so at once when the system closes the connection, as it does for a process that was
///   killed. States count for those who read them only as long as bridge and camera are "online".
/// - A bridge that begins is not "online" before it has taken from the broker what is retained of
///   inputs and relays of its cameras and is not known to be true (kReconciles).
/// - A state is there as long as it is known: when a camera is lost, its states are taken away
///   behind its "offline"; they begin anew before its "online".
/// - While the broker is away, the latest state of each topic is remembered, and all of them go to
///   each new connection. Nothing else is: no answers, no notifications, no pictures.
///
/// The main thread alone has all of that (CBridge). The observers' callbacks leave news (WatchNews)
/// and wake it, as do the broker's thread (Broker.h) and those that run commands (CameraWork).
/// Nobody ever waits for the broker.
#ifndef ONVIFCTL_BRIDGE_BRIDGE_H
#define ONVIFCTL_BRIDGE_BRIDGE_H

#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Connection.h"
#include "ExitCode.h"
#include "bridge/Broker.h"
#include "bridge/CameraWork.h"
#include "bridge/RetainedStates.h"
#include "bridge/Topics.h"
#include "watch/AlarmWatch.h"

namespace onvifctl {

struct BridgeOptions {
    BrokerOptions broker;  // the will is the bridge's business
    std::string prefix;
    std::string discoveryPrefix;  // empty: no discovery messages
    bool raw = false;
    unsigned int number = 1;  // among the bridges
    std::chrono::seconds expiry{30};
};

/// For one thread.
class CBridge {
 public:
    /// @param cameras  those of this bridge alone, maybe none; passwords included.
    /// @param wake     is called, on any thread, when Advance is to be called.
    CBridge(const BridgeOptions& options, const std::vector<ConnectionOptions>& cameras,
            const std::function<void()>& wake);
    ~CBridge();
    CBridge(const CBridge&) = delete;
    CBridge& operator=(const CBridge&) = delete;

    /// Does what there is to do, without waiting for anything. @return until when nothing else has
    /// to be done unless it is woken.
    CRetainedStates::Clock::time_point Advance();

    /// Takes the states from the broker, says that bridge and cameras are offline and ends the
    /// connection. @p pause waits for a while or for a wake.
    /// @return false when the broker's thread cannot be ended: the process has to.
    bool End(const std::function<void(std::chrono::milliseconds)>& pause);

    /// The worst of how the cameras fared last.
    ExitCode Worst() const { return watch_ ? watch_->Worst() : ExitCode::kDone; }

 private:
    using Clock = CRetainedStates::Clock;

    enum class Phase {
        kAway,        // no connection, or one that has ended
        kReconciles,  // for the first connection alone
        kThere,
    };
    struct Camera {
        std::string name;
        std::set<std::string> states = {"motion"};  // and "input/1", "relay/2" ...
        bool online = false;
        bool inventoryAsked = false;
    };

    void TakeBrokerNews();
    void Connected();
    void TakeDelivery(const Delivery& delivery);
    void FinishReconciling();
    void Order(const BridgeCommand& command, std::size_t camera, const Delivery& delivery);

    void TakeCameraNews();
    void Note(const ConnectionChange& change);
    void Note(const AlarmChange& change);
    void Note(const DeviceEvent&) {}
    void BeginStates(std::size_t camera);
    void EndStates(Camera& camera);
    void TakeWorkDone();
    void TakeInventory(Camera& camera, const Inventory& inventory);

    void Set(const Camera& camera, const std::string& rest, const std::string& payload,
             CRetainedStates::Order order = CRetainedStates::Order::kAny);
    void Answer(const CameraJob& job, const std::string& error);
    void Reply(Publication answer);
    void Pump();
    std::optional<Publication> NextEvent();

    const BridgeOptions options_;
    const CTopics topics_;
    const std::string availability_;  // topics of the bridge's own
    const std::string marker_;
    std::vector<Camera> cameras_;
    std::map<std::string, std::size_t> places_;  // by the level of their topics
    CRetainedStates states_;
    std::deque<Publication> answers_;
    std::size_t answerBytes_ = 0;
    std::deque<News> events_;
    Phase phase_ = Phase::kAway;
    bool reconciled_ = false;
    bool ends_ = false;
    std::string brokerTrouble_;  // that has been told
    Clock::time_point reconcilesUntil_;
    std::unique_ptr<IBroker> broker_;
    std::unique_ptr<CCameraWork> work_;  // ends after the library has been stopped
    std::optional<CAlarmWatch> watch_;
};

}  // namespace onvifctl

#endif
