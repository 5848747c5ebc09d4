// Media service, first version.
#include <algorithm>
#include <array>
#include <span>

#include "camera_sim/services/MediaElements.h"
#include "camera_sim/services/MediaOperations.h"
#include "camera_sim/services/Services.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

constexpr std::array<std::string_view, 2> kStreams = {"RTP-Unicast", "RTP-Multicast"};
constexpr std::array<std::string_view, 4> kProtocols = {"UDP", "TCP", "RTSP", "HTTP"};
constexpr double kSensorFrameRate = 30;

bool Has(std::span<const std::string_view> list, std::string_view word) {
    return std::find(list.begin(), list.end(), word) != list.end();
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
        WriteVideoEncoder10(out, Ns::kSchema, "VideoEncoderConfiguration", media, *encoder);
    }
    if (const auto* encoder = FindByToken(media.audioEncoders, profile.audioEncoder)) {
        WriteAudioEncoder10(out, Ns::kSchema, "AudioEncoderConfiguration", media, *encoder);
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
    out.Element(Ns::kSchema, "Timeout", "PT60S");
}

Answer GetStreamUri(Call& call) {
    const XmlElement* setup = Child(&call.request, "StreamSetup");
    const std::string_view stream = ChildText(setup, "Stream");
    const std::string_view protocol = ChildText(Child(setup, "Transport"), "Protocol");
    if (!Has(kStreams, stream) || !Has(kProtocols, protocol)) {
        return InvalidArgument("InvalidStreamSetup", "No such stream or transport");
    }
    return AnswerStreamUri(call, WriteMediaUri);
}

Answer GetSnapshotUri(Call& call) {
    return AnswerSnapshotUri(call, WriteMediaUri);
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

void WriteEncoderOptions(CXmlWriter& out, const VideoEncoder& encoder) {
    const EncoderLimits limits = LimitsOf(encoder);
    const Scope options(out, Ns::kMedia, "Options");
    WriteRange(out, "QualityRange", limits.quality);
    for (const std::string_view encoding : {"JPEG", "MPEG4", "H264"}) {
        WriteCodecOptions(out, limits, encoding, false);
    }
    const Scope extension(out, Ns::kSchema, "Extension");
    for (const std::string_view encoding : {"JPEG", "MPEG4", "H264"}) {
        WriteCodecOptions(out, limits, encoding, true);
    }
}

Answer GetVideoEncoderConfigurationOptions(Call& call) {
    return AnswerEncoderOptions(call, WriteEncoderOptions);
}

Answer GetVideoSources(Call& call) {
    for (const VideoSource& source : call.state.media.videoSources) {
        const Scope element(call.out, Ns::kMedia, "VideoSources");
        WriteEntityToken(call.out, source.token);
        call.out.Element(Ns::kSchema, "Framerate", kSensorFrameRate);
        WriteResolution(call.out, source.resolution);
    }
    return kDone;
}

Answer GetAudioSources(Call& call) {
    for (const AudioSourceConfiguration& audio : call.state.media.audioSourceConfigurations) {
        const Scope element(call.out, Ns::kMedia, "AudioSources");
        WriteEntityToken(call.out, audio.source);
        call.out.Element(Ns::kSchema, "Channels", 1);
    }
    return kDone;
}

constexpr std::array kOperations = {
    Operation{"GetProfiles", GetProfiles},
    Operation{"GetProfile", GetProfile},
    Operation{"GetVideoSources", GetVideoSources},
    Operation{"GetAudioSources", GetAudioSources},
    Operation{"GetStreamUri", GetStreamUri},
    Operation{"GetSnapshotUri", GetSnapshotUri},
    Operation{"SetVideoEncoderConfiguration", SetVideoEncoder10},
    Operation{"GetVideoEncoderConfigurationOptions", GetVideoEncoderConfigurationOptions},
    Operation{"GetOSD", AnswerOsd},
    Operation{"SetSynchronizationPoint", AnswerSynchronizationPoint},
};

}  // namespace

std::span<const Operation> MediaOperations() {
    return kOperations;
}

}  // namespace camera_sim
