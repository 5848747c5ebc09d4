#include "camera_sim/services/MediaOperations.h"

#include "camera_sim/services/Services.h"

namespace camera_sim {

const Profile* FindProfile(const Call& call) {
    return FindByToken(call.state.media.profiles, call.Argument("ProfileToken"));
}

SoapFault NoSuchProfile() {
    return InvalidArgument("NoProfile", "No such profile");
}

SoapFault NoSuchConfiguration() {
    return InvalidArgument("NoConfig", "No such configuration");
}

Answer AnswerStreamUri(Call& call, void (*write)(CXmlWriter& out, std::string_view uri)) {
    const Profile* profile = FindProfile(call);
    if (profile == nullptr) {
        return NoSuchProfile();
    }
    int port = 554;
    for (const NetworkProtocol& each : call.state.network.protocols) {
        if (each.name == "RTSP" && !each.ports.empty()) {
            port = each.ports.front();
        }
    }
    write(call.out, "rtsp://127.0.0.1:" + std::to_string(port) + "/stream/" + profile->token);
    return kDone;
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

Answer AnswerEncoderOptions(Call& call,
                            void (*write)(CXmlWriter& out, const VideoEncoder& encoder)) {
    const auto& encoders = call.state.media.videoEncoders;
    const VideoEncoder* encoder = encoders.empty() ? nullptr : &encoders.front();
    if (Child(&call.request, "ConfigurationToken") != nullptr) {
        encoder = FindByToken(encoders, call.Argument("ConfigurationToken"));
    } else if (Child(&call.request, "ProfileToken") != nullptr) {
        const Profile* profile = FindProfile(call);
        if (profile == nullptr) {
            return NoSuchProfile();
        }
        encoder = FindByToken(encoders, profile->videoEncoder);
    }
    if (encoder == nullptr) {
        return NoSuchConfiguration();
    }
    write(call.out, *encoder);
    return kDone;
}

Answer AnswerSynchronizationPoint(Call& call) {
    return FindProfile(call) == nullptr ? Answer(NoSuchProfile()) : kDone;
}

}  // namespace camera_sim
