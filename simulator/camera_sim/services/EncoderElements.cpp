// Video and audio encoders as the two media services write them.
#include "camera_sim/services/MediaElements.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

}  // namespace

void WriteVideoEncoder10(CXmlWriter& out, Ns ns, std::string_view name, const Media& media,
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

void WriteAudioEncoder10(CXmlWriter& out, Ns ns, std::string_view name, const Media& media,
                         const AudioEncoder& encoder) {
    const Scope element(out, ns, name);
    WriteEntityToken(out, encoder.token);
    WriteEntityName(out, encoder.name, UseCount(media, &Profile::audioEncoder, encoder.token));
    out.Element(Ns::kSchema, "Encoding", encoder.encoding);
    out.Element(Ns::kSchema, "Bitrate", encoder.bitrate);
    out.Element(Ns::kSchema, "SampleRate", encoder.sampleRate);
    WriteMulticast(out, encoder.multicast);
    out.Element(Ns::kSchema, "SessionTimeout", "PT60S");
}

void WriteVideoEncoder20(CXmlWriter& out, Ns ns, std::string_view name, const Media& media,
                         const VideoEncoder& encoder) {
    const bool jpeg = encoder.encoding == "JPEG";
    const Scope element(out, ns, name);
    WriteEntityToken(out, encoder.token);
    if (!jpeg) {
        out.Attribute("GovLength", encoder.govLength);
        out.Attribute("Profile", encoder.profile);
    }
    WriteEntityName(out, encoder.name, UseCount(media, &Profile::videoEncoder, encoder.token));
    out.Element(Ns::kSchema, "Encoding",
                encoder.encoding == "MPEG4" ? "MPV4-ES" : std::string_view(encoder.encoding));
    WriteResolution(out, encoder.resolution);
    {
        const Scope rate(out, Ns::kSchema, "RateControl");
        out.Attribute("ConstantBitRate", encoder.constantBitrate);
        out.Element(Ns::kSchema, "FrameRateLimit", encoder.frameRate);
        out.Element(Ns::kSchema, "BitrateLimit", encoder.bitrate);
    }
    WriteMulticast(out, encoder.multicast);
    out.Element(Ns::kSchema, "Quality", encoder.quality);
}

void WriteAudioEncoder20(CXmlWriter& out, Ns ns, std::string_view name, const Media& media,
                         const AudioEncoder& encoder) {
    // The second version takes MIME subtypes.
    const bool g711 = encoder.encoding == "G711";
    const Scope element(out, ns, name);
    WriteEntityToken(out, encoder.token);
    WriteEntityName(out, encoder.name, UseCount(media, &Profile::audioEncoder, encoder.token));
    out.Element(Ns::kSchema, "Encoding", g711 ? "PCMU" : encoder.encoding);
    WriteMulticast(out, encoder.multicast);
    out.Element(Ns::kSchema, "Bitrate", encoder.bitrate);
    out.Element(Ns::kSchema, "SampleRate", encoder.sampleRate);
}

}  // namespace camera_sim
