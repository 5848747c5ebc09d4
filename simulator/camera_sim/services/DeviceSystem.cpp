// Device service: what it is said to be, who may use it, and its restart.
#include <array>

#include "camera_sim/services/Services.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

void WriteScope(CXmlWriter& out, bool fixed, std::string_view item) {
    const Scope scope(out, Ns::kDevice, "Scopes");
    out.Element(Ns::kSchema, "ScopeDef", fixed ? "Fixed" : "Configurable");
    out.Element(Ns::kSchema, "ScopeItem", "onvif://www.onvif.org/" + std::string(item));
}

Answer GetScopes(Call& call) {
    CXmlWriter& out = call.out;
    WriteScope(out, true, "type/video_encoder");
    WriteScope(out, true, "Profile/Streaming");
    if (Offers(call.options, Ns::kMedia2)) {
        WriteScope(out, true, "Profile/T");
    }
    if (Offers(call.options, Ns::kPtz)) {
        WriteScope(out, true, "type/ptz");
    }
    WriteScope(out, true, "hardware/" + call.state.information.model);
    WriteScope(out, false, "name/" + call.state.network.hostname);
    return kDone;
}

Answer GetDiscoveryMode(Call& call) {
    call.out.Element(Ns::kDevice, "DiscoveryMode", "NonDiscoverable");
    return kDone;
}

std::string_view LevelOf(Role role) {
    switch (role) {
        case Role::kAdministrator:
            return "Administrator";
        case Role::kOperator:
            return "Operator";
        case Role::kUser:
            return "User";
        case Role::kNone:
            break;
    }
    return "Anonymous";
}

Answer GetUsers(Call& call) {
    for (const User& each : call.state.users) {
        const Scope user(call.out, Ns::kDevice, "User");
        call.out.Element(Ns::kSchema, "Username", each.name);
        call.out.Element(Ns::kSchema, "UserLevel", LevelOf(each.role));
    }
    return kDone;
}

Answer SystemReboot(Call& call) {
    call.out.Element(Ns::kDevice, "Message", "Rebooting");
    call.reboot = true;
    return kDone;
}

constexpr std::array kOperations = {
    Operation{"GetScopes", GetScopes},
    Operation{"GetDiscoveryMode", GetDiscoveryMode},
    Operation{"GetUsers", GetUsers},
    Operation{"SystemReboot", SystemReboot},
};

}  // namespace

std::span<const Operation> DeviceSystemOperations() {
    return kOperations;
}

}  // namespace camera_sim
