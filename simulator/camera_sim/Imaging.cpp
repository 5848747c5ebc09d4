// Imaging service.
#include <array>

#include "camera_sim/MediaElements.h"
#include "camera_sim/Operations.h"

namespace camera_sim {
namespace {

using Scope = XmlWriter::Scope;

constexpr Range kFullRange{-1, 1};
constexpr Range kFocusPosition{0, 1};
constexpr Range kFocusSpeed{0, 1};
constexpr Range kLevel{0, 100};

SoapFault NoSource() {
    return InvalidArgument("NoSource", "No such video source");
}

const VideoSource* RequestedSource(const Call& call) {
    return FindByToken(call.state.media.videoSources, call.Argument("VideoSourceToken"));
}

Answer GetMoveOptions(Call& call) {
    const VideoSource* source = RequestedSource(call);
    if (source == nullptr) return NoSource();
    const Scope options(call.out, Ns::kImaging, "MoveOptions");
    if (!source->motorizedFocus) return kDone;
    {
        const Scope absolute(call.out, Ns::kSchema, "Absolute");
        WriteRange(call.out, "Position", kFocusPosition);
        WriteRange(call.out, "Speed", kFocusSpeed);
    }
    {
        const Scope relative(call.out, Ns::kSchema, "Relative");
        WriteRange(call.out, "Distance", kFullRange);
        WriteRange(call.out, "Speed", kFocusSpeed);
    }
    const Scope continuous(call.out, Ns::kSchema, "Continuous");
    WriteRange(call.out, "Speed", kFullRange);
    return kDone;
}

void WriteModes(XmlWriter& out, std::string_view name, std::string_view first,
                std::string_view second) {
    out.Element(Ns::kSchema, name, first);
    out.Element(Ns::kSchema, name, second);
}

Answer GetOptions(Call& call) {
    const VideoSource* source = RequestedSource(call);
    if (source == nullptr) return NoSource();
    XmlWriter& out = call.out;
    const Scope options(out, Ns::kImaging, "ImagingOptions");
    {
        const Scope backlight(out, Ns::kSchema, "BacklightCompensation");
        WriteModes(out, "Mode", "OFF", "ON");
        WriteRange(out, "Level", kLevel);
    }
    WriteRange(out, "Brightness", kLevel);
    WriteRange(out, "ColorSaturation", kLevel);
    WriteRange(out, "Contrast", kLevel);
    if (source->motorizedFocus) {
        const Scope focus(out, Ns::kSchema, "Focus");
        WriteModes(out, "AutoFocusModes", "AUTO", "MANUAL");
        WriteRange(out, "DefaultSpeed", kFocusSpeed);
    }
    for (const char* mode : {"ON", "OFF", "AUTO"})
        out.Element(Ns::kSchema, "IrCutFilterModes", mode);
    WriteRange(out, "Sharpness", kLevel);
    {
        const Scope wide(out, Ns::kSchema, "WideDynamicRange");
        WriteModes(out, "Mode", "OFF", "ON");
        WriteRange(out, "Level", kLevel);
    }
    const Scope whiteBalance(out, Ns::kSchema, "WhiteBalance");
    WriteModes(out, "Mode", "AUTO", "MANUAL");
    return kDone;
}

constexpr std::array kOperations = {
    Operation{"GetMoveOptions", GetMoveOptions},
    Operation{"GetOptions", GetOptions},
};

}  // namespace

std::span<const Operation> ImagingOperations() {
    return kOperations;
}

}  // namespace camera_sim
