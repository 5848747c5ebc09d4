#include "commands/Envelope.h"
#include "commands/EnvelopeFiller.h"
#include "commands/MergedValues.h"
#include "commands/StandardRequests.h"
#include "transform/Conversions.h"

namespace onvif_client {

namespace {

constexpr auto kModifyTour =
    SoapEnvelope(kPtzw + kTt, FixedText("<ptzw:ModifyPresetTour><ptzw:ProfileToken/>"
                                        "<ptzw:PresetTour/></ptzw:ModifyPresetTour>"));
constexpr MergedValue kVector2d[] = {{"@x"}, {"@y"}, {"@space"}};
constexpr MergedValue kVector1d[] = {{"@x"}, {"@space"}};
constexpr MergedValue kVector[] = {{"tt:PanTilt", nullptr, kVector2d},
                                   {"tt:Zoom", nullptr, kVector1d}};
constexpr MergedValue kState[] = {{"tt:State", nullptr, {}, "Idle"}};
constexpr MergedValue kCondition[] = {
    {"@RandomPresetOrder"}, {"tt:RecurringTime"}, {"tt:RecurringDuration"}, {"tt:Direction"}};
constexpr MergedValue kTour[] = {{"@token", "token", {}, ""},
                                 {"tt:Name", "name"},
                                 {"tt:Status", nullptr, kState},
                                 {"tt:AutoStart", nullptr, {}, "false"},
                                 {"tt:StartingCondition", nullptr, kCondition, ""}};

constexpr MergedValue kPreset[] = {{"tt:PresetToken"}};
constexpr MergedValue kHome[] = {{"tt:Home"}};
constexpr MergedValue kPlace[] = {{"tt:PTZPosition", nullptr, kVector}};
constexpr MergedValue kSpeed[] = {{"tt:Speed", nullptr, kVector}};
constexpr MergedValue kStay[] = {{"tt:StayTime"}};

// No dome has tours as long as that; what claims to stays without the rest.
constexpr int kMostSpots = 1000;

/// The tour that is changed, of those that the device has.
const XMLElement* PresentTour(const CommandRequest& request) {
    const std::string token = request.Text("token");
    for (const XMLElement* each : Children(
             FindElement(request.answer, "Envelope/Body/GetPresetToursResponse"), "PresetTour")) {
        const char* its = AttributeOf(each, "token");
        if (its != nullptr && its == token) {
            return each;
        }
    }
    return nullptr;
}

/// A spot is at a preset, or at home, or at a position: never at two of them.
void AddPresentSpot(const XMLElement* present, XMLElement* tour) {
    XMLElement* spot = Append(tour, "tt:TourSpot");
    const XMLElement* shown = FirstChild(present, "PresetDetail");
    XMLElement* detail = Append(spot, "tt:PresetDetail");
    if (!TextAt(shown, "PresetToken").empty()) {
        MergeValues(nullptr, shown, detail, kPreset);
    } else if (FirstChild(shown, "PTZPosition") != nullptr) {
        MergeValues(nullptr, shown, detail, kPlace);
    } else {
        MergeValues(nullptr, shown, detail, kHome);
    }
    MergeValues(nullptr, present, spot, kSpeed);
    MergeValues(nullptr, present, spot, kStay);
}

/// The device's spot at that preset, or at home without one: requests say nothing of its speed.
const XMLElement* PresentSpot(const XMLElement* presentTour, std::string_view preset) {
    int left = kMostSpots;
    for (const XMLElement* each : Children(presentTour, "TourSpot")) {
        if (left-- == 0) {
            break;
        }
        if (TextAt(each, "PresetDetail/PresetToken") == preset) {
            return each;
        }
    }
    return nullptr;
}

void AddSpot(const XMLElement* item, const XMLElement* presentTour, XMLElement* tour) {
    XMLElement* spot = Append(tour, "tt:TourSpot");
    const bool home = IsTrue(TextAt(item, "home"));
    const std::string_view preset = home ? "" : TextAt(item, "token");
    if (preset.empty()) {
        Append(spot, "tt:PresetDetail/tt:Home", "true");
    } else {
        Append(spot, "tt:PresetDetail/tt:PresetToken", preset);
    }
    MergeValues(nullptr, PresentSpot(presentTour, preset), spot, kSpeed);
    const XMLElement* stay = FirstChild(item, "stayTime");
    Append(spot, "tt:StayTime", stay == nullptr ? "PT1S" : "PT" + std::string(TextOf(stay)) + "S");
}

}  // namespace

std::string BuildStandardModifyCruise(const CommandRequest& request) {
    CEnvelopeFiller envelope(kModifyTour, "ptzw:ModifyPresetTour");
    envelope.Copy(request, "profileToken", "ptzw:ProfileToken");
    XMLElement* tour = envelope.Find("ptzw:PresetTour");
    const XMLElement* present = PresentTour(request);
    MergeValues(request.command, present, tour, kTour);
    if (const XMLElement* presets = FirstChild(request.command, "presets")) {
        for (const XMLElement* item : Children(presets, "item")) {
            AddSpot(item, present, tour);
        }
    } else {
        int left = kMostSpots;
        for (const XMLElement* spot : Children(present, "TourSpot")) {
            if (left-- == 0) {
                break;
            }
            AddPresentSpot(spot, tour);
        }
    }
    return envelope.Print();
}

}  // namespace onvif_client
