// Device service: what it is said to be, who may use it, and its restart.
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "camera_sim/services/Services.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

/// As a segment of a path.
std::string Encoded(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    constexpr std::string_view kPlain = "-._~!$&'()*+,;=:@";
    std::string encoded;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                           (c >= '0' && c <= '9') || kPlain.find(c) != std::string_view::npos;
        if (plain) {
            encoded += c;
        } else {
            encoded.append({'%', kDigits[byte / 16], kDigits[byte % 16]});
        }
    }
    return encoded;
}

Answer GetScopes(Call& call) {
    for (const DeviceScope& each : DeviceScopes(call.options, call.state)) {
        const Scope scope(call.out, Ns::kDevice, "Scopes");
        call.out.Element(Ns::kSchema, "ScopeDef", each.fixed ? "Fixed" : "Configurable");
        call.out.Element(Ns::kSchema, "ScopeItem", each.item);
    }
    return kDone;
}

Answer GetDiscoveryMode(Call& call) {
    call.out.Element(Ns::kDevice, "DiscoveryMode",
                     call.options.discoverable ? "Discoverable" : "NonDiscoverable");
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

std::vector<DeviceScope> DeviceScopes(const CameraOptions& options, const CameraState& state) {
    std::vector<DeviceScope> scopes;
    const auto add = [&scopes](const std::string& item, bool fixed = true) {
        scopes.push_back({"onvif://www.onvif.org/" + item, fixed});
    };
    add("type/video_encoder");
    add("Profile/Streaming");
    if (Offers(options, Ns::kMedia2)) {
        add("Profile/T");
    }
    if (Offers(options, Ns::kPtz)) {
        add("type/ptz");
    }
    add("hardware/" + Encoded(state.information.model));
    add("name/" + Encoded(state.network.hostname), false);
    return scopes;
}

std::span<const Operation> DeviceSystemOperations() {
    return kOperations;
}

}  // namespace camera_sim
