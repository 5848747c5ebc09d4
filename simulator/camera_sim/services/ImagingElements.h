/// @file
/// The imaging settings and their options as elements. Both come from the same tables, so that
/// what the options promise is what a request may set.
#ifndef CAMERA_SIM_SERVICES_IMAGINGELEMENTS_H
#define CAMERA_SIM_SERVICES_IMAGINGELEMENTS_H

#include "camera_sim/services/Operation.h"
#include "camera_sim/state/CameraState.h"

namespace camera_sim {

/// Each writes the content; the element around it is open. Only a source with a motorised focus
/// has a focus to set.
void WriteImagingSettings(CXmlWriter& out, const VideoSource& source);
void WriteImagingOptions(CXmlWriter& out, const VideoSource& source);

/// Takes what @p given has (in any order) over into the settings; the rest stays as it is. With a
/// fault the settings may be changed in part: the caller works on a copy.
Answer ReadImagingSettings(const XmlElement* given, const VideoSource& source,
                           ImagingSettings& settings);

SoapFault InvalidSettings(std::string_view what);

}  // namespace camera_sim

#endif
