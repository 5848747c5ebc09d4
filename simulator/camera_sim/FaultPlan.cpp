#include "camera_sim/FaultPlan.h"

#include <algorithm>
#include <utility>

namespace camera_sim {
namespace {

constexpr std::size_t kMostFaults = 1000;

}  // namespace

void CFaultPlan::Add(PlannedFault fault) {
    if (fault.fault.remaining == 0) {
        return;
    }
    faults_.push_back(std::move(fault));
    if (faults_.size() > kMostFaults) {
        faults_.pop_front();
    }
}

std::optional<Fault> CFaultPlan::Take(std::string_view service, std::string_view operation) {
    const auto planned =
        std::find_if(faults_.begin(), faults_.end(), [&](const PlannedFault& candidate) {
            return MatchesOperation(candidate.operation, service, operation);
        });
    if (planned == faults_.end()) {
        return std::nullopt;
    }
    Fault fault = planned->fault;
    if (planned->fault.remaining > 0 && --planned->fault.remaining == 0) {
        faults_.erase(planned);
    }
    return fault;
}

}  // namespace camera_sim
