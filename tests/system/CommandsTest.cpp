#include <gtest/gtest.h>

#include <functional>
#include <vector>

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
        {"<ipv4/>", {{"ipv4/item/@token", "eth0"}}},
        {"<dns/>", {{"dns/status", "success"}}},
        {"<networkProtocols/>", {{"networkProtocols/rtsp/port", "554"}}},
        {"<dateAndTime/>", {{"dateAndTime/type", "Manual"}}},
        {"<streamURI><index>1</index><multicast>true</multicast></streamURI>",
         {{"streamURI/uri", "rtsp://127.0.0.1:554/stream/Profile_2"},
          {"streamURI/timeout", "PT60S"}}},
        {"<profile><index>1</index><index>0</index></profile>",
         {{"profile/item/index", "1"}, {"profile/item/videoEncoderCfg/encodingInterval", "1"}}},
        {"<videoEncoderCfgOpts><index>1</index></videoEncoderCfgOpts>",
         {{"videoEncoderCfgOpts/item/option/encode", "JPEG"},
          {"videoEncoderCfgOpts/item/option/frameRate/value", "(none)"},
          {"videoEncoderCfgOpts/item/option/encodingInterval/max", "1"},
          {"videoEncoderCfgOpts/item/option/bitrate/max", "8192"}}},
        {"<videoEncoderCfg><index>7</index><index>0</index></videoEncoderCfg>",
         {{"videoEncoderCfg/item/index", "0"}, {"videoEncoderCfg/item/token", "VideoEncoder_1"}}},
        {"<profiles/>", {{"profiles/item/token", "Profile_1"}, {"profiles/item/ptzCfg", "(none)"}}},
        {"<devInfo/>", {{"devInfo/model", "SIM-FIXED"}}},
        {"<alarmout/>", {{"alarmout/alarm/token", "Relay_1"}}},
        {"<alarmin/>", {{"alarmin/token", "Input_1"}}},
        {"<streamCount/>", {{"streamCount", "2"}}},
        {"<serviceUrl/>", {{"serviceUrl/item/@service", "analytics"}}},
        {"<imageOpts/>", {{"imageOpts/focus", "(none)"}, {"imageOpts/brightness/max", "100"}}},
        {"<imageSettings/>",
         {{"imageSettings/focus", "(none)"}, {"imageSettings/saturation", "50"}}},
        {"<motion><token>Analytics_1</token></motion>",
         {{"motion/ruleStatus/status", "success"}, {"motion/columns", "22"}}},
        {"<presets/>", {{"presets/status", "fail"}}},
        {"<cruises/>", {{"cruises/status", "fail"}}},
        {"<osd/>", {{"osd/status", "success"}, {"osd/item", "(none)"}}},
        {"<osdoption/>", {{"osdoption/type", "Plain"}}},
        {"<devInfo/><unknown/><alarmin/>",
         {{"devInfo/status", "success"}, {"alarmin/status", "success"}}},
    };
    const unsigned int id = Login(host_.Add({.model = "fixed"}));
    for (const auto& each : cases) {
        const auto result = Get(id, each.commands);
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
        {"<ipv4><token>eth0</token><dhcp>false</dhcp><ip>192.0.2.99</ip><netmask>255.255.0.0"
         "</netmask></ipv4>",
         "ipv4/status/rebootNeeded", "false", interface, "192.0.2.99/16"},
        {"<ipv4><token>eth0</token><dhcp>true</dhcp><gateway>192.0.2.254</gateway></ipv4>",
         "ipv4/status", "success", interface, "dhcp"},
        {"<ipv4><token>eth9</token><dhcp>true</dhcp><gateway>192.0.2.7</gateway></ipv4>",
         "(failed)", "", gateway, "192.0.2.7"},
        {"<dns><dhcp>false</dhcp><ip>192.0.2.53</ip></dns>", "dns/status", "success", dns,
         "192.0.2.53"},
        {"<dns><dhcp>true</dhcp><ip>192.0.2.53</ip></dns>", "dns/status", "success", dns, "dhcp"},
        {"<networkProtocols><http><port>8000</port></http><rtsp><port>8554</port></rtsp>"
         "</networkProtocols>",
         "networkProtocols/status", "success", ports, "HTTP8000 HTTPS443 RTSP8554 "},
        {"<dateAndTime><type>NTP</type><daylightSaving><switch>on</switch></daylightSaving>"
         "<timeZone><tz>CET-1CEST</tz></timeZone></dateAndTime>",
         "dateAndTime/status", "success", zone, "NTPCET-1CEST+dst"},
        {"<alarmout><token>Relay_1</token><delayTime>5</delayTime><switch>off</switch></alarmout>",
         "alarmout/status", "success", relay, "MonostablePT5Sclosed"},
        {"<alarmout><token>none</token></alarmout>", "(failed)", "", relay, "MonostablePT5Sclosed"},
        {"<manualAlarmout><token>Relay_1</token><active>1</active></manualAlarmout>",
         "manualAlarmout/status", "success", relay, "MonostablePT5Sclosed+active"},
        {"<manualAlarmout><token>Relay_1</token><active>0</active></manualAlarmout>",
         "manualAlarmout/status", "success", relay, "MonostablePT5Sclosed"},
    };
    for (const char* model : {"dome", "fixed"}) {
        CCamera& camera = host_.Add({.model = model});
        const unsigned int id = Login(camera);
        for (const ChangeCase& each : cases) {
            const auto result = Set(id, each.command);
            const bool fails = each.statusPath == std::string("(failed)");
            ASSERT_EQ(result.has_value(), !fails) << model << each.command;
            if (!fails) {
                EXPECT_EQ(At(*result, each.statusPath), each.status) << each.command << *result;
            }
            EXPECT_EQ(each.shown(camera.State()), each.expected) << model << each.command;
        }
    }
}

TEST_F(Commands, TheCameraFollowsAClockThatIsSet) {
    CCamera& camera = host_.Add({});
    const unsigned int id = Login(camera);
    const auto result =
        Set(id,
            "<dateAndTime><type>Manual</type><timeZone><tz>UTC0</tz></timeZone><time><hour>08"
            "</hour><minute>05</minute><second>09</second></time><date><year>2019</year>"
            "<month>03</month><day>07</day></date></dateAndTime>");
    EXPECT_EQ(At(result.value_or(""), "dateAndTime/status"), "success");
    // The device's clock is far off now: what is signed by ours is refused.
    EXPECT_FALSE(Get(id, "<devInfo/>").has_value());
    EXPECT_TRUE(Get(id, "<profiles/>").has_value());
    const auto shown = Get(id, "<dateAndTime/>");
    EXPECT_EQ(At(shown.value_or(""), "dateAndTime/UTCDateTime/date/year"), "2019");
    EXPECT_EQ(At(shown.value_or(""), "dateAndTime/UTCDateTime/time/hour"), "8");
}

TEST_F(Commands, SetCarriesItsResultsAndStopsAtAFailure) {
    CCamera& camera = host_.Add({});
    const unsigned int id = Login(camera);
    const auto both = Set(
        id,
        "<unknown/><dns><dhcp>true</dhcp><ip>192.0.2.1</ip></dns><networkProtocols><http><port>81</"
        "port></http></networkProtocols>");
    ASSERT_TRUE(both.has_value());
    EXPECT_EQ(At(*both, "dns/status"), "success");
    EXPECT_NE(At(*both, "networkProtocols/status"), "(none)");
    EXPECT_FALSE(Set(id, "<unknown/>").has_value());

    camera.Inject("SetDNS", {.kind = camera_sim::Fault::Kind::kClose});
    camera.ClearEvidence();
    EXPECT_FALSE(Set(id, "<dns/><networkProtocols/>").has_value());
    EXPECT_EQ(camera.Count("SetNetworkProtocols"), 0U);
}

}  // namespace
}  // namespace client_test
