#include "commands/Envelope.h"
#include "commands/EnvelopeFiller.h"
#include "commands/ServiceRequests.h"
#include "transform/CopiedValues.h"

namespace onvif_client {

namespace {

constexpr auto kSetVideoEncoder = SoapEnvelope(FixedText(""), FixedText(""));

// The blank belongs to the element's name here. Printed once more it is gone.
constexpr const char* kName = "Name ";

// From an item of the request.
constexpr CopiedValue kSize[] = {{"width", "Width"}, {"height", "Height"}};
constexpr CopiedValue kPicture[] = {
    {"encode", "Encoding "}, {"resolution", "Resolution", kSize}, {"quality", "Quality"}};
constexpr CopiedValue kFrameRate[] = {{"frameRate", "FrameRateLimit"}};
constexpr CopiedValue kInterval[] = {{"encodingInterval", "EncodingInterval"}};
constexpr CopiedValue kBitrate[] = {{"bitrate", "BitrateLimit"}};
constexpr CopiedValue kSession[] = {{"sessionTimeout", "SessionTimeout"}};

// From beside the items.
constexpr CopiedValue kAddress[] = {{"type", "Type"}, {"iPv4Address", "IPv4Address"}};
constexpr CopiedValue kMulticastParts[] = {
    {"address", "Address", kAddress}, {"port", "Port"}, {"tTL", "TTL"}, {"autoStart", "AutoStart"}};
constexpr CopiedValue kMulticast[] = {{"multicast", "Multicast", kMulticastParts}};

// The codecs of a ver10 service, which have an element of their own.
constexpr CopiedValue kH264[] = {{"IFrameInterval", "GovLength"}, {"profile", "H264Profile"}};
constexpr CopiedValue kMpeg4[] = {{"IFrameInterval", "GovLength"}, {"profile", "Mpeg4Profile"}};

/// A configuration with what both versions of the service begin with.
XMLElement* StartConfiguration(CEnvelopeFiller& envelope, const CommandRequest& request,
                               const char* mediaNamespace) {
    XMLElement* body = envelope.Operation();
    DeclareSchemaInstance(body);
    XMLElement* operation = envelope.Add(body, "SetVideoEncoderConfiguration");
    operation->SetAttribute("xmlns", mediaNamespace);
    XMLElement* configuration = envelope.Add(operation, "Configuration");
    const std::string token(TextAt(request.item, "encodeToken"));
    configuration->SetAttribute("token", token.c_str());
    Append(configuration, kName, request.profile->videoEncoderConfigurationName);
    Append(configuration, "UseCount", 1);
    CopyValues(request.item, configuration, kPicture);
    return configuration;
}

void EndConfiguration(const CommandRequest& request, XMLElement* configuration) {
    CopyValues(request.command, configuration, kMulticast);
    CopyValues(request.item, configuration, kSession);
    for (XMLElement* each = configuration->FirstChildElement(); each != nullptr;
         each = each->NextSiblingElement()) {
        each->SetAttribute("xmlns", kSchemaNamespace);
    }
}

}  // namespace

std::string BuildSetVideoEncoder10(const CommandRequest& request) {
    CEnvelopeFiller envelope(kSetVideoEncoder, "");
    const XMLElement* item = request.item;
    XMLElement* configuration = StartConfiguration(envelope, request, kMediaNamespace);

    XMLElement* rateControl = Append(configuration, "RateControl");
    CopyValues(item, rateControl, kFrameRate);
    if (FirstChild(item, "encodingInterval") == nullptr) {
        Append(rateControl, "EncodingInterval", 1);
    }
    CopyValues(item, rateControl, kInterval);
    CopyValues(item, rateControl, kBitrate);

    const std::string_view encoding = TextAt(item, "encode");
    if (encoding == "H264") {
        CopyValues(item, Append(configuration, "H264"), kH264);
    } else if (encoding == "MPEG4") {
        CopyValues(item, Append(configuration, "MPEG4"), kMpeg4);
    }
    EndConfiguration(request, configuration);
    envelope.Add(configuration->Parent()->ToElement(), "ForcePersistence", "true");
    return envelope.Print();
}

std::string BuildSetVideoEncoder20(const CommandRequest& request) {
    CEnvelopeFiller envelope(kSetVideoEncoder, "");
    const XMLElement* item = request.item;
    XMLElement* configuration = StartConfiguration(envelope, request, kMedia2Namespace);

    if (FirstChild(item, "frameRate") != nullptr || FirstChild(item, "bitrate") != nullptr) {
        XMLElement* rateControl = Append(configuration, "RateControl");
        CopyValues(item, rateControl, kFrameRate);
        CopyValues(item, rateControl, kBitrate);
    }
    const std::string_view encoding = TextAt(item, "encode");
    if (encoding == "H264" || encoding == "MPEG4" || encoding == "H265") {
        constexpr std::pair<const char*, const char*> kAttributes[] = {
            {"IFrameInterval", "GovLength"}, {"profile", "Profile"}};
        for (const auto& [parameter, attribute] : kAttributes) {
            if (const XMLElement* found = FirstChild(item, parameter)) {
                configuration->SetAttribute(attribute, std::string(TextOf(found)).c_str());
            }
        }
    }
    EndConfiguration(request, configuration);
    return envelope.Print();
}

}  // namespace onvif_client
