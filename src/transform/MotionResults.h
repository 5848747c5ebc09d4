/// @file
/// Result builders of the analytics service: cell motion detection.
#ifndef ONVIF_CLIENT_TRANSFORM_MOTIONRESULTS_H
#define ONVIF_CLIENT_TRANSFORM_MOTIONRESULTS_H

#include "transform/ResultFrame.h"

namespace onvif_client {

/// The module: sensitivity and cell layout. Shows the token that was asked about.
extern const ResultFrame kMotionModuleResult;
/// The rule: the watched cells, drawn by the layout that the module's result left in the document.
extern const ResultFrame kMotionRuleResult;

}  // namespace onvif_client

#endif
