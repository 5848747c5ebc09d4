#include <utility>

#include "camera_sim/CameraCore.h"
#include "camera_sim/CameraSim.h"

namespace camera_sim {

Camera::Camera(std::unique_ptr<CameraCore> core) : core_(std::move(core)) {}
Camera::~Camera() = default;

std::uint16_t Camera::Port() const {
    return core_->Options().port;
}

void Camera::Inject(std::string operation, Fault fault) {
    core_->Inject({std::move(operation), std::move(fault)});
}

void Camera::ClearFaults() {
    core_->ClearFaults();
}
std::vector<PlannedFault> Camera::Faults() const {
    return core_->Faults();
}
std::uint64_t Camera::Count(std::string_view operation) const {
    return core_->Count(operation);
}
std::vector<RecordedRequest> Camera::Requests() const {
    return core_->Requests();
}
void Camera::ClearEvidence() {
    core_->ClearEvidence();
}
CameraState Camera::State() const {
    return core_->State();
}

void Camera::Change(const std::function<void(CameraState&)>& change) {
    core_->Change(change);
}

std::vector<SubscriptionInfo> Camera::Subscriptions() const {
    return core_->Subscriptions();
}
void Camera::Reboot() {
    core_->Reboot();
}

}  // namespace camera_sim
