/// @file
/// Result builders of the imaging service.
#ifndef ONVIF_CLIENT_TRANSFORM_IMAGINGRESULTS_H
#define ONVIF_CLIENT_TRANSFORM_IMAGINGRESULTS_H

#include "transform/ResultFrame.h"

namespace onvif_client {

extern const ResultFrame kImageSettingsResult;
/// The tree of the settings, with ranges and lists of values instead of values.
extern const ResultFrame kImageOptionsResult;

}  // namespace onvif_client

#endif
