#include "commands/DeviceRequests.h"

#include "commands/Envelope.h"
#include "commands/EnvelopeFiller.h"
#include "transform/Conversions.h"

namespace onvif_client {

namespace {

constexpr auto kGetDeviceInformation = SoapEnvelope(kTds, FixedText("<tds:GetDeviceInformation/>"));
constexpr auto kGetRelayOutputs = SoapEnvelope(kTds, FixedText("<tds:GetRelayOutputs/>"));
constexpr auto kGetDigitalInputs = SoapEnvelope(kDio, FixedText("<dio:GetDigitalInputs/>"));

constexpr auto kGetServices =
    SoapEnvelope(kTds, FixedText("<tds:GetServices><tds:IncludeCapability>false"
                                 "</tds:IncludeCapability></tds:GetServices>"));

constexpr auto kBareServices =
    BareSoapEnvelope(kTds, FixedText("<tds:GetServices><tds:IncludeCapability>true"
                                     "</tds:IncludeCapability></tds:GetServices>"));

constexpr auto kGetCapabilities =
    SoapEnvelope(FixedText(""), FixedText("<GetCapabilities xmlns=\"http://www.onvif.org/ver10/"
                                          "device/wsdl\"><Category/></GetCapabilities>"));

constexpr auto kSetRelayOutputSettings = SoapEnvelope(
    kTds + kTt,
    FixedText("<tds:SetRelayOutputSettings><tds:RelayOutputToken>Alarm1</tds:RelayOutputToken>"
              "<tds:Properties><tt:Mode>Monostable</tt:Mode></tds:Properties>"
              "</tds:SetRelayOutputSettings>"));

constexpr auto kSetRelayOutputState = SoapEnvelope(
    kTds, FixedText("<tds:SetRelayOutputState><tds:RelayOutputToken/><tds:LogicalState/>"
                    "</tds:SetRelayOutputState>"));

}  // namespace

std::string BuildGetDeviceInformation(const CommandRequest&) {
    return std::string(kGetDeviceInformation);
}

std::string BuildGetRelayOutputs(const CommandRequest&) {
    return std::string(kGetRelayOutputs);
}

std::string BuildGetDigitalInputs(const CommandRequest&) {
    return std::string(kGetDigitalInputs);
}

std::string_view GetServicesEnvelope() {
    return kGetServices;
}

std::string_view BareServicesEnvelope() {
    return kBareServices;
}

std::string BuildGetCapabilities(const std::string& category) {
    CEnvelopeFiller envelope(kGetCapabilities, "GetCapabilities");
    envelope.Set("Category", category);
    return envelope.Print();
}

std::string BuildSetRelayOutputSettings(const CommandRequest& request) {
    CEnvelopeFiller envelope(kSetRelayOutputSettings, "tds:SetRelayOutputSettings");
    envelope.Copy(request, "token", "tds:RelayOutputToken");
    const int delay = ToInt(request.Text("delayTime"));
    XMLElement* properties = envelope.Find("tds:Properties");
    envelope.Add(properties, "tt:DelayTime", "PT" + std::to_string(delay == -1 ? 0 : delay) + "S");
    envelope.Add(properties, "tt:IdleState", request.Text("switch") == "on" ? "open" : "closed");
    return envelope.Print();
}

std::string BuildSetRelayOutputState(const CommandRequest& request) {
    CEnvelopeFiller envelope(kSetRelayOutputState, "tds:SetRelayOutputState");
    envelope.Copy(request, "token", "tds:RelayOutputToken");
    if (request.Has("active")) {
        envelope.Set("tds:LogicalState", request.Text("active") == "1" ? "active" : "inactive");
    }
    return envelope.Print();
}

}  // namespace onvif_client
