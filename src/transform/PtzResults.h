/// @file
/// Result builders of the PTZ service.
#ifndef ONVIF_CLIENT_TRANSFORM_PTZRESULTS_H
#define ONVIF_CLIENT_TRANSFORM_PTZRESULTS_H

#include "transform/ResultFrame.h"

namespace onvif_client {

extern const ResultFrame kPresetsResult;
extern const ResultFrame kCruisesResult;
extern const ResultFrame kAddPresetResult;
extern const ResultFrame kAddCruiseResult;

}  // namespace onvif_client

#endif
