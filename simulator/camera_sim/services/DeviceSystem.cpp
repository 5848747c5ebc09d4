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

Answer GetUsers(Call& call) {
    if (call.state.user.name.empty()) {
        return kDone;
    }
    const Scope user(call.out, Ns::kDevice, "User");
    call.out.Element(Ns::kSchema, "Username", call.state.user.name);
    call.out.Element(Ns::kSchema, "UserLevel", "Administrator");
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
