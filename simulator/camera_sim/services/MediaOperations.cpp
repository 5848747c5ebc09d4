#include "camera_sim/services/MediaOperations.h"

#include "camera_sim/services/Services.h"

namespace camera_sim {

const Profile* FindProfile(const Call& call) {
    return FindByToken(call.state.media.profiles, call.Argument("ProfileToken"));
}

const VideoEncoder* FindEncoder(const Call& call) {
    return FindByToken(call.state.media.videoEncoders, call.Argument("ConfigurationToken"));
}

SoapFault NoSuchProfile() {
    return InvalidArgument("NoProfile", "No such profile");
}

SoapFault NoSuchConfiguration() {
    return InvalidArgument("NoConfig", "No such configuration");
}

Answer AnswerSnapshotUri(Call& call, void (*write)(CXmlWriter& out, std::string_view uri)) {
    const Profile* profile = FindProfile(call);
    if (profile == nullptr) {
        return NoSuchProfile();
    }
    if (profile->videoEncoder.empty()) {
        return IncompleteProfile();
    }
    write(call.out, AdvertisedSnapshot(call.options, *profile));
    return kDone;
}

}  // namespace camera_sim
