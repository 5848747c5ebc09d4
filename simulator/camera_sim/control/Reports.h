/// @file
/// What the control requests tell of a camera, as JSON texts. Bytes of a camera's texts that are
/// not UTF-8 become U+FFFD.
#ifndef CAMERA_SIM_CONTROL_REPORTS_H
#define CAMERA_SIM_CONTROL_REPORTS_H

#include <string>

#include "camera_sim/control/ControlledCamera.h"

namespace camera_sim {

std::string ReportState(const IControlledCamera& camera);
std::string ReportCounters(const IControlledCamera& camera);
std::string ReportRequests(const IControlledCamera& camera);
std::string ReportFaults(const IControlledCamera& camera);
std::string ReportSubscriptions(const IControlledCamera& camera);

}  // namespace camera_sim

#endif
