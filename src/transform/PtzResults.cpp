#include "transform/PtzResults.h"

#include "transform/Conversions.h"

namespace onvif_client {

namespace {

constexpr CopiedValue kPosition[] = {{"PanTilt/@x", "x"}, {"PanTilt/@y", "y"}, {"Zoom/@x", "zoom"}};
// The preset's identity bears the name that all preset commands read.
constexpr CopiedValue kPreset[] = {
    {"@token", "presetToken"}, {"Name", "presetName"}, {"PTZPosition", "position", kPosition}};
constexpr CopiedValue kPresets[] = {{"Preset*", "item", kPreset}};

constexpr CopiedValue kTour[] = {
    {"@token", "token"}, {"Name", "name"}, {"Status/State", "state"}, {"AutoStart", "autoStart"}};
constexpr CopiedValue kSpot[] = {{"PresetDetail/PresetToken", "token"},
                                 {"PresetDetail/Home", "home"}};

void CopyPresets(const ReplyValues& reply, XMLElement* command) {
    CopyValues(FindElement(reply.envelope, "Envelope/Body/GetPresetsResponse"), command, kPresets);
}

void CopySeconds(const XMLElement* from, const char* source, XMLElement* to, const char* element) {
    if (const XMLElement* duration = FirstChild(from, source)) {
        Append(to, element, std::to_string(DurationToSeconds(std::string(TextOf(duration)))));
    }
}

void CopyStartingCondition(const XMLElement* tour, XMLElement* item) {
    constexpr CopiedValue kBeforeDuration[] = {{"@RandomPresetOrder", "randomOrder"},
                                               {"RecurringTime", "recurringTime"}};
    constexpr CopiedValue kBehindDuration[] = {{"Direction", "direction"}};
    if (const XMLElement* condition = FirstChild(tour, "StartingCondition")) {
        XMLElement* copied = Append(item, "startingCondition");
        CopyValues(condition, copied, kBeforeDuration);
        CopySeconds(condition, "RecurringDuration", copied, "recurringDuration");
        CopyValues(condition, copied, kBehindDuration);
    }
}

/// An item is what modifyCruise reads.
void CopyTour(const XMLElement* tour, XMLElement* item) {
    CopyValues(tour, item, kTour);
    CopyStartingCondition(tour, item);
    XMLElement* presets = Append(item, "presets");
    for (const XMLElement* spot : Children(tour, "TourSpot")) {
        XMLElement* copied = Append(presets, "item");
        CopyValues(spot, copied, kSpot);
        CopySeconds(spot, "StayTime", copied, "stayTime");
    }
}

void CopyCruises(const ReplyValues& reply, XMLElement* command) {
    const XMLElement* response =
        FindElement(reply.envelope, "Envelope/Body/GetPresetToursResponse");
    for (const XMLElement* each : Children(response, "PresetTour")) {
        CopyTour(each, Append(command, "item"));
    }
}

void CopyNewPreset(const ReplyValues& reply, XMLElement* command) {
    constexpr CopiedValue kRows[] = {{"PresetToken", "presetToken"}};
    CopyValues(FindElement(reply.envelope, "Envelope/Body/SetPresetResponse"), command, kRows);
}

void CopyNewCruise(const ReplyValues& reply, XMLElement* command) {
    constexpr CopiedValue kRows[] = {{"PresetTourToken", "token"}};
    CopyValues(FindElement(reply.envelope, "Envelope/Body/CreatePresetTourResponse"), command,
               kRows);
}

}  // namespace

constinit const ResultFrame kPresetsResult = {"GetResponse", "presets", CopyPresets};
constinit const ResultFrame kCruisesResult = {"GetResponse", "cruises", CopyCruises};
constinit const ResultFrame kAddPresetResult = {"SetResponse", "addPreset", CopyNewPreset};
constinit const ResultFrame kAddCruiseResult = {"SetResponse", "addCruise", CopyNewCruise};

}  // namespace onvif_client
