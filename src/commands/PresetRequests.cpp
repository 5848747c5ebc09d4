#include "commands/Envelope.h"
#include "commands/EnvelopeFiller.h"
#include "commands/StandardRequests.h"

namespace onvif_client {

namespace {

constexpr FixedText kProfile = "<ptzw:ProfileToken/>";

constexpr auto kGetPresets = SoapEnvelope(
    kPtzw, FixedText("<ptzw:GetPresets>") + kProfile + FixedText("</ptzw:GetPresets>"));
constexpr auto kAddPreset =
    SoapEnvelope(kPtzw, FixedText("<ptzw:SetPreset>") + kProfile +
                            FixedText("<ptzw:PresetName/></ptzw:SetPreset>"));
constexpr auto kModifyPreset =
    SoapEnvelope(kPtzw, FixedText("<ptzw:SetPreset>") + kProfile +
                            FixedText("<ptzw:PresetName/><ptzw:PresetToken/></ptzw:SetPreset>"));
constexpr auto kRemovePreset =
    SoapEnvelope(kPtzw, FixedText("<ptzw:RemovePreset>") + kProfile +
                            FixedText("<ptzw:PresetToken/></ptzw:RemovePreset>"));
constexpr auto kGotoPreset =
    SoapEnvelope(kPtzw, FixedText("<ptzw:GotoPreset>") + kProfile +
                            FixedText("<ptzw:PresetToken/></ptzw:GotoPreset>"));

constexpr auto kGetTours = SoapEnvelope(
    kPtzw, FixedText("<ptzw:GetPresetTours>") + kProfile + FixedText("</ptzw:GetPresetTours>"));
constexpr auto kCreateTour = SoapEnvelope(
    kPtzw, FixedText("<ptzw:CreatePresetTour>") + kProfile + FixedText("</ptzw:CreatePresetTour>"));
constexpr auto kModifyTour =
    SoapEnvelope(kPtzw + kTt, FixedText("<ptzw:ModifyPresetTour>") + kProfile +
                                  FixedText("<ptzw:PresetTour/></ptzw:ModifyPresetTour>"));
constexpr auto kRemoveTour =
    SoapEnvelope(kPtzw, FixedText("<ptzw:RemovePresetTour>") + kProfile +
                            FixedText("<ptzw:PresetTourToken/></ptzw:RemovePresetTour>"));
constexpr auto kOperateTour =
    SoapEnvelope(kPtzw, FixedText("<ptzw:OperatePresetTour>") + kProfile +
                            FixedText("<ptzw:PresetTourToken/><ptzw:Operation/>"
                                      "</ptzw:OperatePresetTour>"));

/// A request that takes nothing but tokens and names, each from the parameter of its name.
std::string Fill(std::string_view envelopeTemplate, const char* operation,
                 const CommandRequest& request) {
    CEnvelopeFiller envelope(envelopeTemplate, operation);
    envelope.Copy(request, "profileToken", "ptzw:ProfileToken");
    envelope.Copy(request, "presetToken", "ptzw:PresetToken");
    envelope.Copy(request, "presetName", "ptzw:PresetName");
    return envelope.Print();
}

std::string OperateTour(const CommandRequest& request, const char* operation) {
    CEnvelopeFiller envelope(kOperateTour, "ptzw:OperatePresetTour");
    envelope.Copy(request, "profileToken", "ptzw:ProfileToken");
    envelope.Copy(request, "token", "ptzw:PresetTourToken");
    envelope.Set("ptzw:Operation", operation);
    return envelope.Print();
}

void AddTourSpot(CEnvelopeFiller& envelope, XMLElement* tour, const XMLElement* item) {
    XMLElement* spot = envelope.Add(tour, "tt:TourSpot");
    XMLElement* preset = envelope.Add(spot, "tt:PresetDetail");
    envelope.Add(preset, "tt:PresetToken", TextAt(item, "token"));
    envelope.Add(preset, "tt:Home", "false");
    const XMLElement* stay = FirstChild(item, "stayTime");
    envelope.Add(spot, "tt:StayTime",
                 stay == nullptr ? "PT1S" : "PT" + std::string(TextOf(stay)) + "S");
}

}  // namespace

std::string BuildGetPresets(const CommandRequest& request) {
    return Fill(kGetPresets, "ptzw:GetPresets", request);
}

std::string BuildAddPreset(const CommandRequest& request) {
    return Fill(kAddPreset, "ptzw:SetPreset", request);
}

std::string BuildModifyPresetName(const CommandRequest& request) {
    return Fill(kModifyPreset, "ptzw:SetPreset", request);
}

std::string BuildRemovePreset(const CommandRequest& request) {
    return Fill(kRemovePreset, "ptzw:RemovePreset", request);
}

std::string BuildGotoPreset(const CommandRequest& request) {
    return Fill(kGotoPreset, "ptzw:GotoPreset", request);
}

std::string BuildGetCruises(const CommandRequest& request) {
    return Fill(kGetTours, "ptzw:GetPresetTours", request);
}

std::string BuildAddCruise(const CommandRequest& request) {
    return Fill(kCreateTour, "ptzw:CreatePresetTour", request);
}

std::string BuildModifyCruise(const CommandRequest& request) {
    CEnvelopeFiller envelope(kModifyTour, "ptzw:ModifyPresetTour");
    envelope.Copy(request, "profileToken", "ptzw:ProfileToken");
    XMLElement* tour = envelope.Find("ptzw:PresetTour");
    tour->SetAttribute("token", request.Text("token").c_str());
    envelope.Add(tour, "tt:Name", request.Text("name"));
    const XMLElement* presets = FirstChild(request.command, "presets");
    for (const XMLElement* item : Children(presets, "item")) {
        AddTourSpot(envelope, tour, item);
    }
    return envelope.Print();
}

std::string BuildDelCruise(const CommandRequest&) {
    // Both tokens go out empty: the interface wants it so, and a device that refuses is right.
    return std::string(kRemoveTour);
}

std::string BuildStandardDelCruise(const CommandRequest& request) {
    CEnvelopeFiller envelope(kRemoveTour, "ptzw:RemovePresetTour");
    envelope.Copy(request, "profileToken", "ptzw:ProfileToken");
    envelope.Copy(request, "token", "ptzw:PresetTourToken");
    return envelope.Print();
}

std::string BuildStartCruise(const CommandRequest& request) {
    return OperateTour(request, "Start");
}

std::string BuildStopCruise(const CommandRequest& request) {
    return OperateTour(request, "Stop");
}

std::string BuildPauseCruise(const CommandRequest& request) {
    return OperateTour(request, "Pause");
}

}  // namespace onvif_client
