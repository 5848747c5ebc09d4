// Relays, digital inputs and the list of what else is built in. The relays belong to the device
// service and are answered at the address of device I/O too, which has a form of its own only for
// their settings.
#include <algorithm>
#include <array>

#include "camera_sim/services/Services.h"
#include "camera_sim/soap/Times.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

SoapFault NoSuchRelay() {
    return InvalidArgument("RelayToken", "No such relay output");
}

SoapFault NoSuchInput() {
    return InvalidArgument("InvalidToken", "No such digital input");
}

Answer GetRelayOutputs(Call& call) {
    for (const RelayOutput& relay : call.state.relays) {
        const Scope element(call.out, Ns::kDevice, "RelayOutputs");
        call.out.Attribute("token", relay.token);
        const Scope properties(call.out, Ns::kSchema, "Properties");
        call.out.Element(Ns::kSchema, "Mode", relay.mode);
        call.out.Element(Ns::kSchema, "DelayTime", relay.delayTime);
        call.out.Element(Ns::kSchema, "IdleState", relay.idleState);
    }
    return kDone;
}

// The device service gives the token as a child, device I/O as an attribute of RelayOutput.
Answer SetRelayOutputSettings(Call& call) {
    const XmlElement* output = Child(&call.request, "RelayOutput");
    const char* attribute = output == nullptr ? nullptr : output->Attribute("token");
    const std::string_view token = attribute ? attribute : call.Argument("RelayOutputToken");
    RelayOutput* relay = FindByToken(call.state.relays, token);
    if (relay == nullptr) {
        return NoSuchRelay();
    }
    const XmlElement* properties = Child(output ? output : &call.request, "Properties");
    RelayOutput changed = *relay;
    changed.mode = ChildText(properties, "Mode");
    changed.delayTime = ChildText(properties, "DelayTime");
    changed.idleState = ChildText(properties, "IdleState");
    if (changed.mode != "Bistable" && changed.mode != "Monostable") {
        return InvalidArgument("ModeError", "Mode is neither Bistable nor Monostable");
    }
    if (!IsDuration(changed.delayTime)) {
        return InvalidArgument("DelayTimeError", "DelayTime is not a duration");
    }
    if (changed.idleState != "open" && changed.idleState != "closed") {
        return InvalidArgument("ModeError", "IdleState is neither open nor closed");
    }
    *relay = std::move(changed);
    return kDone;
}

Answer SetRelayOutputState(Call& call) {
    RelayOutput* relay = FindByToken(call.state.relays, call.Argument("RelayOutputToken"));
    if (relay == nullptr) {
        return NoSuchRelay();
    }
    const std::string_view state = call.Argument("LogicalState");
    if (state != "active" && state != "inactive") {
        return InvalidArgument({}, "LogicalState is neither active nor inactive");
    }
    relay->active = state == "active";
    return kDone;
}

Answer GetDigitalInputs(Call& call) {
    for (const DigitalInput& input : call.state.inputs) {
        const Scope element(call.out, Ns::kDeviceIo, "DigitalInputs");
        call.out.Attribute("token", input.token);
        call.out.Attribute("IdleState", input.idleState);
    }
    return kDone;
}

Answer GetDigitalInputConfigurationOptions(Call& call) {
    const std::string_view token = call.Argument("Token");
    if (!token.empty() && FindByToken(call.state.inputs, token) == nullptr) {
        return NoSuchInput();
    }
    const Scope options(call.out, Ns::kDeviceIo, "DigitalInputOptions");
    for (const char* state : {"closed", "open"}) {
        call.out.Element(Ns::kDeviceIo, "IdleState", state);
    }
    return kDone;
}

Answer SetDigitalInputConfigurations(Call& call) {
    auto inputs = call.state.inputs;
    for (const XmlElement* given : Children(&call.request, "DigitalInputs")) {
        const char* token = given->Attribute("token");
        DigitalInput* input = FindByToken(inputs, token == nullptr ? "" : token);
        if (input == nullptr) {
            return NoSuchInput();
        }
        const char* idleState = given->Attribute("IdleState");
        input->idleState = idleState == nullptr ? input->idleState : idleState;
        if (input->idleState != "open" && input->idleState != "closed") {
            return InvalidArgument("ModeError", "IdleState is neither open nor closed");
        }
    }
    call.state.inputs = std::move(inputs);
    return kDone;
}

// Any delay within an hour.
Answer GetRelayOutputOptions(Call& call) {
    const std::string_view token = call.Argument("RelayOutputToken");
    if (!token.empty() && FindByToken(call.state.relays, token) == nullptr) {
        return NoSuchRelay();
    }
    for (const RelayOutput& relay : call.state.relays) {
        if (!token.empty() && relay.token != token) {
            continue;
        }
        const Scope options(call.out, Ns::kDeviceIo, "RelayOutputOptions");
        call.out.Attribute("token", relay.token);
        for (const char* mode : {"Monostable", "Bistable"}) {
            call.out.Element(Ns::kDeviceIo, "Mode", mode);
        }
        call.out.Element(Ns::kDeviceIo, "DelayTimes", "0 3600");
        call.out.Element(Ns::kDeviceIo, "Discrete", false);
    }
    return kDone;
}

Answer GetVideoSources(Call& call) {
    for (const VideoSource& source : call.state.media.videoSources) {
        call.out.Element(Ns::kDeviceIo, "Token", source.token);
    }
    return kDone;
}

Answer GetAudioSources(Call& call) {
    for (const AudioSourceConfiguration& audio : call.state.media.audioSourceConfigurations) {
        call.out.Element(Ns::kDeviceIo, "Token", audio.source);
    }
    return kDone;
}

/// Of what this camera has none.
Answer GetNothing(Call&) {
    return kDone;
}

constexpr std::array kRelayOperations = {
    Operation{"GetRelayOutputs", GetRelayOutputs},
    Operation{"SetRelayOutputSettings", SetRelayOutputSettings},
    Operation{"SetRelayOutputState", SetRelayOutputState},
};

constexpr std::array kDeviceIoOperations = {
    Operation{"GetDigitalInputs", GetDigitalInputs},
    Operation{"GetDigitalInputConfigurationOptions", GetDigitalInputConfigurationOptions},
    Operation{"SetDigitalInputConfigurations", SetDigitalInputConfigurations},
    Operation{"GetRelayOutputOptions", GetRelayOutputOptions},
    Operation{"GetVideoSources", GetVideoSources},
    Operation{"GetAudioSources", GetAudioSources},
    Operation{"GetVideoOutputs", GetNothing},
    Operation{"GetAudioOutputs", GetNothing},
    Operation{"GetSerialPorts", GetNothing},
    Operation{"SetRelayOutputSettings", SetRelayOutputSettings},
};

}  // namespace

std::span<const Operation> RelayOperations() {
    return kRelayOperations;
}
std::span<const Operation> DeviceIoOperations() {
    return kDeviceIoOperations;
}

}  // namespace camera_sim
