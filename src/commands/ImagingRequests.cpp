#include "commands/Envelope.h"
#include "commands/EnvelopeFiller.h"
#include "commands/ServiceRequests.h"
#include "transform/Conversions.h"
#include "transform/CopiedValues.h"

namespace onvif_client {

namespace {

constexpr auto kGetMoveOptions = SoapEnvelope(
    kImg, FixedText("<img:GetMoveOptions><img:VideoSourceToken/></img:GetMoveOptions>"));
constexpr auto kGetOptions =
    SoapEnvelope(kImg, FixedText("<img:GetOptions><img:VideoSourceToken/></img:GetOptions>"));
constexpr auto kStop =
    SoapEnvelope(kImg, FixedText("<img:Stop><img:VideoSourceToken/></img:Stop>"));
constexpr auto kMove = SoapEnvelope(
    kImg + kTt, FixedText("<img:Move><img:VideoSourceToken/><img:Focus><tt:Continuous><tt:Speed/>"
                          "</tt:Continuous></img:Focus></img:Move>"));

constexpr auto kGetImagingSettings = SoapEnvelope(
    FixedText(""), FixedText("<GetImagingSettings xmlns=\"http://www.onvif.org/ver20/imaging/wsdl\""
                             "><VideoSourceToken/></GetImagingSettings>"));
constexpr auto kSetImagingSettings = SoapEnvelope(
    FixedText(""), FixedText("<SetImagingSettings xmlns=\"http://www.onvif.org/ver20/imaging/wsdl\""
                             "><VideoSourceToken/><ImagingSettings"
                             " xmlns=\"http://www.onvif.org/ver10/schema\"/>"
                             "<ForcePersistence>true</ForcePersistence></SetImagingSettings>"));

constexpr CopiedValue kLevels[] = {{"mode", "Mode"}, {"level", "Level"}};
constexpr CopiedValue kExposure[] = {
    {"mode", "Mode"},
    {"priority", "Priority"},
    {"maxGain", "MaxGain"},
    {"minGain", "MinGain"},
    {"minIris", "MinIris"},
    {"maxIris", "MaxIris"},
    {"exposureTime", "ExposureTime"},
    {"gain", "Gain"},
    {"iris", "Iris"},
};
constexpr CopiedValue kFocus[] = {{"autoFocusMode", "AutoFocusMode"},
                                  {"defaultSpeed", "DefaultSpeed"},
                                  {"nearLimit", "NearLimit"},
                                  {"farLimit", "FarLimit"}};
constexpr CopiedValue kWhiteBalance[] = {
    {"mode", "Mode"}, {"crGain", "CrGain"}, {"cbGain", "CbGain"}};
constexpr CopiedValue kSettings[] = {
    {"backlightcompensation", "BacklightCompensation", kLevels},
    {"brightness", "Brightness"},
    {"saturation", "ColorSaturation"},
    {"contrast", "Contrast"},
    {"exposure", "Exposure", kExposure},
    {"focus", "Focus", kFocus},
    {"irCutFilter", "IrCutFilter"},
    {"sharpness", "Sharpness"},
    {"wideDynamicRange", "WideDynamicRange", kLevels},
    {"whiteBalance", "WhiteBalance", kWhiteBalance},
};

}  // namespace

std::string BuildGetMoveOptions(const std::string& videoSourceToken) {
    CEnvelopeFiller envelope(kGetMoveOptions, "img:GetMoveOptions");
    envelope.Set("img:VideoSourceToken", videoSourceToken);
    return envelope.Print();
}

std::string BuildGetImageOptions(const CommandRequest& request) {
    CEnvelopeFiller envelope(kGetOptions, "img:GetOptions");
    envelope.Copy(request, "videoSourceToken", "img:VideoSourceToken");
    return envelope.Print();
}

std::string BuildGetImageSettings(const CommandRequest& request) {
    CEnvelopeFiller envelope(kGetImagingSettings, "GetImagingSettings");
    envelope.Copy(request, "videoSourceToken", "VideoSourceToken");
    return envelope.Print();
}

std::string BuildSetImageSettings(const CommandRequest& request) {
    CEnvelopeFiller envelope(kSetImagingSettings, "SetImagingSettings");
    envelope.Copy(request, "videoSourceToken", "VideoSourceToken");
    CopyValues(request.command, envelope.Find("ImagingSettings"), kSettings);
    return envelope.Print();
}

std::string BuildImageStop(const CommandRequest& request) {
    CEnvelopeFiller envelope(kStop, "img:Stop");
    envelope.Set("img:VideoSourceToken", request.profile->videoSourceToken);
    return envelope.Print();
}

std::string BuildContinuousFocus(const CommandRequest& request) {
    CEnvelopeFiller envelope(kMove, "img:Move");
    envelope.Copy(request, "videoSourcetoken", "img:VideoSourceToken");
    envelope.Set("img:Focus/tt:Continuous/tt:Speed", DecimalText(ToReal(request.Text("speed")), 6));
    return envelope.Print();
}

}  // namespace onvif_client
