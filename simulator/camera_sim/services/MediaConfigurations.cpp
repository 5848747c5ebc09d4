// The configurations that both media services list, each in its own form.
#include <array>

#include "camera_sim/services/MediaElements.h"
#include "camera_sim/services/MediaOperations.h"
#include "camera_sim/services/Services.h"

namespace camera_sim {
namespace {

/// Where one kind of configuration is, and how it is written.
template <typename Configuration>
struct Listing {
    std::vector<Configuration> Media::*list;
    std::string Profile::*member;
    void (*write)(CXmlWriter& out, Ns ns, std::string_view name, const Media& media,
                  const Configuration& configuration);
};
constexpr Listing<VideoSourceConfiguration> kVideoSource{&Media::videoSourceConfigurations,
                                                         &Profile::videoSource, WriteVideoSource};
constexpr Listing<AudioSourceConfiguration> kAudioSource{&Media::audioSourceConfigurations,
                                                         &Profile::audioSource, WriteAudioSource};
constexpr Listing<VideoEncoder> kVideoEncoder10{&Media::videoEncoders, &Profile::videoEncoder,
                                                WriteVideoEncoder10};
constexpr Listing<VideoEncoder> kVideoEncoder20{&Media::videoEncoders, &Profile::videoEncoder,
                                                WriteVideoEncoder20};
constexpr Listing<AudioEncoder> kAudioEncoder10{&Media::audioEncoders, &Profile::audioEncoder,
                                                WriteAudioEncoder10};
constexpr Listing<AudioEncoder> kAudioEncoder20{&Media::audioEncoders, &Profile::audioEncoder,
                                                WriteAudioEncoder20};
constexpr Listing<MetadataConfiguration> kMetadata{&Media::metadata, &Profile::metadata,
                                                   WriteMetadata};
constexpr Listing<AnalyticsConfiguration> kAnalytics{&Media::analytics, &Profile::analytics,
                                                     WriteAnalytics};

/// All of them, the one that the request names, or those that fit the profile that it names: a
/// profile's configurations are fixed, so what it has is what fits.
template <const auto& Kind>
Answer GetAll(Call& call) {
    const Media& media = call.state.media;
    const XmlElement* token = Child(&call.request, "ConfigurationToken");
    const XmlElement* profileToken = Child(&call.request, "ProfileToken");
    const Profile* profile = FindProfile(call);
    if (token != nullptr && FindByToken(media.*Kind.list, Text(token)) == nullptr) {
        return NoSuchConfiguration();
    }
    if (profileToken != nullptr && profile == nullptr) {
        return NoSuchProfile();
    }
    for (const auto& each : media.*Kind.list) {
        if ((token == nullptr || each.token == Text(token)) &&
            (profile == nullptr || each.token == profile->*Kind.member)) {
            Kind.write(call.out, call.Service(), "Configurations", media, each);
        }
    }
    return kDone;
}

template <const auto& Kind>
Answer GetOne(Call& call) {
    const Media& media = call.state.media;
    const auto* found = FindByToken(media.*Kind.list, call.Argument("ConfigurationToken"));
    if (found == nullptr) {
        return NoSuchConfiguration();
    }
    Kind.write(call.out, call.Service(), "Configuration", media, *found);
    return kDone;
}

/// An operation of a camera that has analytics.
template <Handler Ask>
Answer WithAnalytics(Call& call) {
    return call.options.analytics ? Ask(call) : NotSupported("The camera has no analytics");
}

constexpr std::array kOperations10 = {
    Operation{"GetVideoSourceConfigurations", GetAll<kVideoSource>},
    Operation{"GetCompatibleVideoSourceConfigurations", GetAll<kVideoSource>},
    Operation{"GetVideoSourceConfiguration", GetOne<kVideoSource>},
    Operation{"GetVideoEncoderConfigurations", GetAll<kVideoEncoder10>},
    Operation{"GetCompatibleVideoEncoderConfigurations", GetAll<kVideoEncoder10>},
    Operation{"GetVideoEncoderConfiguration", GetOne<kVideoEncoder10>},
    Operation{"GetAudioSourceConfigurations", GetAll<kAudioSource>},
    Operation{"GetCompatibleAudioSourceConfigurations", GetAll<kAudioSource>},
    Operation{"GetAudioSourceConfiguration", GetOne<kAudioSource>},
    Operation{"GetAudioEncoderConfigurations", GetAll<kAudioEncoder10>},
    Operation{"GetCompatibleAudioEncoderConfigurations", GetAll<kAudioEncoder10>},
    Operation{"GetAudioEncoderConfiguration", GetOne<kAudioEncoder10>},
    Operation{"GetMetadataConfigurations", GetAll<kMetadata>},
    Operation{"GetMetadataConfiguration", GetOne<kMetadata>},
    Operation{"GetVideoAnalyticsConfigurations", WithAnalytics<GetAll<kAnalytics>>},
    Operation{"GetVideoAnalyticsConfiguration", WithAnalytics<GetOne<kAnalytics>>},
};

constexpr std::array kOperations20 = {
    Operation{"GetVideoSourceConfigurations", GetAll<kVideoSource>},
    Operation{"GetVideoEncoderConfigurations", GetAll<kVideoEncoder20>},
    Operation{"GetAudioSourceConfigurations", GetAll<kAudioSource>},
    Operation{"GetAudioEncoderConfigurations", GetAll<kAudioEncoder20>},
    Operation{"GetMetadataConfigurations", GetAll<kMetadata>},
    Operation{"GetAnalyticsConfigurations", WithAnalytics<GetAll<kAnalytics>>},
};

}  // namespace

std::span<const Operation> MediaConfigurationOperations() {
    return kOperations10;
}
std::span<const Operation> Media2ConfigurationOperations() {
    return kOperations20;
}

}  // namespace camera_sim
