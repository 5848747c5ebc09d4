/// @file
/// The forms in which devices send a reply.
#ifndef CAMERA_SIM_HTTP_FRAMING_H
#define CAMERA_SIM_HTTP_FRAMING_H

#include <chrono>

#include "camera_sim/http/Http.h"
#include "camera_sim/state/CameraOptions.h"

namespace camera_sim {

/// Gives a reply of HttpReply the form that the options ask for; others stay as they are.
/// @param clientKeeps whether the request permits that the connection stays open
/// @param now the camera's time
void Frame(Reply& reply, const CameraOptions& options, bool clientKeeps,
           std::chrono::sys_seconds now);

}  // namespace camera_sim

#endif
