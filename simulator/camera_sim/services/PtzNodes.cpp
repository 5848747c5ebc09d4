// PTZ service: the node that moves, its configuration and what both can do.
#include <array>

#include "camera_sim/services/MediaElements.h"
#include "camera_sim/services/MediaOperations.h"
#include "camera_sim/services/PtzOperations.h"
#include "camera_sim/services/Services.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

constexpr Range kSpeed{0, 1};

void WriteSpaces(CXmlWriter& out, std::string_view name, const PtzConfiguration& ptz) {
    const Scope spaces(out, Ns::kSchema, name);
    WriteSpace(out, "AbsolutePanTiltPositionSpace", ptz_space::kPanTiltPosition, ptz.pan, ptz.tilt);
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

Answer GetConfigurationOptions(Call& call) {
    const auto* configuration =
        FindByToken(call.state.media.ptz, call.Argument("ConfigurationToken"));
    if (configuration == nullptr) {
        return InvalidArgument("NoConfig", "No such PTZ configuration");
    }
    CXmlWriter& out = call.out;
    const Scope options(out, Ns::kPtz, "PTZConfigurationOptions");
    WriteSpaces(out, "Spaces", *configuration);
    const Scope timeout(out, Ns::kSchema, "PTZTimeout");
    out.Element(Ns::kSchema, "Min", DurationText(configuration->minimumTimeout));
    out.Element(Ns::kSchema, "Max", DurationText(configuration->maximumTimeout));
    return kDone;
}

void WriteConfiguration(const Call& call, const PtzConfiguration& configuration) {
    WritePtz(call.out, Ns::kPtz, "PTZConfiguration", call.state.media, configuration);
}

Answer GetConfigurations(Call& call) {
    for (const PtzConfiguration& configuration : call.state.media.ptz) {
        WriteConfiguration(call, configuration);
    }
    return kDone;
}

Answer GetCompatibleConfigurations(Call& call) {
    if (FindProfile(call) == nullptr) {
        return NoSuchProfile();
    }
    return GetConfigurations(call);
}

Answer GetConfiguration(Call& call) {
    const auto* configuration =
        FindByToken(call.state.media.ptz, call.Argument("PTZConfigurationToken"));
    if (configuration == nullptr) {
        return InvalidArgument("NoConfig", "No such PTZ configuration");
    }
    WriteConfiguration(call, *configuration);
    return kDone;
}

void WriteNode(CXmlWriter& out, const PtzConfiguration& ptz) {
    const Scope node(out, Ns::kPtz, "PTZNode");
    out.Attribute("token", ptz.node);
    out.Attribute("FixedHomePosition", false);
    out.Element(Ns::kSchema, "Name", ptz.node);
    WriteSpaces(out, "SupportedPTZSpaces", ptz);
    out.Element(Ns::kSchema, "MaximumNumberOfPresets", static_cast<int>(kMostPresets));
    out.Element(Ns::kSchema, "HomeSupported", true);
    const Scope extension(out, Ns::kSchema, "Extension");
    const Scope tours(out, Ns::kSchema, "SupportedPresetTour");
    out.Element(Ns::kSchema, "MaximumNumberOfPresetTours", static_cast<int>(kMostTours));
    for (const TourOrder& order : kTourOrders) {
        out.Element(Ns::kSchema, "PTZPresetTourOperation", order.operation);
    }
}

Answer GetNodes(Call& call) {
    for (const PtzConfiguration& ptz : call.state.media.ptz) {
        WriteNode(call.out, ptz);
    }
    return kDone;
}

Answer GetNode(Call& call) {
    for (const PtzConfiguration& ptz : call.state.media.ptz) {
        if (ptz.node == call.Argument("NodeToken")) {
            WriteNode(call.out, ptz);
            return kDone;
        }
    }
    return InvalidArgument("NoEntity", "No such PTZ node");
}

constexpr std::array kOperations = {
    Operation{"GetNodes", GetNodes},
    Operation{"GetNode", GetNode},
    Operation{"GetConfigurations", GetConfigurations},
    Operation{"GetConfiguration", GetConfiguration},
    Operation{"GetCompatibleConfigurations", GetCompatibleConfigurations},
    Operation{"GetConfigurationOptions", GetConfigurationOptions},
};

}  // namespace

std::span<const Operation> PtzNodeOperations() {
    return kOperations;
}

}  // namespace camera_sim
