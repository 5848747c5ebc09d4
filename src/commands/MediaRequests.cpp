#include "commands/Envelope.h"
#include "commands/EnvelopeFiller.h"
#include "commands/ServiceRequests.h"

namespace onvif_client {

namespace {

constexpr auto kGetProfiles10 = SoapEnvelope(kMdw, FixedText("<mdw:GetProfiles/>"));
// Without a type a ver20 service lists the profiles without their configurations.
constexpr auto kGetProfiles20 = SoapEnvelope(
    kTrt2, FixedText("<trt2:GetProfiles><trt2:Type>All</trt2:Type></trt2:GetProfiles>"));

constexpr auto kGetProfile =
    SoapEnvelope(kMdw, FixedText("<mdw:GetProfile><mdw:ProfileToken/></mdw:GetProfile>"));

constexpr auto kGetStreamUri = SoapEnvelope(
    kMdw + kTt,
    FixedText("<mdw:GetStreamUri><mdw:StreamSetup><tt:Stream>RTP-Unicast</tt:Stream><tt:Transport>"
              "<tt:Protocol>RTSP</tt:Protocol></tt:Transport></mdw:StreamSetup>"
              "<mdw:ProfileToken/></mdw:GetStreamUri>"));

constexpr auto kGetSnapshotUri =
    SoapEnvelope(kMdw, FixedText("<mdw:GetSnapshotUri><mdw:ProfileToken/></mdw:GetSnapshotUri>"));

// "RTSP" of the ver20 service is what the request above says: RTP over the connection of RTSP.
constexpr auto kGetStreamUri20 =
    SoapEnvelope(kTrt2, FixedText("<trt2:GetStreamUri><trt2:Protocol>RTSP</trt2:Protocol>"
                                  "<trt2:ProfileToken/></trt2:GetStreamUri>"));
constexpr auto kGetSnapshotUri20 = SoapEnvelope(
    kTrt2, FixedText("<trt2:GetSnapshotUri><trt2:ProfileToken/></trt2:GetSnapshotUri>"));

constexpr auto kGetVideoEncoder =
    SoapEnvelope(kMdw, FixedText("<mdw:GetVideoEncoderConfiguration><mdw:ConfigurationToken/>"
                                 "</mdw:GetVideoEncoderConfiguration>"));

constexpr auto kGetVideoEncoderOptions10 =
    SoapEnvelope(kMdw, FixedText("<mdw:GetVideoEncoderConfigurationOptions>"
                                 "<mdw:ConfigurationToken/><mdw:ProfileToken/>"
                                 "</mdw:GetVideoEncoderConfigurationOptions>"));
constexpr auto kGetVideoEncoderOptions20 =
    SoapEnvelope(kTrt2, FixedText("<trt2:GetVideoEncoderConfigurationOptions>"
                                  "<trt2:ConfigurationToken/><trt2:ProfileToken/>"
                                  "</trt2:GetVideoEncoderConfigurationOptions>"));

}  // namespace

std::string BuildGetProfiles10(const CommandRequest&) {
    return std::string(kGetProfiles10);
}

std::string BuildGetProfiles20(const CommandRequest&) {
    return std::string(kGetProfiles20);
}

std::string BuildGetProfile(const CommandRequest& request) {
    CEnvelopeFiller envelope(kGetProfile, "mdw:GetProfile");
    envelope.Set("mdw:ProfileToken", request.profile->token);
    return envelope.Print();
}

std::string BuildGetStreamUri(const CommandRequest& request) {
    // Always unicast over RTSP: "multicast" and "transport" of the request change nothing.
    CEnvelopeFiller envelope(kGetStreamUri, "mdw:GetStreamUri");
    envelope.Copy(request, "profiletoken", "mdw:ProfileToken");
    return envelope.Print();
}

std::string BuildGetSnapshotUri(const CommandRequest& request) {
    CEnvelopeFiller envelope(kGetSnapshotUri, "mdw:GetSnapshotUri");
    envelope.Copy(request, "profiletoken", "mdw:ProfileToken");
    return envelope.Print();
}

std::string BuildGetStreamUri20(const CommandRequest& request) {
    CEnvelopeFiller envelope(kGetStreamUri20, "trt2:GetStreamUri");
    envelope.Copy(request, "profiletoken", "trt2:ProfileToken");
    return envelope.Print();
}

std::string BuildGetSnapshotUri20(const CommandRequest& request) {
    CEnvelopeFiller envelope(kGetSnapshotUri20, "trt2:GetSnapshotUri");
    envelope.Copy(request, "profiletoken", "trt2:ProfileToken");
    return envelope.Print();
}

std::string BuildGetVideoEncoder(const CommandRequest& request) {
    CEnvelopeFiller envelope(kGetVideoEncoder, "mdw:GetVideoEncoderConfiguration");
    envelope.Set("mdw:ConfigurationToken", request.profile->videoEncoderConfigurationToken);
    return envelope.Print();
}

std::string BuildGetVideoEncoderOptions10(const CommandRequest& request) {
    CEnvelopeFiller envelope(kGetVideoEncoderOptions10, "mdw:GetVideoEncoderConfigurationOptions");
    envelope.Set("mdw:ConfigurationToken", request.profile->videoEncoderConfigurationToken);
    envelope.Set("mdw:ProfileToken", request.profile->token);
    return envelope.Print();
}

std::string BuildGetVideoEncoderOptions20(const CommandRequest& request) {
    CEnvelopeFiller envelope(kGetVideoEncoderOptions20, "trt2:GetVideoEncoderConfigurationOptions");
    envelope.Set("trt2:ConfigurationToken", request.profile->videoEncoderConfigurationToken);
    envelope.Set("trt2:ProfileToken", request.profile->token);
    return envelope.Print();
}

}  // namespace onvif_client
