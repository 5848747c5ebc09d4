/// @file
/// The cameras that can be simulated.
#ifndef CAMERA_SIM_MODELS_H
#define CAMERA_SIM_MODELS_H

#include <optional>

#include "camera_sim/state/CameraOptions.h"
#include "camera_sim/state/CameraState.h"

namespace camera_sim {

/// The state in which a camera starts, and @p options completed by what the model has. Nothing
/// when there is no such model.
std::optional<CameraState> MakeModel(CameraOptions& options);

}  // namespace camera_sim

#endif
