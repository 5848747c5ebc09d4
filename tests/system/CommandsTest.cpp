#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "support/Outline.h"
#include "system/Client.h"

namespace client_test {
namespace {

using camera_sim::CameraState;
using camera_sim::CCamera;

struct Value {
    const char* path;
    const char* text;
};

class Commands : public CCameraTest {};

/// What a dome shows stands in docs/commands.md.
TEST_F(Commands, EveryQueryShowsWhatASimplerCameraIs) {
    const struct {
        const char* commands;
        std::vector<Value> shown;
    } cases[] = {
        {"ipv4", {{"ipv4/item/@token", "eth0"}}},
        {"dns", {{"dns/status", "success"}}},
        {"networkProtocols", {{"networkProtocols/rtsp/port", "554"}}},
        {"dateAndTime", {{"dateAndTime/type", "Manual"}}},
        {"streamURI{index=1 multicast=true}",
         {{"streamURI/uri", "rtsp://127.0.0.1:554/stream/Profile_2"},
          {"streamURI/timeout", "PT60S"}}},
        {"profile{index=1 index=0}",
         {{"profile/item/index", "1"}, {"profile/item/videoEncoderCfg/encodingInterval", "1"}}},
        {"videoEncoderCfgOpts{index=1}",
         {{"videoEncoderCfgOpts/item/option/encode", "JPEG"},
          {"videoEncoderCfgOpts/item/option/frameRate/value", "(none)"},
          {"videoEncoderCfgOpts/item/option/encodingInterval/max", "1"},
          {"videoEncoderCfgOpts/item/option/bitrate/max", "8192"}}},
        {"videoEncoderCfg{index=7 index=0}",
         {{"videoEncoderCfg/item/index", "0"}, {"videoEncoderCfg/item/token", "VideoEncoder_1"}}},
        {"profiles", {{"profiles/item/token", "Profile_1"}, {"profiles/item/ptzCfg", "(none)"}}},
        {"devInfo", {{"devInfo/model", "SIM-FIXED"}}},
        {"alarmout", {{"alarmout/alarm/token", "Relay_1"}}},
        {"alarmin", {{"alarmin/token", "Input_1"}}},
        {"streamCount", {{"streamCount", "2"}}},
        {"serviceUrl", {{"serviceUrl/item/@service", "analytics"}}},
        {"imageOpts", {{"imageOpts/focus", "(none)"}, {"imageOpts/brightness/max", "100"}}},
        {"imageSettings", {{"imageSettings/focus", "(none)"}, {"imageSettings/saturation", "50"}}},
        {"motion{token=Analytics_1}",
         {{"motion/ruleStatus/status", "success"}, {"motion/columns", "22"}}},
        {"presets", {{"presets/status", "fail"}}},
        {"cruises", {{"cruises/status", "fail"}}},
        {"osd", {{"osd/status", "success"}, {"osd/item", "(none)"}}},
        {"osdoption", {{"osdoption/type", "Plain"}}},
        {"devInfo unknown alarmin", {{"devInfo/status", "success"}, {"alarmin/status", "success"}}},
    };
    const unsigned int id = Login(host_.Add({.model = "fixed"}));
    for (const auto& each : cases) {
        const auto result = Get(id, Xml(each.commands));
        ASSERT_TRUE(result.has_value()) << each.commands;
        for (const Value& value : each.shown) {
            EXPECT_EQ(At(*result, value.path), value.text) << each.commands << value.path << "\n"
                                                           << *result;
        }
    }
}

struct ChangeCase {
    const char* command;
    const char* statusPath;  // "(failed)": the camera refuses, so the request fails
    const char* status;
    std::function<std::string(const CameraState&)> shown;
    const char* expected;
};

TEST_F(Commands, EveryChangeReachesTheCamera) {
    const auto interface = [](const CameraState& state) {
        const auto& eth0 = state.network.interfaces.front();
        return eth0.dhcp ? "dhcp"
                         : eth0.manual.front().address + "/" +
                               std::to_string(eth0.manual.front().prefixLength);
    };
    const auto gateway = [](const CameraState& state) {
        return state.network.gatewaysIpv4.empty() ? "" : state.network.gatewaysIpv4.front();
    };
    const auto dns = [](const CameraState& state) {
        const auto& servers = state.network.nameServers;
        return servers.fromDhcp ? "dhcp" : servers.manualAddresses.front();
    };
    const auto ports = [](const CameraState& state) {
        std::string text;
        for (const auto& protocol : state.network.protocols) {
            text += protocol.name + std::to_string(protocol.ports.front()) + " ";
        }
        return text;
    };
    const auto zone = [](const CameraState& state) {
        return state.clock.type + state.clock.timeZone +
               (state.clock.daylightSavings ? "+dst" : "");
    };
    const auto relay = [](const CameraState& state) {
        const auto& first = state.relays.front();
        return first.mode + first.delayTime + first.idleState + (first.active ? "+active" : "");
    };
    const ChangeCase cases[] = {
        {"ipv4{token=eth0 dhcp=false ip=192.0.2.99 netmask=255.255.0.0}",
         "ipv4/status/rebootNeeded", "false", interface, "192.0.2.99/16"},
        {"ipv4{token=eth0 dhcp=true gateway=192.0.2.254}", "ipv4/status", "success", interface,
         "dhcp"},
        {"ipv4{token=eth9 dhcp=true gateway=192.0.2.7}", "(failed)", "", gateway, "192.0.2.7"},
        {"dns{dhcp=false ip=192.0.2.53}", "dns/status", "success", dns, "192.0.2.53"},
        {"dns{dhcp=true ip=192.0.2.53}", "dns/status", "success", dns, "dhcp"},
        {"networkProtocols{http{port=8000} rtsp{port=8554}}", "networkProtocols/status", "success",
         ports, "HTTP8000 HTTPS443 RTSP8554 "},
        {"dateAndTime{type=NTP daylightSaving{switch=on} timeZone{tz=CET-1CEST}}",
         "dateAndTime/status", "success", zone, "NTPCET-1CEST+dst"},
        {"alarmout{token=Relay_1 delayTime=5 switch=off}", "alarmout/status", "success", relay,
         "MonostablePT5Sclosed"},
        {"alarmout{token=none}", "(failed)", "", relay, "MonostablePT5Sclosed"},
        {"manualAlarmout{token=Relay_1 active=1}", "manualAlarmout/status", "success", relay,
         "MonostablePT5Sclosed+active"},
        {"manualAlarmout{token=Relay_1 active=0}", "manualAlarmout/status", "success", relay,
         "MonostablePT5Sclosed"},
    };
    for (const char* model : {"dome", "fixed"}) {
        CCamera& camera = host_.Add({.model = model});
        const unsigned int id = Login(camera);
        for (const ChangeCase& each : cases) {
            const auto result = Set(id, Xml(each.command));
            const bool fails = each.statusPath == std::string("(failed)");
            ASSERT_EQ(result.has_value(), !fails) << model << each.command;
            if (!fails) {
                EXPECT_EQ(At(*result, each.statusPath), each.status) << each.command << *result;
            }
            EXPECT_EQ(each.shown(camera.State()), each.expected) << model << each.command;
        }
    }
}

}  // namespace
}  // namespace client_test
