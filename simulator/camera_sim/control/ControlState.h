/// @file
/// Parts of what GET /control/state tells.
#ifndef CAMERA_SIM_CONTROL_CONTROLSTATE_H
#define CAMERA_SIM_CONTROL_CONTROLSTATE_H

#include "camera_sim/control/JsonWriter.h"
#include "camera_sim/state/CameraState.h"

namespace camera_sim {

/// Each writes one array: the image settings of every video source, the texts on the picture, the
/// motion modules and rules, with the cells a text a row ('#': active).
void WriteImaging(JsonWriter& json, const Media& media);
void WriteOsds(JsonWriter& json, const Media& media);
void WriteMotion(JsonWriter& json, const Media& media);

}  // namespace camera_sim

#endif
