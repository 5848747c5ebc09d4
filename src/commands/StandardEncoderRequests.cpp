#include "commands/Envelope.h"
#include "commands/EnvelopeFiller.h"
#include "commands/MergedValues.h"
#include "commands/StandardRequests.h"

namespace onvif_client {

namespace {

constexpr auto kRead10 =
    SoapEnvelope(kMdw, FixedText("<mdw:GetVideoEncoderConfiguration><mdw:ConfigurationToken/>"
                                 "</mdw:GetVideoEncoderConfiguration>"));
constexpr auto kRead20 =
    SoapEnvelope(kTrt2, FixedText("<trt2:GetVideoEncoderConfigurations><trt2:ConfigurationToken/>"
                                  "</trt2:GetVideoEncoderConfigurations>"));
constexpr auto kSet10 =
    SoapEnvelope(kMdw + kTt, FixedText("<mdw:SetVideoEncoderConfiguration><mdw:Configuration/>"
                                       "<mdw:ForcePersistence>true</mdw:ForcePersistence>"
                                       "</mdw:SetVideoEncoderConfiguration>"));
constexpr auto kSet20 =
    SoapEnvelope(kTrt2 + kTt, FixedText("<trt2:SetVideoEncoderConfiguration><trt2:Configuration/>"
                                        "</trt2:SetVideoEncoderConfiguration>"));

// From an item of the request.
constexpr MergedValue kSize[] = {{"tt:Width", "width"}, {"tt:Height", "height"}};
constexpr MergedValue kPicture[] = {{"tt:Encoding", "encode"},
                                    {"tt:Resolution", "resolution", kSize}};
constexpr MergedValue kQuality[] = {{"tt:Quality", "quality"}};
constexpr MergedValue kRates10[] = {{"tt:FrameRateLimit", "frameRate"},
                                    {"tt:EncodingInterval", "encodingInterval", {}, "1"},
                                    {"tt:BitrateLimit", "bitrate"}};
constexpr MergedValue kRates20[] = {{"@ConstantBitRate"},
                                    {"tt:FrameRateLimit", "frameRate"},
                                    {"tt:BitrateLimit", "bitrate"},
                                    {"tt:AverageBitRate"}};
constexpr MergedValue kH264[] = {{"tt:GovLength", "IFrameInterval"}, {"tt:H264Profile", "profile"}};
constexpr MergedValue kMpeg4[] = {{"tt:GovLength", "IFrameInterval"},
                                  {"tt:Mpeg4Profile", "profile"}};
constexpr MergedValue kRateControl10[] = {{"tt:RateControl", nullptr, kRates10}};
constexpr MergedValue kRateControl20[] = {{"tt:RateControl", nullptr, kRates20}};
constexpr MergedValue kH264Codec[] = {{"tt:H264", nullptr, kH264}};
constexpr MergedValue kMpeg4Codec[] = {{"tt:MPEG4", nullptr, kMpeg4}};
constexpr MergedValue kSession[] = {{"tt:SessionTimeout", "sessionTimeout"}};
constexpr MergedValue kAttributes10[] = {{"@GuaranteedFrameRate"}};
constexpr MergedValue kAttributes20[] = {{"@GovLength", "IFrameInterval"},
                                         {"@AnchorFrameDistance"},
                                         {"@Profile", "profile"},
                                         {"@GuaranteedFrameRate"},
                                         {"@Signed"}};

// From beside the items.
constexpr MergedValue kAddress[] = {
    {"tt:Type", "type"}, {"tt:IPv4Address", "iPv4Address"}, {"tt:IPv6Address"}};
constexpr MergedValue kMulticastParts[] = {{"tt:Address", "address", kAddress},
                                           {"tt:Port", "port"},
                                           {"tt:TTL", "tTL"},
                                           {"tt:AutoStart", "autoStart"}};
constexpr MergedValue kMulticast[] = {{"tt:Multicast", "multicast", kMulticastParts}};

std::string TokenOf(const CommandRequest& request) {
    return std::string(TextAt(request.item, "encodeToken"));
}

std::string Read(std::string_view envelopeTemplate, const std::string& operation,
                 const CommandRequest& request) {
    const std::string prefix = operation.substr(0, operation.find(':') + 1);
    CEnvelopeFiller envelope(envelopeTemplate, operation);
    envelope.Set(prefix + "ConfigurationToken", TokenOf(request));
    return envelope.Print();
}

/// The encoder that is set, of those that the device showed; null when it is not among them.
const XMLElement* Present(const CommandRequest& request, std::string_view response,
                          std::string_view element) {
    const std::string token = TokenOf(request);
    for (const XMLElement* each :
         Children(FirstChild(FindElement(request.answer, "Envelope/Body"), response), element)) {
        const char* its = AttributeOf(each, "token");
        if (its != nullptr && its == token) {
            return each;
        }
    }
    return nullptr;
}

/// What both versions of the service begin with.
void Start(const CommandRequest& request, const XMLElement* present, XMLElement* configuration) {
    const char* name = request.profile->videoEncoderConfigurationName.c_str();
    const MergedValue entity[] = {{"tt:Name", nullptr, {}, name},
                                  {"tt:UseCount", nullptr, {}, "1"}};
    configuration->SetAttribute("token", TokenOf(request).c_str());
    MergeValues(nullptr, present, configuration, entity);
    MergeValues(request.item, present, configuration, kPicture);
}

/// The group lengths and profiles of one codec say nothing of another.
void FitAttributes(std::string_view encoding, const XMLElement* present, const XMLElement* item,
                   XMLElement* configuration) {
    const bool changed = present != nullptr && encoding != TextAt(present, "Encoding");
    if (encoding == "JPEG") {
        configuration->DeleteAttribute("GovLength");
    }
    if (encoding == "JPEG" || (changed && FirstChild(item, "profile") == nullptr)) {
        configuration->DeleteAttribute("Profile");
    }
}

}  // namespace

std::string BuildReadVideoEncoder10(const CommandRequest& request) {
    return Read(kRead10, "mdw:GetVideoEncoderConfiguration", request);
}

std::string BuildReadVideoEncoder20(const CommandRequest& request) {
    return Read(kRead20, "trt2:GetVideoEncoderConfigurations", request);
}

std::string BuildStandardSetVideoEncoder10(const CommandRequest& request) {
    CEnvelopeFiller envelope(kSet10, "mdw:SetVideoEncoderConfiguration");
    XMLElement* configuration = envelope.Find("mdw:Configuration");
    const XMLElement* present =
        Present(request, "GetVideoEncoderConfigurationResponse", "Configuration");
    MergeValues(nullptr, present, configuration, kAttributes10);
    Start(request, present, configuration);
    MergeValues(request.item, present, configuration, kQuality);
    MergeValues(request.item, present, configuration, kRateControl10);
    const std::string_view encoding = TextAt(configuration, "tt:Encoding");
    if (encoding == "H264") {
        MergeValues(request.item, present, configuration, kH264Codec);
    } else if (encoding == "MPEG4") {
        MergeValues(request.item, present, configuration, kMpeg4Codec);
    }
    MergeValues(request.command, present, configuration, kMulticast);
    MergeValues(request.item, present, configuration, kSession);
    return envelope.Print();
}

std::string BuildStandardSetVideoEncoder20(const CommandRequest& request) {
    CEnvelopeFiller envelope(kSet20, "trt2:SetVideoEncoderConfiguration");
    XMLElement* configuration = envelope.Find("trt2:Configuration");
    const XMLElement* present =
        Present(request, "GetVideoEncoderConfigurationsResponse", "Configurations");
    MergeValues(request.item, present, configuration, kAttributes20);
    Start(request, present, configuration);
    // The second version goes by the names of media types.
    XMLElement* encoding = FirstChild(configuration, "tt:Encoding");
    if (TextOf(encoding) == "MPEG4") {
        SetText(encoding, "MPV4-ES");
    }
    FitAttributes(TextOf(encoding), present, request.item, configuration);
    MergeValues(request.item, present, configuration, kRateControl20);
    MergeValues(request.command, present, configuration, kMulticast);
    MergeValues(request.item, present, configuration, kQuality);
    return envelope.Print();
}

}  // namespace onvif_client
