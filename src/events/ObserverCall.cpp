#include "events/ObserverCall.h"

#include "common/LogText.h"
#include "onvif_client/OnvifClient.h"

namespace onvif_client {

namespace {

template <typename Call>
void Guarded(const std::string& device, const Call& call) noexcept {
    try {
        call();
    } catch (...) {
        LogAssert(loglabel::kOnvifEvent, "an observer threw", device);
    }
}

}  // namespace

void CObserverCall::Motion(bool state) const noexcept {
    if (observer_ != nullptr) {
        Guarded(device_, [&] { observer_->OnMotionAlarmState(loginId_, state); });
    }
}

void CObserverCall::AlarmInput(std::uint32_t number, bool state) const noexcept {
    if (observer_ != nullptr) {
        Guarded(device_, [&] { observer_->OnAlarmInState(loginId_, number, state); });
    }
}

}  // namespace onvif_client
