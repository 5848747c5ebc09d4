// Media service, second version.
#include <algorithm>
#include <array>

#include "camera_sim/services/MediaElements.h"
#include "camera_sim/services/MediaOperations.h"
#include "camera_sim/services/Services.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

constexpr std::array<std::string_view, 4> kProtocols = {"RtspUnicast", "RtspMulticast", "RTSP",
                                                        "RtspOverHttp"};

/// Which configurations the caller wants to see.
class CWantedTypes {
 public:
    explicit CWantedTypes(const XmlElement& request) {
        for (const XmlElement* type : Children(&request, "Type")) {
            types_.push_back(Text(type));
        }
    }
    bool Any() const { return !types_.empty(); }
    bool Has(std::string_view type) const { return Contains(type) || Contains("All"); }

 private:
    bool Contains(std::string_view type) const {
        return std::find(types_.begin(), types_.end(), type) != types_.end();
    }
    std::vector<std::string_view> types_;
};

void WriteConfigurations(Call& call, const Profile& profile, const CWantedTypes& wanted) {
    const Media& media = call.state.media;
    CXmlWriter& out = call.out;
    const Scope configurations(out, Ns::kMedia2, "Configurations");
    const auto* videoSource = FindByToken(media.videoSourceConfigurations, profile.videoSource);
    if (videoSource != nullptr && wanted.Has("VideoSource")) {
        WriteVideoSource(out, Ns::kMedia2, "VideoSource", media, *videoSource);
    }
    const auto* audioSource = FindByToken(media.audioSourceConfigurations, profile.audioSource);
    if (audioSource != nullptr && wanted.Has("AudioSource")) {
        WriteAudioSource(out, Ns::kMedia2, "AudioSource", media, *audioSource);
    }
    const auto* videoEncoder = FindByToken(media.videoEncoders, profile.videoEncoder);
    if (videoEncoder != nullptr && wanted.Has("VideoEncoder")) {
        WriteVideoEncoder20(out, Ns::kMedia2, "VideoEncoder", media, *videoEncoder);
    }
    const auto* audioEncoder = FindByToken(media.audioEncoders, profile.audioEncoder);
    if (audioEncoder != nullptr && wanted.Has("AudioEncoder")) {
        WriteAudioEncoder20(out, Ns::kMedia2, "AudioEncoder", media, *audioEncoder);
    }
    const auto* analytics = FindByToken(media.analytics, profile.analytics);
    if (analytics != nullptr && wanted.Has("Analytics") && call.options.analytics) {
        WriteAnalytics(out, Ns::kMedia2, "Analytics", media, *analytics);
    }
    const auto* ptz = FindByToken(media.ptz, profile.ptz);
    if (ptz != nullptr && wanted.Has("PTZ") && Offers(call.options, Ns::kPtz)) {
        WritePtz(out, Ns::kMedia2, "PTZ", media, *ptz);
    }
    const auto* metadata = FindByToken(media.metadata, profile.metadata);
    if (metadata != nullptr && wanted.Has("Metadata")) {
        WriteMetadata(out, Ns::kMedia2, "Metadata", media, *metadata);
    }
}

Answer GetProfiles(Call& call) {
    const Media& media = call.state.media;
    const std::string_view token = call.Argument("Token");
    if (!token.empty() && FindByToken(media.profiles, token) == nullptr) {
        return NoSuchProfile();
    }
    const CWantedTypes wanted(call.request);
    for (const Profile& profile : media.profiles) {
        if (!token.empty() && profile.token != token) {
            continue;
        }
        const Scope element(call.out, Ns::kMedia2, "Profiles");
        call.out.Attribute("token", profile.token);
        call.out.Attribute("fixed", profile.fixed);
        call.out.Element(Ns::kMedia2, "Name", profile.name);
        if (wanted.Any()) {
            WriteConfigurations(call, profile, wanted);
        }
    }
    return kDone;
}

void WriteUri(CXmlWriter& out, std::string_view uri) {
    out.Element(Ns::kMedia2, "Uri", uri);
}

Answer GetStreamUri(Call& call) {
    const std::string_view protocol = call.Argument("Protocol");
    if (std::find(kProtocols.begin(), kProtocols.end(), protocol) == kProtocols.end()) {
        return InvalidArgument("InvalidStreamSetup", "No such protocol");
    }
    return AnswerStreamUri(call, WriteUri);
}

Answer GetSnapshotUri(Call& call) {
    return AnswerSnapshotUri(call, WriteUri);
}

/// A list separated by blanks.
template <typename List, typename ToText>
std::string Joined(const List& list, const ToText& toText) {
    std::string joined;
    for (const auto& each : list) {
        joined.append(joined.empty() ? "" : " ").append(toText(each));
    }
    return joined;
}

void WriteEncoderOptions(CXmlWriter& out, const VideoEncoder& encoder) {
    const EncoderLimits limits = LimitsOf(encoder);
    for (const std::string_view encoding : {"JPEG", "H264", "H265"}) {
        const Scope options(out, Ns::kMedia2, "Options");
        if (encoding != "JPEG") {
            out.Attribute("GovLengthRange", CXmlWriter::NumberText(limits.govLength.minimum) + " " +
                                                CXmlWriter::NumberText(limits.govLength.maximum));
        }
        out.Attribute("FrameRatesSupported", Joined(limits.frameRates, CXmlWriter::NumberText));
        if (encoding != "JPEG") {
            out.Attribute("ProfilesSupported",
                          Joined(ProfilesOf(encoding), [](std::string_view text) { return text; }));
        }
        out.Attribute("ConstantBitRateSupported", true);
        out.Element(Ns::kSchema, "Encoding", encoding);
        WriteRange(out, "QualityRange", limits.quality);
        for (const Resolution& resolution : limits.resolutions) {
            WriteResolution(out, resolution, "ResolutionsAvailable");
        }
        WriteRange(out, "BitrateRange", limits.bitrate);
    }
}

Answer GetVideoEncoderConfigurationOptions(Call& call) {
    return AnswerEncoderOptions(call, WriteEncoderOptions);
}

constexpr std::array kOperations = {
    Operation{"GetProfiles", GetProfiles},
    Operation{"GetStreamUri", GetStreamUri},
    Operation{"GetSnapshotUri", GetSnapshotUri},
    Operation{"SetVideoEncoderConfiguration", SetVideoEncoder20},
    Operation{"GetVideoEncoderConfigurationOptions", GetVideoEncoderConfigurationOptions},
    Operation{"SetSynchronizationPoint", AnswerSynchronizationPoint},
};

}  // namespace

std::span<const Operation> Media2Operations() {
    return kOperations;
}

}  // namespace camera_sim
