// Media service, first version.
#include <array>

#include "camera_sim/services/MediaElements.h"
#include "camera_sim/services/MediaOperations.h"
#include "camera_sim/services/Services.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

constexpr std::string_view kSessionTimeout = "PT60S";

void WriteVideoEncoder(CXmlWriter& out, Ns ns, std::string_view name, const Media& media,
                       const VideoEncoder& encoder) {
    // This version knows nothing newer than H.264.
    const bool newer = encoder.encoding == "H265";
    const std::string_view encoding = newer ? "H264" : std::string_view(encoder.encoding);
    const Scope element(out, ns, name);
    WriteEntityToken(out, encoder.token);
    WriteEntityName(out, encoder.name, UseCount(media, &Profile::videoEncoder, encoder.token));
    out.Element(Ns::kSchema, "Encoding", encoding);
    WriteResolution(out, encoder.resolution);
    out.Element(Ns::kSchema, "Quality", encoder.quality);
    {
        const Scope rate(out, Ns::kSchema, "RateControl");
        out.Element(Ns::kSchema, "FrameRateLimit", encoder.frameRate);
        out.Element(Ns::kSchema, "EncodingInterval", encoder.encodingInterval);
        out.Element(Ns::kSchema, "BitrateLimit", encoder.bitrate);
    }
    if (encoding != "JPEG") {
        const Scope codec(out, Ns::kSchema, encoding);
        out.Element(Ns::kSchema, "GovLength", encoder.govLength);
        out.Element(Ns::kSchema, encoding == "H264" ? "H264Profile" : "Mpeg4Profile",
                    encoder.profile);
    }
    WriteMulticast(out, encoder.multicast);
    out.Element(Ns::kSchema, "SessionTimeout", encoder.sessionTimeout);
}

void WriteAudioEncoder(CXmlWriter& out, std::string_view name, const Media& media,
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

void WriteProfile(Call& call, std::string_view name, const Profile& profile) {
    const Media& media = call.state.media;
    CXmlWriter& out = call.out;
    const Scope element(out, Ns::kMedia, name);
    out.Attribute("token", profile.token);
    out.Attribute("fixed", profile.fixed);
    out.Element(Ns::kSchema, "Name", profile.name);
    if (const auto* source = FindByToken(media.videoSourceConfigurations, profile.videoSource)) {
        WriteVideoSource(out, Ns::kSchema, "VideoSourceConfiguration", media, *source);
    }
    if (const auto* source = FindByToken(media.audioSourceConfigurations, profile.audioSource)) {
        WriteAudioSource(out, Ns::kSchema, "AudioSourceConfiguration", media, *source);
    }
    if (const auto* encoder = FindByToken(media.videoEncoders, profile.videoEncoder)) {
        WriteVideoEncoder(out, Ns::kSchema, "VideoEncoderConfiguration", media, *encoder);
    }
    if (const auto* encoder = FindByToken(media.audioEncoders, profile.audioEncoder)) {
        WriteAudioEncoder(out, "AudioEncoderConfiguration", media, *encoder);
    }
    const auto* analytics = FindByToken(media.analytics, profile.analytics);
    if (analytics != nullptr && call.options.analytics) {
        WriteAnalytics(out, Ns::kSchema, "VideoAnalyticsConfiguration", media, *analytics);
    }
    const auto* ptz = FindByToken(media.ptz, profile.ptz);
    if (ptz != nullptr && Offers(call.options, Ns::kPtz)) {
        WritePtz(out, Ns::kSchema, "PTZConfiguration", media, *ptz);
    }
    if (const auto* metadata = FindByToken(media.metadata, profile.metadata)) {
        WriteMetadata(out, Ns::kSchema, "MetadataConfiguration", media, *metadata);
    }
}

Answer GetProfiles(Call& call) {
    for (const Profile& profile : call.state.media.profiles) {
        WriteProfile(call, "Profiles", profile);
    }
    return kDone;
}

Answer GetProfile(Call& call) {
    const auto* profile = FindProfile(call);
    if (profile == nullptr) {
        return NoSuchProfile();
    }
    WriteProfile(call, "Profile", *profile);
    return kDone;
}

void WriteMediaUri(CXmlWriter& out, std::string_view uri) {
    const Scope element(out, Ns::kMedia, "MediaUri");
    out.Element(Ns::kSchema, "Uri", uri);
    out.Element(Ns::kSchema, "InvalidAfterConnect", false);
    out.Element(Ns::kSchema, "InvalidAfterReboot", false);
    out.Element(Ns::kSchema, "Timeout", kSessionTimeout);
}

Answer GetStreamUri(Call& call) {
    const auto* profile = FindProfile(call);
    if (profile == nullptr) {
        return NoSuchProfile();
    }
    const XmlElement* setup = Child(&call.request, "StreamSetup");
    const std::string_view stream = ChildText(setup, "Stream");
    const std::string_view protocol = ChildText(Child(setup, "Transport"), "Protocol");
    if (stream != "RTP-Unicast" || protocol != "RTSP") {
        return InvalidArgument("InvalidStreamSetup", "Only RTP-Unicast over RTSP is offered");
    }
    int port = 554;
    for (const NetworkProtocol& each : call.state.network.protocols) {
        if (each.name == "RTSP" && !each.ports.empty()) {
            port = each.ports.front();
        }
    }
    WriteMediaUri(call.out,
                  "rtsp://127.0.0.1:" + std::to_string(port) + "/stream/" + profile->token);
    return kDone;
}

Answer GetSnapshotUri(Call& call) {
    return AnswerSnapshotUri(call, WriteMediaUri);
}

Answer GetVideoEncoderConfiguration(Call& call) {
    const Media& media = call.state.media;
    const auto* encoder = FindEncoder(call);
    if (encoder == nullptr) {
        return NoSuchConfiguration();
    }
    WriteVideoEncoder(call.out, Ns::kMedia, "Configuration", media, *encoder);
    return kDone;
}

/// The options of one codec; those below the extension tell the bit rate as well.
void WriteCodecOptions(CXmlWriter& out, const EncoderLimits& limits, std::string_view encoding,
                       bool withBitrate) {
    const Scope codec(out, Ns::kSchema, encoding);
    for (const Resolution& resolution : limits.resolutions) {
        WriteResolution(out, resolution, "ResolutionsAvailable");
    }
    const auto profiles = ProfilesOf(encoding);
    if (!profiles.empty()) {
        WriteRange(out, "GovLengthRange", limits.govLength);
    }
    WriteRange(out, "FrameRateRange", {limits.frameRates.front(), limits.frameRates.back()});
    WriteRange(out, "EncodingIntervalRange", IntervalsOf(encoding));
    for (const std::string_view profile : profiles) {
        out.Element(Ns::kSchema,
                    encoding == "H264" ? "H264ProfilesSupported" : "Mpeg4ProfilesSupported",
                    profile);
    }
    if (withBitrate) {
        WriteRange(out, "BitrateRange", limits.bitrate);
    }
}

Answer GetVideoEncoderConfigurationOptions(Call& call) {
    const auto* encoder = FindEncoder(call);
    if (encoder == nullptr) {
        return NoSuchConfiguration();
    }
    const EncoderLimits limits = LimitsOf(*encoder);
    CXmlWriter& out = call.out;
    const Scope options(out, Ns::kMedia, "Options");
    WriteRange(out, "QualityRange", limits.quality);
    for (const std::string_view encoding : {"JPEG", "MPEG4", "H264"}) {
        WriteCodecOptions(out, limits, encoding, false);
    }
    const Scope extension(out, Ns::kSchema, "Extension");
    for (const std::string_view encoding : {"JPEG", "MPEG4", "H264"}) {
        WriteCodecOptions(out, limits, encoding, true);
    }
    return kDone;
}

constexpr std::array kOperations = {
    Operation{"GetProfiles", GetProfiles},
    Operation{"GetProfile", GetProfile},
    Operation{"GetStreamUri", GetStreamUri},
    Operation{"GetSnapshotUri", GetSnapshotUri},
    Operation{"GetVideoEncoderConfiguration", GetVideoEncoderConfiguration},
    Operation{"SetVideoEncoderConfiguration", SetVideoEncoder10},
    Operation{"GetVideoEncoderConfigurationOptions", GetVideoEncoderConfigurationOptions},
};

}  // namespace

std::span<const Operation> MediaOperations() {
    return kOperations;
}

}  // namespace camera_sim
