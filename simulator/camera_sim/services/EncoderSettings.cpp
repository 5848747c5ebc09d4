// SetVideoEncoderConfiguration of both media services.
#include <algorithm>
#include <array>
#include <cmath>

#include "camera_sim/services/MediaElements.h"
#include "camera_sim/services/MediaOperations.h"
#include "camera_sim/services/Services.h"
#include "camera_sim/soap/Times.h"

namespace camera_sim {
namespace {

constexpr std::size_t kLongestName = 64;
constexpr Range kPorts{0, 65535};
constexpr Range kTimesToLive{0, 255};

constexpr std::array<std::string_view, 3> kEncodings10 = {"JPEG", "MPEG4", "H264"};
constexpr std::array<std::string_view, 3> kEncodings20 = {"JPEG", "H264", "H265"};

SoapFault Invalid(std::string_view what) {
    return InvalidArgument("ConfigModify",
                           std::string(what) + " of the video encoder cannot be set to that");
}

template <typename List, typename Value>
bool Has(const List& list, const Value& value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

bool IsIn(Range range, double value) {
    return value >= range.minimum && value <= range.maximum;
}

/// Takes the number over; false when @p text is none of the range.
bool TakeInt(std::string_view text, Range range, int& value) {
    const auto number = ToInt(text);
    if (!number || !IsIn(range, *number)) {
        return false;
    }
    value = *number;
    return true;
}

/// True when the child is absent, or valid and taken over.
bool ReadInt(const XmlElement* parent, std::string_view name, Range range, int& value) {
    const XmlElement* element = Child(parent, name);
    return element == nullptr || TakeInt(Text(element), range, value);
}

bool ReadWord(const XmlElement* parent, std::string_view name,
              std::span<const std::string_view> words, std::string& value) {
    const XmlElement* element = Child(parent, name);
    if (element == nullptr) {
        return true;
    }
    if (!Has(words, Text(element))) {
        return false;
    }
    value = Text(element);
    return true;
}

bool ReadResolution(const XmlElement* given, const EncoderLimits& limits, Resolution& resolution) {
    if (given == nullptr) {
        return true;
    }
    const auto width = ToInt(ChildText(given, "Width"));
    const auto height = ToInt(ChildText(given, "Height"));
    const bool offered =
        std::any_of(limits.resolutions.begin(), limits.resolutions.end(),
                    [&](Resolution each) { return each.width == width && each.height == height; });
    if (!offered) {
        return false;
    }
    resolution = {*width, *height};
    return true;
}

/// The second version offers single rates, the first everything between the least and the most.
bool ReadFrameRate(const XmlElement* rateControl, const EncoderLimits& limits, bool version2,
                   int& frameRate) {
    const XmlElement* element = Child(rateControl, "FrameRateLimit");
    if (element == nullptr) {
        return true;
    }
    const auto given = ToDouble(Text(element));
    if (!given || std::floor(*given) != *given ||
        !IsIn({limits.frameRates.front(), limits.frameRates.back()}, *given) ||
        (version2 && !Has(limits.frameRates, *given))) {
        return false;
    }
    frameRate = static_cast<int>(*given);
    return true;
}

Answer ReadRateControl(const XmlElement* given, const EncoderLimits& limits, bool version2,
                       VideoEncoder& encoder) {
    if (given == nullptr) {
        return kDone;
    }
    if (!ReadFrameRate(given, limits, version2, encoder.frameRate)) {
        return Invalid("FrameRateLimit");
    }
    if (!ReadInt(given, "BitrateLimit", limits.bitrate, encoder.bitrate)) {
        return Invalid("BitrateLimit");
    }
    if (version2) {
        const char* constant = given->Attribute("ConstantBitRate");
        const auto value = ToBool(constant == nullptr ? "false" : constant);
        if (!value) {
            return Invalid("ConstantBitRate");
        }
        if (constant != nullptr) {
            encoder.constantBitrate = *value;
        }
    } else if (!ReadInt(given, "EncodingInterval", IntervalsOf(encoder.encoding),
                        encoder.encodingInterval)) {
        return Invalid("EncodingInterval");
    }
    return kDone;
}

// The first version has an element for each codec; that of another codec than the one in use does
// not matter.
Answer ReadCodec10(const XmlElement* given, const EncoderLimits& limits, VideoEncoder& encoder) {
    const bool mpeg4 = encoder.encoding == "MPEG4";
    const XmlElement* codec = Child(given, mpeg4 ? "MPEG4" : "H264");
    if (codec == nullptr || encoder.encoding == "JPEG") {
        return kDone;
    }
    if (!ReadInt(codec, "GovLength", limits.govLength, encoder.govLength)) {
        return Invalid("GovLength");
    }
    if (!ReadWord(codec, mpeg4 ? "Mpeg4Profile" : "H264Profile", ProfilesOf(encoder.encoding),
                  encoder.profile)) {
        return Invalid("Profile");
    }
    return kDone;
}

Answer ReadCodec20(const XmlElement* given, const EncoderLimits& limits, VideoEncoder& encoder) {
    if (encoder.encoding == "JPEG") {
        return kDone;
    }
    const char* govLength = given->Attribute("GovLength");
    if (govLength != nullptr && !TakeInt(govLength, limits.govLength, encoder.govLength)) {
        return Invalid("GovLength");
    }
    const char* profile = given->Attribute("Profile");
    if (profile == nullptr) {
        return kDone;
    }
    if (!Has(ProfilesOf(encoder.encoding), std::string_view(profile))) {
        return Invalid("Profile");
    }
    encoder.profile = profile;
    return kDone;
}

bool IsMulticastAddress(std::string_view text) {
    constexpr Range kMulticast{224, 239};
    const auto first = ToInt(text.substr(0, text.find('.')));
    return IsIpv4(text) && (text == "0.0.0.0" || (first && IsIn(kMulticast, *first)));
}

Answer ReadMulticast(const XmlElement* given, Multicast& multicast) {
    const XmlElement* address = Child(given, "Address");
    if (address != nullptr) {
        const std::string_view type = ChildText(address, "Type");
        const std::string_view text = ChildText(address, "IPv4Address");
        if ((!type.empty() && type != "IPv4") || !IsMulticastAddress(text)) {
            return Invalid("Multicast address");
        }
        multicast.address = text;
    }
    if (!ReadInt(given, "Port", kPorts, multicast.port)) {
        return Invalid("Multicast port");
    }
    if (!ReadInt(given, "TTL", kTimesToLive, multicast.ttl)) {
        return Invalid("TTL");
    }
    const XmlElement* autoStart = Child(given, "AutoStart");
    if (autoStart == nullptr) {
        return kDone;
    }
    const auto value = ToBool(Text(autoStart));
    if (!value) {
        return Invalid("AutoStart");
    }
    multicast.autoStart = *value;
    return kDone;
}

/// Another codec may not have what the one before was set to.
void FitToEncoding(VideoEncoder& encoder) {
    if (encoder.encoding == "JPEG") {
        encoder.encodingInterval = 1;
    }
    const auto profiles = ProfilesOf(encoder.encoding);
    if (!profiles.empty() && !Has(profiles, std::string_view(encoder.profile))) {
        encoder.profile = encoder.encoding == "MPEG4" ? "SP" : "Main";
    }
}

Answer ReadNameAndTimeout(const XmlElement* given, VideoEncoder& encoder) {
    const std::string_view name = ChildText(given, "Name");
    if (name.size() > kLongestName) {
        return Invalid("Name");
    }
    if (!name.empty()) {
        encoder.name = name;
    }
    const XmlElement* timeout = Child(given, "SessionTimeout");
    if (timeout == nullptr) {
        return kDone;
    }
    if (!IsDuration(Text(timeout))) {
        return Invalid("SessionTimeout");
    }
    encoder.sessionTimeout = Text(timeout);
    return kDone;
}

/// Takes over what @p given has; with a fault, @p encoder may be changed in part.
Answer ReadEncoder(const XmlElement* given, bool version2, VideoEncoder& encoder) {
    const EncoderLimits limits = LimitsOf(encoder);
    if (auto fault = ReadNameAndTimeout(given, encoder)) {
        return fault;
    }
    if (!ReadWord(given, "Encoding", version2 ? kEncodings20 : kEncodings10, encoder.encoding)) {
        return Invalid("Encoding");
    }
    FitToEncoding(encoder);
    if (!ReadResolution(Child(given, "Resolution"), limits, encoder.resolution)) {
        return Invalid("Resolution");
    }
    if (const XmlElement* quality = Child(given, "Quality")) {
        const auto value = ToDouble(Text(quality));
        if (!value || !IsIn(limits.quality, *value)) {
            return Invalid("Quality");
        }
        encoder.quality = *value;
    }
    if (auto fault = ReadRateControl(Child(given, "RateControl"), limits, version2, encoder)) {
        return fault;
    }
    if (auto fault =
            version2 ? ReadCodec20(given, limits, encoder) : ReadCodec10(given, limits, encoder)) {
        return fault;
    }
    return ReadMulticast(Child(given, "Multicast"), encoder.multicast);
}

Answer SetVideoEncoder(Call& call, bool version2) {
    const XmlElement* given = Child(&call.request, "Configuration");
    const char* token = given == nullptr ? nullptr : given->Attribute("token");
    VideoEncoder* encoder =
        FindByToken(call.state.media.videoEncoders, token == nullptr ? "" : token);
    if (encoder == nullptr) {
        return InvalidArgument("NoConfig", "No such configuration");
    }
    VideoEncoder changed = *encoder;
    if (auto fault = ReadEncoder(given, version2, changed)) {
        return fault;
    }
    *encoder = std::move(changed);
    return kDone;
}

}  // namespace

Answer SetVideoEncoder10(Call& call) {
    return SetVideoEncoder(call, false);
}
Answer SetVideoEncoder20(Call& call) {
    return SetVideoEncoder(call, true);
}

}  // namespace camera_sim
