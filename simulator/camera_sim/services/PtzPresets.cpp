// PTZ service: presets and the tours over them.
#include <array>
#include <utility>

#include "camera_sim/services/MediaElements.h"
#include "camera_sim/services/PtzOperations.h"
#include "camera_sim/services/Services.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

Answer GetPresets(Call& call) {
    if (auto fault = CheckProfile(call)) {
        return fault;
    }
    for (const PtzPreset& preset : call.state.ptz.presets) {
        const Scope element(call.out, Ns::kPtz, "Preset");
        call.out.Attribute("token", preset.token);
        call.out.Element(Ns::kSchema, "Name", preset.name);
        WritePtzPosition(call.out, "PTZPosition", preset.position);
    }
    return kDone;
}

Answer SetPreset(Call& call) {
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
    preset->position = head.Position(PtzNow());
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
    if (auto fault = CheckProfile(call)) {
        return fault;
    }
    PtzHead& head = call.state.ptz;
    PtzTour* tour = FindByToken(head.tours, call.Argument("PresetTourToken"));
    if (tour == nullptr) {
        return InvalidArgument("NoToken", "No such tour");
    }
    for (const auto& [operation, state] : kTourOrders) {
        if (call.Argument("Operation") != operation) {
            continue;
        }
        MoveOn(head, {});
        tour->state = state;
        return kDone;
    }
    return InvalidArgument("InvalidPresetTour", "No such operation");
}

constexpr std::array kOperations = {
    Operation{"GetPresets", GetPresets},
    Operation{"SetPreset", SetPreset},
    Operation{"RemovePreset", RemovePreset},
    Operation{"GotoPreset", GotoPreset},
    Operation{"GetPresetTours", GetPresetTours},
    Operation{"CreatePresetTour", CreatePresetTour},
    Operation{"ModifyPresetTour", ModifyPresetTour},
    Operation{"RemovePresetTour", RemovePresetTour},
    Operation{"OperatePresetTour", OperatePresetTour},
};

}  // namespace

std::span<const Operation> PtzPresetOperations() {
    return kOperations;
}

}  // namespace camera_sim
