#include <utility>

#include "camera_sim/CameraCore.h"
#include "camera_sim/CameraSim.h"

namespace camera_sim {

CCamera::CCamera(std::unique_ptr<CCameraCore> core) : core_(std::move(core)) {}
CCamera::~CCamera() = default;

std::uint16_t CCamera::Port() const {
    return core_->Options().port;
}

void CCamera::Inject(std::string operation, Fault fault) {
    core_->Inject({std::move(operation), std::move(fault)});
}

void CCamera::ClearFaults() {
    core_->ClearFaults();
}
std::vector<PlannedFault> CCamera::Faults() const {
    return core_->Faults();
}
bool CCamera::Spoil(const Spoiling& spoiling) {
    return core_->Spoil(spoiling);
}
std::uint64_t CCamera::Count(std::string_view operation) const {
    return core_->Count(operation);
}
std::vector<RecordedRequest> CCamera::Requests() const {
    return core_->Requests();
}
void CCamera::ClearEvidence() {
    core_->ClearEvidence();
}
CameraState CCamera::State() const {
    return core_->State();
}

void CCamera::Change(const std::function<void(CameraState&)>& change) {
    core_->Change(change);
}

std::vector<SubscriptionInfo> CCamera::Subscriptions() const {
    return core_->Subscriptions();
}
void CCamera::Reboot() {
    core_->Reboot();
}

}  // namespace camera_sim
