#include "transform/DeviceResults.h"

#include "transform/Conversions.h"

namespace onvif_client {

namespace {

void CopyDeviceInformation(const ReplyValues& reply, XMLElement* command) {
    constexpr CopiedValue kRows[] = {
        {"Manufacturer", "manufacturer"},
        {"Model", "model"},
        {"FirmwareVersion", "firmwareVersion"},
    };
    CopyValues(FindElement(reply.envelope, "Envelope/Body/GetDeviceInformationResponse"), command,
               kRows);
}

void CopyRelayOutput(const XMLElement* relay, XMLElement* alarm) {
    constexpr CopiedValue kRows[] = {{"@token", "token"}};
    CopyValues(relay, alarm, kRows);

    if (const XMLElement* delay = FindElement(relay, "Properties/DelayTime")) {
        const std::int64_t seconds = DurationToSeconds(std::string(TextOf(delay)));
        Append(alarm, "delayTime", std::to_string(seconds < 1 ? -1 : seconds));
    }
    const std::string_view idle = TextAt(relay, "Properties/IdleState");
    if (idle == "closed") {
        Append(alarm, "switch", "off");
    } else if (idle == "open") {
        Append(alarm, "switch", "on");
    }
}

void CopyRelayOutputs(const ReplyValues& reply, XMLElement* command) {
    const XMLElement* response =
        FindElement(reply.envelope, "Envelope/Body/GetRelayOutputsResponse");
    for (const XMLElement* relay : Children(response, "RelayOutputs")) {
        CopyRelayOutput(relay, Append(command, "alarm"));
    }
}

void CopyDigitalInputs(const ReplyValues& reply, XMLElement* command) {
    constexpr CopiedValue kRows[] = {{"@token", "token"}};
    const XMLElement* response =
        FindElement(reply.envelope, "Envelope/Body/GetDigitalInputsResponse");
    for (const XMLElement* input : Children(response, "DigitalInputs")) {
        CopyValues(input, command, kRows);
    }
}

}  // namespace

constinit const ResultFrame kDeviceInformationResult = {"GetResponse", "devInfo",
                                                        CopyDeviceInformation};
constinit const ResultFrame kRelayOutputsResult = {"GetResponse", "alarmout", CopyRelayOutputs};
constinit const ResultFrame kDigitalInputsResult = {"GetResponse", "alarmin", CopyDigitalInputs};

}  // namespace onvif_client
