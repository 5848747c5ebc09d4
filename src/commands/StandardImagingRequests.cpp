#include "commands/Envelope.h"
#include "commands/EnvelopeFiller.h"
#include "commands/MergedValues.h"
#include "commands/StandardRequests.h"

namespace onvif_client {

namespace {

constexpr auto kSetImagingSettings = SoapEnvelope(
    kImg + kTt, FixedText("<img:SetImagingSettings><img:VideoSourceToken/><img:ImagingSettings/>"
                          "<img:ForcePersistence>true</img:ForcePersistence>"
                          "</img:SetImagingSettings>"));

constexpr MergedValue kLevels[] = {{"tt:Mode", "mode"}, {"tt:Level", "level"}};
constexpr MergedValue kWindow[] = {
    {"@bottom", "bottom"}, {"@top", "top"}, {"@right", "right"}, {"@left", "left"}};
constexpr MergedValue kExposure[] = {
    {"tt:Mode", "mode"},
    {"tt:Priority", "priority"},
    {"tt:Window", "window", kWindow},
    {"tt:MinExposureTime", "minExposureTime"},
    {"tt:MaxExposureTime", "maxExposureTime"},
    {"tt:MinGain", "minGain"},
    {"tt:MaxGain", "maxGain"},
    {"tt:MinIris", "minIris"},
    {"tt:MaxIris", "maxIris"},
    {"tt:ExposureTime", "exposureTime"},
    {"tt:Gain", "gain"},
    {"tt:Iris", "iris"},
};
constexpr MergedValue kFocus[] = {{"@AFMode"},
                                  {"tt:AutoFocusMode", "autoFocusMode"},
                                  {"tt:DefaultSpeed", "defaultSpeed"},
                                  {"tt:NearLimit", "nearLimit"},
                                  {"tt:FarLimit", "farLimit"}};
constexpr MergedValue kWhiteBalance[] = {
    {"tt:Mode", "mode"}, {"tt:CrGain", "crGain"}, {"tt:CbGain", "cbGain"}};
constexpr MergedValue kSettings[] = {
    {"tt:BacklightCompensation", "backlightcompensation", kLevels},
    {"tt:Brightness", "brightness"},
    {"tt:ColorSaturation", "saturation"},
    {"tt:Contrast", "contrast"},
    {"tt:Exposure", "exposure", kExposure},
    {"tt:Focus", "focus", kFocus},
    {"tt:IrCutFilter", "irCutFilter"},
    {"tt:Sharpness", "sharpness"},
    {"tt:WideDynamicRange", "wideDynamicRange", kLevels},
    {"tt:WhiteBalance", "whiteBalance", kWhiteBalance},
};

}  // namespace

std::string BuildStandardSetImageSettings(const CommandRequest& request) {
    CEnvelopeFiller envelope(kSetImagingSettings, "img:SetImagingSettings");
    envelope.Copy(request, "videoSourceToken", "img:VideoSourceToken");
    const XMLElement* present =
        FindElement(request.answer, "Envelope/Body/GetImagingSettingsResponse/ImagingSettings");
    MergeValues(request.command, present, envelope.Find("img:ImagingSettings"), kSettings);
    return envelope.Print();
}

}  // namespace onvif_client
