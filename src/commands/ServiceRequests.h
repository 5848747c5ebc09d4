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

// PtzRequests.cpp
/// GetConfigurationOptions of the PTZ service.
std::string BuildGetPtzOptions(const std::string& ptzConfigurationToken);

// ImagingRequests.cpp
std::string BuildGetMoveOptions(const std::string& videoSourceToken);

}  // namespace onvif_client

#endif
