/// @file
/// The misbehaviours that wait for requests.
#ifndef CAMERA_SIM_FAULTPLAN_H
#define CAMERA_SIM_FAULTPLAN_H

#include <deque>
#include <optional>
#include <string_view>
#include <vector>

#include "camera_sim/control/Fault.h"

namespace camera_sim {

/// Faults in the order of injection; the oldest go when there are too many. Not safe for use by
/// several threads at once.
class CFaultPlan {
 public:
    void Add(PlannedFault fault);
    void Clear() { faults_.clear(); }
    std::vector<PlannedFault> List() const { return {faults_.begin(), faults_.end()}; }
    /// The oldest fault for that operation, counted as used.
    std::optional<Fault> Take(std::string_view service, std::string_view operation);

 private:
    std::deque<PlannedFault> faults_;
};

}  // namespace camera_sim

#endif
