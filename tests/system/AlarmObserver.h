/// An application's ear for alarms, which remembers what it hears.
#ifndef ONVIF_CLIENT_TESTS_SYSTEM_ALARMOBSERVER_H
#define ONVIF_CLIENT_TESTS_SYSTEM_ALARMOBSERVER_H

#include <camera_sim/CameraSim.h>

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "onvif_client/OnvifClient.h"
#include "support/Await.h"

namespace client_test {

class CAlarmObserver final : public CONVIFAlarmStateObserver {
 public:
    CAlarmObserver() = default;
    /// @p action runs in every callback, before it is remembered; its argument is the login id.
    explicit CAlarmObserver(std::function<void(unsigned int)> action)
        : action_(std::move(action)) {}

    void OnMotionAlarmState(unsigned int loginId, bool state) override {
        Note(loginId, state ? "M+" : "M-");
    }
    void OnAlarmInState(unsigned int loginId, unsigned int alarmIn, bool state) override {
        Note(loginId, alarmIn != 1 ? "?" : state ? "I+" : "I-");
    }

    /// The changes of a device, in order: "M+I+M-" for motion, an input, and motion that ended. A
    /// state that is told again counts as a call only.
    std::string Heard(unsigned int loginId) const {
        const std::lock_guard guard(lock_);
        const auto found = heard_.find(loginId);
        return found == heard_.end() ? "" : found->second;
    }
    bool Hears(unsigned int loginId, const std::string& changes) const {
        return Await([&] { return Heard(loginId).size() >= changes.size(); }) &&
               Heard(loginId) == changes;
    }

    std::atomic<int> calls = 0;

 private:
    void Note(unsigned int loginId, const std::string& change) {
        ++calls;
        if (action_) {
            action_(loginId);
        }
        const std::lock_guard guard(lock_);
        std::string& last = last_[{loginId, change.front()}];
        if (std::exchange(last, change) != change) {
            heard_[loginId] += change;
        }
    }

    const std::function<void(unsigned int)> action_;
    mutable std::mutex lock_;  // guards the members below; leaf
    std::map<unsigned int, std::string> heard_;
    std::map<std::pair<unsigned int, char>, std::string> last_;
};

inline void SetMotion(camera_sim::CCamera& camera, bool active) {
    camera.Change([active](auto& state) { state.media.videoSources.front().motion = active; });
}

inline void SetInput(camera_sim::CCamera& camera, bool active) {
    camera.Change([active](auto& state) { state.inputs.front().active = active; });
}

}  // namespace client_test

#endif
