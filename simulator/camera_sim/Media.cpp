// Media service, first version.
#include <array>

#include "camera_sim/MediaElements.h"
#include "camera_sim/Operations.h"

namespace camera_sim {
namespace {

using Scope = XmlWriter::Scope;

constexpr std::string_view kSessionTimeout = "PT60S";

void WriteVideoEncoder(XmlWriter& out, std::string_view name, const Media& media,
                       const VideoEncoder& encoder) {
    // This version knows nothing newer than H.264.
    const bool jpeg = encoder.encoding == "JPEG";
    const Scope element(out, Ns::kSchema, name);
    WriteEntityToken(out, encoder.token);
    WriteEntityName(out, encoder.name, UseCount(media, &Profile::videoEncoder, encoder.token));
    out.Element(Ns::kSchema, "Encoding", jpeg ? "JPEG" : "H264");
    WriteResolution(out, encoder.resolution);
    out.Element(Ns::kSchema, "Quality", encoder.quality);
    {
        const Scope rate(out, Ns::kSchema, "RateControl");
        out.Element(Ns::kSchema, "FrameRateLimit", encoder.frameRate);
        out.Element(Ns::kSchema, "EncodingInterval", 1);
        out.Element(Ns::kSchema, "BitrateLimit", encoder.bitrate);
    }
    if (!jpeg) {
        const Scope h264(out, Ns::kSchema, "H264");
        out.Element(Ns::kSchema, "GovLength", encoder.govLength);
        out.Element(Ns::kSchema, "H264Profile", encoder.profile);
    }
    WriteMulticast(out, encoder.multicast);
    out.Element(Ns::kSchema, "SessionTimeout", kSessionTimeout);
}

void WriteAudioEncoder(XmlWriter& out, std::string_view name, const Media& media,
                       const AudioEncoder& encoder) {
    const Scope element(out, Ns::kSchema, name);
    WriteEntityToken(out, encoder.token);
    WriteEntityName(out, encoder.name, UseCount(media, &Profile::audioEncoder, encoder.token));
    out.Element(Ns::kSchema, "Encoding", encoder.encoding);
    out.Element(Ns::kSchema, "Bitrate", encoder.bitrate);
    out.Element(Ns::kSchema, "SampleRate", encoder.sampleRate);
    WriteMulticast(out, encoder.multicast);
    out.Element(Ns::kSchema, "SessionTimeout", kSessionTimeout);
}

Answer GetProfiles(Call& call) {
    const Media& media = call.state.media;
    XmlWriter& out = call.out;
    for (const Profile& profile : media.profiles) {
        const Scope element(out, Ns::kMedia, "Profiles");
        out.Attribute("token", profile.token);
        out.Attribute("fixed", profile.fixed);
        out.Element(Ns::kSchema, "Name", profile.name);
        if (const auto* source = FindByToken(media.videoSourceConfigurations, profile.videoSource))
            WriteVideoSource(out, Ns::kSchema, "VideoSourceConfiguration", media, *source);
        if (const auto* source = FindByToken(media.audioSourceConfigurations, profile.audioSource))
            WriteAudioSource(out, Ns::kSchema, "AudioSourceConfiguration", media, *source);
        if (const auto* encoder = FindByToken(media.videoEncoders, profile.videoEncoder))
            WriteVideoEncoder(out, "VideoEncoderConfiguration", media, *encoder);
        if (const auto* encoder = FindByToken(media.audioEncoders, profile.audioEncoder))
            WriteAudioEncoder(out, "AudioEncoderConfiguration", media, *encoder);
        const auto* analytics = FindByToken(media.analytics, profile.analytics);
        if (analytics != nullptr && call.options.analytics)
            WriteAnalytics(out, Ns::kSchema, "VideoAnalyticsConfiguration", media, *analytics);
        const auto* ptz = FindByToken(media.ptz, profile.ptz);
        if (ptz != nullptr && Offers(call.options, Ns::kPtz))
            WritePtz(out, Ns::kSchema, "PTZConfiguration", media, *ptz);
        if (const auto* metadata = FindByToken(media.metadata, profile.metadata))
            WriteMetadata(out, Ns::kSchema, "MetadataConfiguration", media, *metadata);
    }
    return kDone;
}

constexpr std::array kOperations = {
    Operation{"GetProfiles", GetProfiles},
};

}  // namespace

std::span<const Operation> MediaOperations() {
    return kOperations;
}

}  // namespace camera_sim
