/// @file
/// What the operations of both media services share.
#ifndef CAMERA_SIM_SERVICES_MEDIAOPERATIONS_H
#define CAMERA_SIM_SERVICES_MEDIAOPERATIONS_H

#include <string_view>

#include "camera_sim/services/Operation.h"

namespace camera_sim {

/// The profile, or the video encoder, that a request names; null when there is none.
const Profile* FindProfile(const Call& call);
const VideoEncoder* FindEncoder(const Call& call);
SoapFault NoSuchProfile();
SoapFault NoSuchConfiguration();

/// SetVideoEncoderConfiguration of the first and the second media service.
Answer SetVideoEncoder10(Call& call);
Answer SetVideoEncoder20(Call& call);
/// GetSnapshotUri; @p write puts the address where the service has it.
Answer AnswerSnapshotUri(Call& call, void (*write)(CXmlWriter& out, std::string_view uri));

}  // namespace camera_sim

#endif
