/// @file
/// The control requests: the camera's evidence, faults and clock over HTTP.
#ifndef CAMERA_SIM_CONTROL_CONTROL_H
#define CAMERA_SIM_CONTROL_CONTROL_H

#include <string_view>

#include "camera_sim/control/ControlledCamera.h"
#include "camera_sim/http/Http.h"

namespace camera_sim {

bool IsControlRequest(std::string_view target);
Reply HandleControl(IControlledCamera& camera, const HttpRequest& request);
/// What GET /control/ answers.
std::string_view ControlHelp();

}  // namespace camera_sim

#endif
