// What sources and audio encoders can be set to, and how many encoders run at once, for both media
// services.
#include <algorithm>
#include <array>

#include "camera_sim/services/MediaElements.h"
#include "camera_sim/services/MediaOperations.h"
#include "camera_sim/services/Services.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

constexpr std::array kBitrates = {64};    // kbit/s
constexpr std::array kSampleRates = {8};  // kHz

void WriteIntRange(CXmlWriter& out, std::string_view name, int least, int most) {
    const Scope range(out, Ns::kSchema, name);
    out.Element(Ns::kSchema, "Min", least);
    out.Element(Ns::kSchema, "Max", most);
}

template <typename List>
void WriteItems(CXmlWriter& out, std::string_view name, const List& numbers) {
    const Scope list(out, Ns::kSchema, name);
    for (const int number : numbers) {
        out.Element(Ns::kSchema, "Items", number);
    }
}

/// Of the configuration that the request names or, naming none, of the first; the picture cannot be
/// cut.
Answer GetVideoSourceConfigurationOptions(Call& call) {
    const auto& configurations = call.state.media.videoSourceConfigurations;
    const bool first =
        Child(&call.request, "ConfigurationToken") == nullptr && !configurations.empty();
    const auto* source = first ? &configurations.front()
                               : FindByToken(configurations, call.Argument("ConfigurationToken"));
    if (source == nullptr) {
        return NoSuchConfiguration();
    }
    CXmlWriter& out = call.out;
    const Scope options(out, call.Service(), "Options");
    {
        const Scope bounds(out, Ns::kSchema, "BoundsRange");
        WriteIntRange(out, "XRange", 0, 0);
        WriteIntRange(out, "YRange", 0, 0);
        WriteIntRange(out, "WidthRange", source->bounds.width, source->bounds.width);
        WriteIntRange(out, "HeightRange", source->bounds.height, source->bounds.height);
    }
    out.Element(Ns::kSchema, "VideoSourceTokensAvailable", source->source);
    return kDone;
}

void WriteAudioOptions(CXmlWriter& out, std::string_view encoding) {
    out.Element(Ns::kSchema, "Encoding", encoding);
    WriteItems(out, "BitrateList", kBitrates);
    WriteItems(out, "SampleRateList", kSampleRates);
}

/// The first service has a list of options, the second one repeats the element.
Answer GetAudioEncoderConfigurationOptions(Call& call) {
    if (call.state.media.audioEncoders.empty()) {
        return SoapFault{"Receiver", "ActionNotSupported", "AudioNotSupported", "No audio"};
    }
    const Scope options(call.out, call.Service(), "Options");
    if (call.Service() == Ns::kMedia2) {
        WriteAudioOptions(call.out, "PCMU");
        return kDone;
    }
    const Scope option(call.out, Ns::kSchema, "Options");
    WriteAudioOptions(call.out, "G711");
    return kDone;
}

int EncoderCount(const Call& call) {
    return static_cast<int>(call.state.media.videoEncoders.size());
}

Answer GetGuaranteedNumberOfVideoEncoderInstances(Call& call) {
    for (const std::string_view name : {"TotalNumber", "JPEG", "H264", "MPEG4"}) {
        call.out.Element(Ns::kMedia, name, EncoderCount(call));
    }
    return kDone;
}

Answer GetVideoEncoderInstances(Call& call) {
    CXmlWriter& out = call.out;
    const Scope info(out, Ns::kMedia2, "Info");
    for (const std::string_view encoding : {"JPEG", "H264", "H265"}) {
        const Scope codec(out, Ns::kMedia2, "Codec");
        out.Element(Ns::kMedia2, "Encoding", encoding);
        out.Element(Ns::kMedia2, "Number", EncoderCount(call));
    }
    out.Element(Ns::kMedia2, "Total", EncoderCount(call));
    return kDone;
}

constexpr Operation kSourceOptions{"GetVideoSourceConfigurationOptions",
                                   GetVideoSourceConfigurationOptions};
constexpr Operation kAudioOptions{"GetAudioEncoderConfigurationOptions",
                                  GetAudioEncoderConfigurationOptions};
constexpr std::array kOperations10 = {
    kSourceOptions,
    kAudioOptions,
    Operation{"GetGuaranteedNumberOfVideoEncoderInstances",
              GetGuaranteedNumberOfVideoEncoderInstances},
};
constexpr std::array kOperations20 = {
    kSourceOptions,
    kAudioOptions,
    Operation{"GetVideoEncoderInstances", GetVideoEncoderInstances},
};

}  // namespace

std::span<const Operation> MediaOptionsOperations() {
    return kOperations10;
}
std::span<const Operation> Media2OptionsOperations() {
    return kOperations20;
}

}  // namespace camera_sim
