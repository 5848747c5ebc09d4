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

// ImagingRequests.cpp
std::string BuildGetMoveOptions(const std::string& videoSourceToken);

}  // namespace onvif_client

#endif
