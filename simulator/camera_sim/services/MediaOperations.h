/// @file
/// What the operations of both media services share.
#ifndef CAMERA_SIM_SERVICES_MEDIAOPERATIONS_H
#define CAMERA_SIM_SERVICES_MEDIAOPERATIONS_H

#include <string_view>

#include "camera_sim/services/Operation.h"

namespace camera_sim {

/// The profile that a request names; null when there is none.
const Profile* FindProfile(const Call& call);
SoapFault NoSuchProfile();
SoapFault NoSuchConfiguration();

/// SetVideoEncoderConfiguration of the first and the second media service.
Answer SetVideoEncoder10(Call& call);
Answer SetVideoEncoder20(Call& call);
/// GetSnapshotUri and GetStreamUri; @p write puts the address where the service has it.
Answer AnswerSnapshotUri(Call& call, void (*write)(CXmlWriter& out, std::string_view uri));
Answer AnswerStreamUri(Call& call, void (*write)(CXmlWriter& out, std::string_view uri));
/// GetVideoEncoderConfigurationOptions of the encoder that the request names, of the one in the
/// profile that it names, or, naming neither, of the first.
Answer AnswerEncoderOptions(Call& call,
                            void (*write)(CXmlWriter& out, const VideoEncoder& encoder));
/// GetOSD, which only the first service has.
Answer AnswerOsd(Call& call);
/// SetSynchronizationPoint: there are no streams that could begin anew.
Answer AnswerSynchronizationPoint(Call& call);

}  // namespace camera_sim

#endif
