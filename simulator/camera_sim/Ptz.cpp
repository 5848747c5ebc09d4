// PTZ service.
#include <array>

#include "camera_sim/MediaElements.h"
#include "camera_sim/Operations.h"

namespace camera_sim {
namespace {

using Scope = XmlWriter::Scope;

constexpr Range kSpeed{0, 1};

Answer GetConfigurationOptions(Call& call) {
    const auto* configuration =
        FindByToken(call.state.media.ptz, call.Argument("ConfigurationToken"));
    if (configuration == nullptr) return InvalidArgument("NoConfig", "No such PTZ configuration");
    XmlWriter& out = call.out;
    const Scope options(out, Ns::kPtz, "PTZConfigurationOptions");
    {
        const PtzConfiguration& ptz = *configuration;
        const Scope spaces(out, Ns::kSchema, "Spaces");
        WriteSpace(out, "AbsolutePanTiltPositionSpace", ptz_space::kPanTiltPosition, ptz.pan,
                   ptz.tilt);
        WriteSpace(out, "AbsoluteZoomPositionSpace", ptz_space::kZoomPosition, ptz.zoom);
        WriteSpace(out, "RelativePanTiltTranslationSpace", ptz_space::kPanTiltTranslation, ptz.pan,
                   ptz.tilt);
        WriteSpace(out, "RelativeZoomTranslationSpace", ptz_space::kZoomTranslation,
                   {-ptz.zoom.maximum, ptz.zoom.maximum});
        WriteSpace(out, "ContinuousPanTiltVelocitySpace", ptz_space::kPanTiltVelocity, ptz.panSpeed,
                   ptz.tiltSpeed);
        WriteSpace(out, "ContinuousZoomVelocitySpace", ptz_space::kZoomVelocity, ptz.zoomSpeed);
        WriteSpace(out, "PanTiltSpeedSpace", ptz_space::kPanTiltSpeed, kSpeed);
        WriteSpace(out, "ZoomSpeedSpace", ptz_space::kZoomSpeed, kSpeed);
    }
    const Scope timeout(out, Ns::kSchema, "PTZTimeout");
    out.Element(Ns::kSchema, "Min", DurationText(configuration->minimumTimeout));
    out.Element(Ns::kSchema, "Max", DurationText(configuration->maximumTimeout));
    return kDone;
}

constexpr std::array kOperations = {
    Operation{"GetConfigurationOptions", GetConfigurationOptions},
};

}  // namespace

std::span<const Operation> PtzOperations() {
    return kOperations;
}

}  // namespace camera_sim
