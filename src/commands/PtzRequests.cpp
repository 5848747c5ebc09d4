#include <cstdlib>

#include "commands/Envelope.h"
#include "commands/EnvelopeFiller.h"
#include "commands/StandardRequests.h"
#include "transform/Conversions.h"

namespace onvif_client {

namespace {

constexpr auto kGetConfigurationOptions =
    SoapEnvelope(kPtzw, FixedText("<ptzw:GetConfigurationOptions><ptzw:ConfigurationToken/>"
                                  "</ptzw:GetConfigurationOptions>"));

constexpr auto kContinuousMove =
    SoapEnvelope(kPtzw + kTt, FixedText("<ptzw:ContinuousMove><ptzw:ProfileToken/>"
                                        "<ptzw:Velocity/></ptzw:ContinuousMove>"));

constexpr auto kStop =
    SoapEnvelope(kPtzw, FixedText("<ptzw:Stop><ptzw:ProfileToken/><ptzw:PanTilt>true</ptzw:PanTilt>"
                                  "<ptzw:Zoom>true</ptzw:Zoom></ptzw:Stop>"));

constexpr auto k3dControl =
    SoapEnvelope(kPtzw, FixedText("<ptzw:3DControl><ptzw:StartPositionX/><ptzw:StartPositionY/>"
                                  "<ptzw:EndPositionX/><ptzw:EndPositionY/><ptzw:CenterPositionX/>"
                                  "<ptzw:CenterPositionY/></ptzw:3DControl>"));

constexpr const char* kPanTiltSpace =
    "http://www.onvif.org/ver10/tptz/PanTiltSpaces/VelocityGenericSpace";
constexpr const char* kZoomSpace =
    "http://www.onvif.org/ver10/tptz/ZoomSpaces/VelocityGenericSpace";

/// A share of the range's bound on the side that the percents point to.
std::string Velocity(int percent, const SpeedRange& range) {
    const int bound = percent < 1 ? range.minimum : range.maximum;
    const double velocity =
        percent == 0 ? 0 : std::abs(static_cast<double>(bound)) * (percent * 0.01);
    return DecimalText(static_cast<double>(static_cast<float>(velocity)), 8);
}

/// The same where the bounds may be fractions.
std::string ExactVelocity(int percent, const SpeedRange& range) {
    const double bound = std::abs(percent < 0 ? range.exactMinimum : range.exactMaximum);
    return DecimalText(percent == 0 ? 0 : bound * percent / 100, 8);
}

std::string Move(const CommandRequest& request, std::string (*velocity)(int, const SpeedRange&)) {
    CEnvelopeFiller envelope(kContinuousMove, "ptzw:ContinuousMove");
    envelope.Copy(request, "profileToken", "ptzw:ProfileToken");
    const XMLElement* percents = FindElement(request.command, "ptz/velocity");
    const PtzRanges& ranges = request.speedRanges;

    XMLElement* panTilt = envelope.Add(envelope.Find("ptzw:Velocity"), "tt:PanTilt");
    panTilt->SetAttribute("x", velocity(ToInt(TextAt(percents, "x")), ranges.pan).c_str());
    panTilt->SetAttribute("y", velocity(ToInt(TextAt(percents, "y")), ranges.tilt).c_str());
    panTilt->SetAttribute("space", kPanTiltSpace);
    XMLElement* zoom = envelope.Add(envelope.Find("ptzw:Velocity"), "tt:Zoom");
    zoom->SetAttribute("x", velocity(ToInt(TextAt(percents, "zoom")), ranges.zoom).c_str());
    zoom->SetAttribute("space", kZoomSpace);
    return envelope.Print();
}

}  // namespace

std::string BuildGetPtzOptions(const std::string& ptzConfigurationToken) {
    CEnvelopeFiller envelope(kGetConfigurationOptions, "ptzw:GetConfigurationOptions");
    envelope.Set("ptzw:ConfigurationToken", ptzConfigurationToken);
    return envelope.Print();
}

std::string BuildContinuousMove(const CommandRequest& request) {
    return Move(request, Velocity);
}

std::string BuildStandardContinuousMove(const CommandRequest& request) {
    return Move(request, ExactVelocity);
}

std::string BuildPtzStop(const CommandRequest& request) {
    CEnvelopeFiller envelope(kStop, "ptzw:Stop");
    envelope.Copy(request, "profileToken", "ptzw:ProfileToken");
    envelope.Copy(request, "panTilt", "ptzw:PanTilt");
    envelope.Copy(request, "zoom", "ptzw:Zoom");
    return envelope.Print();
}

std::string BuildPtz3dControl(const CommandRequest& request) {
    constexpr struct {
        const char* parameter;
        const char* element;
    } kPositions[] = {
        {"startPosX", "ptzw:StartPositionX"},   {"startPosY", "ptzw:StartPositionY"},
        {"endPosX", "ptzw:EndPositionX"},       {"endPosY", "ptzw:EndPositionY"},
        {"centerPosX", "ptzw:CenterPositionX"}, {"centerPosY", "ptzw:CenterPositionY"},
    };
    CEnvelopeFiller envelope(k3dControl, "ptzw:3DControl");
    for (const auto& position : kPositions) {
        envelope.Copy(request, position.parameter, position.element);
    }
    return envelope.Print();
}

}  // namespace onvif_client
