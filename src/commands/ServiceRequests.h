/// @file
/// Request builders of the media, PTZ and imaging services.
#ifndef ONVIF_CLIENT_COMMANDS_SERVICEREQUESTS_H
#define ONVIF_CLIENT_COMMANDS_SERVICEREQUESTS_H

#include <string>

#include "commands/CommandRequest.h"

namespace onvif_client {

// MediaRequests.cpp
std::string BuildGetProfiles10(const CommandRequest&);
std::string BuildGetProfiles20(const CommandRequest&);
std::string BuildGetStreamUri(const CommandRequest& request);
// The following are sent once per profile chosen: CommandRequest::profile is there.
std::string BuildGetProfile(const CommandRequest& request);
std::string BuildGetVideoEncoder(const CommandRequest& request);
std::string BuildGetVideoEncoderOptions10(const CommandRequest& request);
std::string BuildGetVideoEncoderOptions20(const CommandRequest& request);

// PtzRequests.cpp
/// GetConfigurationOptions of the PTZ service.
std::string BuildGetPtzOptions(const std::string& ptzConfigurationToken);
/// Percents of the full speed become velocities in the device's ranges.
std::string BuildContinuousMove(const CommandRequest& request);
std::string BuildPtzStop(const CommandRequest& request);
std::string BuildPtz3dControl(const CommandRequest& request);

// PresetRequests.cpp: presets, and tours from one to the next ("cruises")
std::string BuildGetPresets(const CommandRequest& request);
std::string BuildAddPreset(const CommandRequest& request);
std::string BuildModifyPresetName(const CommandRequest& request);
std::string BuildRemovePreset(const CommandRequest& request);
std::string BuildGotoPreset(const CommandRequest& request);
std::string BuildGetCruises(const CommandRequest& request);
std::string BuildAddCruise(const CommandRequest& request);
std::string BuildModifyCruise(const CommandRequest& request);
std::string BuildDelCruise(const CommandRequest&);
std::string BuildStartCruise(const CommandRequest& request);
std::string BuildStopCruise(const CommandRequest& request);
std::string BuildPauseCruise(const CommandRequest& request);

// ImagingRequests.cpp
std::string BuildGetMoveOptions(const std::string& videoSourceToken);

}  // namespace onvif_client

#endif
