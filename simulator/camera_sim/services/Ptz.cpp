// PTZ service.
#include <algorithm>
#include <array>
#include <utility>

#include "camera_sim/services/MediaElements.h"
#include "camera_sim/services/MediaOperations.h"
#include "camera_sim/services/Services.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

constexpr Range kSpeed{0, 1};

Answer GetConfigurationOptions(Call& call) {
    const auto* configuration =
        FindByToken(call.state.media.ptz, call.Argument("ConfigurationToken"));
    if (configuration == nullptr) {
        return InvalidArgument("NoConfig", "No such PTZ configuration");
    }
    CXmlWriter& out = call.out;
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

std::chrono::steady_clock::time_point Now() {
    return std::chrono::steady_clock::now();
}

/// A number between -1 and 1, as all spaces of this camera have it.
std::optional<double> ReadShare(const XmlElement* element, const char* attribute) {
    const char* text = element == nullptr ? nullptr : element->Attribute(attribute);
    if (text == nullptr) {
        return std::nullopt;
    }
    const auto value = ToDouble(text);
    return value && *value >= -1 && *value <= 1 ? value : std::nullopt;
}

/// The fault for a profile that cannot move; nothing for one that can.
Answer CheckProfile(const Call& call) {
    const auto* profile = FindProfile(call);
    if (profile == nullptr) {
        return NoSuchProfile();
    }
    if (profile->ptz.empty()) {
        return InvalidArgument("NoPTZProfile", "The profile has no PTZ");
    }
    return kDone;
}

/// Whatever moves the head ends the tour that it is on.
void MoveOn(PtzHead& head, const PtzPosition& velocity) {
    const auto now = Now();
    head.start = head.Position(now);
    head.since = now;
    head.velocity = velocity;
    for (PtzTour& tour : head.tours) {
        tour.state = "Idle";
    }
}

void JumpTo(PtzHead& head, const PtzPosition& position) {
    MoveOn(head, {});
    head.start = position;
}

Answer ContinuousMove(Call& call) {
    if (auto fault = CheckProfile(call)) {
        return fault;
    }
    const XmlElement* velocity = Child(&call.request, "Velocity");
    const XmlElement* panTilt = Child(velocity, "PanTilt");
    const XmlElement* zoom = Child(velocity, "Zoom");
    const auto x = ReadShare(panTilt, "x");
    const auto y = ReadShare(panTilt, "y");
    const auto z = ReadShare(zoom, "x");
    if ((panTilt != nullptr && (!x || !y)) || (zoom != nullptr && !z)) {
        return InvalidArgument("InvalidVelocity", "The velocity is out of range");
    }
    const PtzPosition before = call.state.ptz.velocity;
    MoveOn(call.state.ptz,
           {x.value_or(before.pan), y.value_or(before.tilt), z.value_or(before.zoom)});
    return kDone;
}

Answer Stop(Call& call) {
    if (auto fault = CheckProfile(call)) {
        return fault;
    }
    const bool panTilt = ToBool(call.Argument("PanTilt")).value_or(true);
    const bool zoom = ToBool(call.Argument("Zoom")).value_or(true);
    PtzPosition velocity = call.state.ptz.velocity;
    if (panTilt) {
        velocity.pan = velocity.tilt = 0;
    }
    if (zoom) {
        velocity.zoom = 0;
    }
    MoveOn(call.state.ptz, velocity);
    return kDone;
}

void WritePosition(CXmlWriter& out, std::string_view name, const PtzPosition& position) {
    const Scope element(out, Ns::kSchema, name);
    {
        const Scope panTilt(out, Ns::kSchema, "PanTilt");
        out.Attribute("x", CXmlWriter::NumberText(position.pan));
        out.Attribute("y", CXmlWriter::NumberText(position.tilt));
        out.Attribute("space", ptz_space::kPanTiltPosition);
    }
    const Scope zoom(out, Ns::kSchema, "Zoom");
    out.Attribute("x", CXmlWriter::NumberText(position.zoom));
    out.Attribute("space", ptz_space::kZoomPosition);
}

Answer GetPresets(Call& call) {
    if (auto fault = CheckProfile(call)) {
        return fault;
    }
    for (const PtzPreset& preset : call.state.ptz.presets) {
        const Scope element(call.out, Ns::kPtz, "Preset");
        call.out.Attribute("token", preset.token);
        call.out.Element(Ns::kSchema, "Name", preset.name);
        WritePosition(call.out, "PTZPosition", preset.position);
    }
    return kDone;
}

Answer SetPreset(Call& call) {
    constexpr std::size_t kMostPresets = 256;
    if (auto fault = CheckProfile(call)) {
        return fault;
    }
    PtzHead& head = call.state.ptz;
    const std::string_view token = call.Argument("PresetToken");
    PtzPreset* preset = FindByToken(head.presets, token);
    if (preset == nullptr) {
        if (!token.empty()) {
            return InvalidArgument("NoToken", "No such preset");
        }
        if (head.presets.size() >= kMostPresets) {
            return SoapFault{"Receiver", "Action", "TooManyPresets", "No more presets"};
        }
        head.presets.push_back({"Preset_" + std::to_string(++head.lastNumber), {}, {}});
        preset = &head.presets.back();
        preset->name = preset->token;
    }
    const std::string_view name = call.Argument("PresetName");
    if (!name.empty()) {
        preset->name = name;
    }
    preset->position = head.Position(Now());
    call.out.Element(Ns::kPtz, "PresetToken", preset->token);
    return kDone;
}

Answer RemovePreset(Call& call) {
    if (auto fault = CheckProfile(call)) {
        return fault;
    }
    const std::string_view token = call.Argument("PresetToken");
    const auto removed = std::erase_if(
        call.state.ptz.presets, [token](const PtzPreset& preset) { return preset.token == token; });
    if (removed == 0) {
        return InvalidArgument("NoToken", "No such preset");
    }
    return kDone;
}

Answer GotoPreset(Call& call) {
    if (auto fault = CheckProfile(call)) {
        return fault;
    }
    const auto* preset = FindByToken(call.state.ptz.presets, call.Argument("PresetToken"));
    if (preset == nullptr) {
        return InvalidArgument("NoToken", "No such preset");
    }
    JumpTo(call.state.ptz, preset->position);
    return kDone;
}

Answer GetPresetTours(Call& call) {
    if (auto fault = CheckProfile(call)) {
        return fault;
    }
    CXmlWriter& out = call.out;
    for (const PtzTour& tour : call.state.ptz.tours) {
        const Scope element(out, Ns::kPtz, "PresetTour");
        out.Attribute("token", tour.token);
        out.Element(Ns::kSchema, "Name", tour.name);
        {
            const Scope status(out, Ns::kSchema, "Status");
            out.Element(Ns::kSchema, "State", tour.state);
        }
        out.Element(Ns::kSchema, "AutoStart", false);
        { const Scope condition(out, Ns::kSchema, "StartingCondition"); }
        for (const PtzTourSpot& spot : tour.spots) {
            const Scope place(out, Ns::kSchema, "TourSpot");
            {
                const Scope detail(out, Ns::kSchema, "PresetDetail");
                out.Element(Ns::kSchema, "PresetToken", spot.preset);
            }
            out.Element(Ns::kSchema, "StayTime", DurationText(spot.stay));
        }
    }
    return kDone;
}

Answer CreatePresetTour(Call& call) {
    constexpr std::size_t kMostTours = 16;
    if (auto fault = CheckProfile(call)) {
        return fault;
    }
    PtzHead& head = call.state.ptz;
    if (head.tours.size() >= kMostTours) {
        return SoapFault{"Receiver", "Action", "TooManyPresetTours", "No more tours"};
    }
    const std::string token = "Tour_" + std::to_string(++head.lastNumber);
    head.tours.push_back({token, token, "Idle", {}});
    call.out.Element(Ns::kPtz, "PresetTourToken", token);
    return kDone;
}

/// "PT10S"; nothing for another form.
std::optional<std::chrono::seconds> ReadStay(std::string_view text) {
    if (!text.starts_with("PT") || !text.ends_with("S")) {
        return std::nullopt;
    }
    const auto seconds = ToInt(text.substr(2, text.size() - 3));
    if (!seconds || *seconds < 0) {
        return std::nullopt;
    }
    return std::chrono::seconds(*seconds);
}

Answer ModifyPresetTour(Call& call) {
    if (auto fault = CheckProfile(call)) {
        return fault;
    }
    const XmlElement* given = Child(&call.request, "PresetTour");
    const char* token = given == nullptr ? nullptr : given->Attribute("token");
    PtzTour* tour = FindByToken(call.state.ptz.tours, token == nullptr ? "" : token);
    if (tour == nullptr) {
        return InvalidArgument("NoToken", "No such tour");
    }
    std::vector<PtzTourSpot> spots;
    for (const XmlElement* spot : Children(given, "TourSpot")) {
        const std::string preset(ChildText(Child(spot, "PresetDetail"), "PresetToken"));
        const auto stay = ReadStay(ChildText(spot, "StayTime"));
        if (FindByToken(call.state.ptz.presets, preset) == nullptr || !stay) {
            return InvalidArgument("InvalidPresetTour", "A spot of the tour is not valid");
        }
        spots.push_back({preset, *stay});
    }
    tour->name = ChildText(given, "Name");
    tour->spots = std::move(spots);
    return kDone;
}

Answer RemovePresetTour(Call& call) {
    if (auto fault = CheckProfile(call)) {
        return fault;
    }
    const std::string_view token = call.Argument("PresetTourToken");
    const auto removed = std::erase_if(
        call.state.ptz.tours, [token](const PtzTour& tour) { return tour.token == token; });
    if (removed == 0) {
        return InvalidArgument("NoToken", "No such tour");
    }
    return kDone;
}

Answer OperatePresetTour(Call& call) {
    constexpr std::pair<std::string_view, const char*> kStates[] = {
        {"Start", "Touring"}, {"Stop", "Idle"}, {"Pause", "Paused"}};
    if (auto fault = CheckProfile(call)) {
        return fault;
    }
    PtzHead& head = call.state.ptz;
    PtzTour* tour = FindByToken(head.tours, call.Argument("PresetTourToken"));
    if (tour == nullptr) {
        return InvalidArgument("NoToken", "No such tour");
    }
    for (const auto& [operation, state] : kStates) {
        if (call.Argument("Operation") != operation) {
            continue;
        }
        MoveOn(head, {});
        tour->state = state;
        return kDone;
    }
    return InvalidArgument("InvalidPresetTour", "No such operation");
}

/// The vendor's move to what a rectangle on the picture (0 to 255 either way) shows.
Answer Control3d(Call& call) {
    constexpr double kWidth = 255;
    const auto x = ToInt(call.Argument("CenterPositionX"));
    const auto y = ToInt(call.Argument("CenterPositionY"));
    const auto left = ToInt(call.Argument("StartPositionX"));
    const auto right = ToInt(call.Argument("EndPositionX"));
    if (!x || !y || !left || !right) {
        return InvalidArgument("InvalidPosition", "The rectangle is not complete");
    }
    PtzPosition target = call.state.ptz.Position(Now());
    target.pan = std::clamp(target.pan + *x / kWidth - 0.5, -1.0, 1.0);
    target.tilt = std::clamp(target.tilt + 0.5 - *y / kWidth, -1.0, 1.0);
    target.zoom = std::clamp(target.zoom + (*right > *left ? 0.1 : -0.1), 0.0, 1.0);
    JumpTo(call.state.ptz, target);
    return kDone;
}

constexpr std::array kOperations = {
    Operation{"GetConfigurationOptions", GetConfigurationOptions},
    Operation{"ContinuousMove", ContinuousMove},
    Operation{"Stop", Stop},
    Operation{"GetPresets", GetPresets},
    Operation{"SetPreset", SetPreset},
    Operation{"RemovePreset", RemovePreset},
    Operation{"GotoPreset", GotoPreset},
    Operation{"GetPresetTours", GetPresetTours},
    Operation{"CreatePresetTour", CreatePresetTour},
    Operation{"ModifyPresetTour", ModifyPresetTour},
    Operation{"RemovePresetTour", RemovePresetTour},
    Operation{"OperatePresetTour", OperatePresetTour},
    // An element of its own name would not be XML: it starts with a digit.
    Operation{"3DControl", Control3d, "AbsoluteMoveResponse"},
};

/// Where a tour that started `elapsed` ago has come; it begins again behind its last spot.
const PtzPreset* PresetOnTour(const PtzHead& head, const PtzTour& tour,
                              std::chrono::steady_clock::duration elapsed) {
    std::chrono::seconds round{0};
    for (const PtzTourSpot& spot : tour.spots) {
        round += spot.stay;
    }
    if (round.count() > 0) {
        elapsed %= round;
    }
    for (const PtzTourSpot& spot : tour.spots) {
        if (elapsed < spot.stay || round.count() == 0) {
            return FindByToken(head.presets, spot.preset);
        }
        elapsed -= spot.stay;
    }
    return nullptr;
}

}  // namespace

PtzPosition PtzHead::Position(std::chrono::steady_clock::time_point now) const {
    for (const PtzTour& tour : tours) {
        if (tour.state != "Touring") {
            continue;
        }
        const PtzPreset* preset = PresetOnTour(*this, tour, now - since);
        return preset == nullptr ? start : preset->position;
    }
    const double seconds = std::chrono::duration<double>(now - since).count();
    const auto at = [seconds](double from, double speed, double least) {
        return std::clamp(from + speed * seconds, least, 1.0);
    };
    return {at(start.pan, velocity.pan, -1), at(start.tilt, velocity.tilt, -1),
            at(start.zoom, velocity.zoom, 0)};
}

std::span<const Operation> PtzOperations() {
    return kOperations;
}

}  // namespace camera_sim
