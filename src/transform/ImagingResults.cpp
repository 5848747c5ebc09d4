#include "transform/ImagingResults.h"

namespace onvif_client {

namespace {

constexpr CopiedValue kLevels[] = {{"Mode", "mode"}, {"Level", "level"}};
constexpr CopiedValue kWindow[] = {
    {"@bottom", "bottom"}, {"@top", "top"}, {"@right", "right"}, {"@left", "left"}};
constexpr CopiedValue kExposure[] = {
    {"Mode", "mode"},
    {"Priority", "priority"},
    {"Window", "window", kWindow},
    {"MinExposureTime", "minExposureTime"},
    {"MaxExposureTime", "maxExposureTime"},
    {"MinGain", "minGain"},
    {"MaxGain", "maxGain"},
    {"MinIris", "minIris"},
    {"MaxIris", "maxIris"},
    {"ExposureTime", "exposureTime"},
    {"Gain", "gain"},
    {"Iris", "iris"},
};
constexpr CopiedValue kFocus[] = {{"AutoFocusMode", "autoFocusMode"},
                                  {"DefaultSpeed", "defaultSpeed"},
                                  {"NearLimit", "nearLimit"},
                                  {"FarLimit", "farLimit"}};
constexpr CopiedValue kWhiteBalance[] = {
    {"Mode", "mode"}, {"CrGain", "crGain"}, {"CbGain", "cbGain"}};
constexpr CopiedValue kSettings[] = {
    {"BacklightCompensation", "backlightcompensation", kLevels},
    {"Brightness", "brightness"},
    {"ColorSaturation", "saturation"},
    {"Contrast", "contrast"},
    {"Exposure", "exposure", kExposure},
    {"Focus", "focus", kFocus},
    {"IrCutFilter", "irCutFilter"},
    {"Sharpness", "sharpness"},
    {"WideDynamicRange", "wideDynamicRange", kLevels},
    {"WhiteBalance", "whiteBalance", kWhiteBalance},
};

constexpr CopiedValue kRange[] = {{"Min", "min"}, {"Max", "max"}};
constexpr CopiedValue kLevelOptions[] = {{"Mode*", "mode"}, {"Level", "level", kRange}};
constexpr CopiedValue kExposureOptions[] = {
    {"Mode*", "mode"},
    {"Priority*", "priority"},
    {"MinExposureTime", "minExposureTime", kRange},
    {"MaxExposureTime", "maxExposureTime", kRange},
    {"MinGain", "minGain", kRange},
    {"MaxGain", "maxGain", kRange},
    {"MinIris", "minIris", kRange},
    {"MaxIris", "maxIris", kRange},
    {"ExposureTime", "exposureTime", kRange},
    {"Gain", "gain", kRange},
    {"Iris", "iris", kRange},
};
constexpr CopiedValue kFocusOptions[] = {{"AutoFocusModes*", "autoFocusMode"},
                                         {"DefaultSpeed", "defaultSpeed", kRange},
                                         {"NearLimit", "nearLimit", kRange},
                                         {"FarLimit", "farLimit", kRange}};
// The options spell the gains otherwise than the settings do.
constexpr CopiedValue kWhiteBalanceOptions[] = {
    {"Mode*", "mode"}, {"YrGain", "crGain", kRange}, {"YbGain", "cbGain", kRange}};
constexpr CopiedValue kOptions[] = {
    {"BacklightCompensation", "backlightcompensation", kLevelOptions},
    {"Brightness", "brightness", kRange},
    {"ColorSaturation", "saturation", kRange},
    {"Contrast", "contrast", kRange},
    {"Exposure", "exposure", kExposureOptions},
    {"Focus", "focus", kFocusOptions},
    {"IrCutFilterModes*", "irCutFilter"},
    {"Sharpness", "sharpness", kRange},
    {"WideDynamicRange", "wideDynamicRange", kLevelOptions},
    {"WhiteBalance", "whiteBalance", kWhiteBalanceOptions},
};

void CopySettings(const ReplyValues& reply, XMLElement* command) {
    CopyValues(
        FindElement(reply.envelope, "Envelope/Body/GetImagingSettingsResponse/ImagingSettings"),
        command, kSettings);
}

void CopyOptions(const ReplyValues& reply, XMLElement* command) {
    CopyValues(FindElement(reply.envelope, "Envelope/Body/GetOptionsResponse/ImagingOptions"),
               command, kOptions);
}

}  // namespace

constinit const ResultFrame kImageSettingsResult = {"GetResponse", "imageSettings", CopySettings};
constinit const ResultFrame kImageOptionsResult = {"GetResponse", "imageOpts", CopyOptions};

}  // namespace onvif_client
