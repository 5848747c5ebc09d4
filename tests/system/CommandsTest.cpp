#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <span>
#include <vector>

#include "support/Outline.h"
#include "support/System.h"
#include "system/Client.h"

namespace client_test {
namespace {

using camera_sim::CameraState;
using camera_sim::CCamera;
using camera_sim::CCameraHost;

struct Value {
    const char* path;
    const char* text;
};

class Commands : public CCameraTest {};

/// What a dome shows stands in docs/commands.md; this is where another camera differs.
TEST_F(Commands, QueriesShowWhatASimplerCameraIs) {
    const struct {
        const char* commands;
        std::vector<Value> shown;
    } cases[] = {
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
        {"serviceUrl", {{"serviceUrl/item/@service", "analytics"}}},
        {"imageOpts", {{"imageOpts/focus", "(none)"}, {"imageOpts/brightness/max", "100"}}},
        {"imageSettings", {{"imageSettings/focus", "(none)"}, {"imageSettings/saturation", "50"}}},
        {"motion{token=Analytics_1}",
         {{"motion/ruleStatus/status", "success"}, {"motion/columns", "22"}}},
        {"presets", {{"presets/status", "fail"}}},
        {"cruises", {{"cruises/status", "fail"}}},
        {"osd", {{"osd/status", "success"}, {"osd/item", "(none)"}}},
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

TEST_F(Commands, EveryQueryShowsTheSameWhateverThePrefixes) {
    const std::string queries =
        Xml("ipv4 dns networkProtocols profiles devInfo alarmout alarmin motion presets cruises "
            "osd osdoption imageOpts imageSettings streamURI{index=1} profile{index=0} "
            "videoEncoderCfg{index=1} videoEncoderCfgOpts{index=1}");
    for (const char* model : {"dome", "fixed"}) {
        std::string expected;
        for (const std::string& style : camera_sim::PrefixStyleNames()) {
            CCamera& camera = host_.Add({.model = model, .prefixStyle = style});
            auto result = Get(Login(camera), queries).value_or("(failed)");
            const std::string port = ":" + std::to_string(camera.Port());
            for (auto at = result.find(port); at != std::string::npos; at = result.find(port)) {
                result.replace(at, port.size(), ":PORT");
            }
            expected = expected.empty() ? result : expected;
            EXPECT_NE(result, "(failed)") << style;
            EXPECT_EQ(result, expected) << model << style;
        }
    }
}

struct Expectation {
    const char* path;  // what the result shows at this path; "(failed)" for a failed request
    const char* value;
    const char* state;  // what the camera is then
};

struct ChangeCase {
    const char* command;
    std::function<std::string(const CameraState&)> shown;
    Expectation dome;
    // Neither dome, ver20 media service, nor motorised focus; as the dome where there is none.
    std::optional<Expectation> fixed = {};
};

void ExpectChanges(CCameraHost& host, std::span<const ChangeCase> cases) {
    for (const char* model : {"dome", "fixed"}) {
        CCamera& camera = host.Add({.model = model});
        const unsigned int id = Login(camera);
        for (const ChangeCase& each : cases) {
            const Expectation& expected =
                model == std::string("dome") ? each.dome : each.fixed.value_or(each.dome);
            const auto result = Set(id, Xml(each.command));
            EXPECT_EQ(result ? At(*result, expected.path) : "(failed)",
                      result ? expected.value : expected.path)
                << model << each.command;
            EXPECT_EQ(each.shown(camera.State()), expected.state) << model << each.command;
        }
    }
}

Expectation Done(const char* state) {
    return {"*/status", "success", state};
}
Expectation Failed(const char* state) {
    return {"(failed)", "", state};
}
Expectation NoDome(const char* state) {
    return {"*/status", "fail", state};
}

TEST_F(Commands, EveryChangeOfTheDeviceReachesTheCamera) {
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
         interface,
         {"ipv4/status/rebootNeeded", "false", "192.0.2.99/16"}},
        {"ipv4{token=eth0 dhcp=true gateway=192.0.2.254}", interface, Done("dhcp")},
        {"ipv4{token=eth9 dhcp=true gateway=192.0.2.7}", gateway, Failed("192.0.2.7")},
        {"dns{dhcp=false ip=192.0.2.53}", dns, Done("192.0.2.53")},
        {"dns{dhcp=true ip=192.0.2.53}", dns, Done("dhcp")},
        {"networkProtocols{http{port=8000} rtsp{port=8554}}", ports,
         Done("HTTP8000 HTTPS443 RTSP8554 ")},
        {"dateAndTime{type=NTP daylightSaving{switch=on} timeZone{tz=CET-1CEST}}", zone,
         Done("NTPCET-1CEST+dst")},
        {"alarmout{token=Relay_1 delayTime=5 switch=off}", relay, Done("MonostablePT5Sclosed")},
        {"alarmout{token=none}", relay, Failed("MonostablePT5Sclosed")},
        {"manualAlarmout{token=Relay_1 active=1}", relay, Done("MonostablePT5Sclosed+active")},
        {"manualAlarmout{token=Relay_1 active=0}", relay, Done("MonostablePT5Sclosed")},
    };
    ExpectChanges(host_, cases);
}

TEST_F(Commands, EveryChangeOfPictureAndDomeReachesTheCamera) {
    const auto head = [](const CameraState& state) {
        const auto at = state.ptz.Position(std::chrono::steady_clock::now());
        return std::to_string(std::lround(at.pan * 10)) + "," +
               std::to_string(std::lround(at.tilt * 10));
    };
    const auto velocity = [](const CameraState& state) {
        return std::to_string(std::lround(state.ptz.velocity.pan * 100)) + "," +
               std::to_string(std::lround(state.ptz.velocity.zoom * 100));
    };
    const auto presets = [](const CameraState& state) {
        std::string text;
        for (const auto& preset : state.ptz.presets) {
            text += preset.token + "=" + preset.name + " ";
        }
        return text;
    };
    const auto tours = [](const CameraState& state) {
        std::string text;
        for (const auto& tour : state.ptz.tours) {
            text += tour.token + tour.name + tour.state;
            for (const auto& spot : tour.spots) {
                text += spot.preset + ":" + std::to_string(spot.stay.count());
            }
        }
        return text;
    };
    const auto image = [](const CameraState& state) {
        const auto& imaging = state.media.videoSources.front().imaging;
        return std::to_string(std::lround(imaging.brightness)) + imaging.wideDynamicRange.mode +
               imaging.whiteBalance.mode;
    };
    const auto focus = [](const CameraState& state) {
        return std::to_string(std::lround(state.media.videoSources.front().lens.speed * 100));
    };
    const auto encoder = [](const CameraState& state) {
        const auto& second = state.media.videoEncoders[1];
        return second.encoding + std::to_string(second.resolution.width) + "/" +
               std::to_string(second.frameRate) + "/" + std::to_string(second.govLength) + "/" +
               second.multicast.address;
    };
    const auto osds = [](const CameraState& state) {
        std::string text;
        for (const auto& osd : state.media.osds) {
            text += osd.token + osd.position + osd.textType + osd.plainText +
                    osd.channelName.value_or("") + " ";
        }
        return text;
    };
    const auto motion = [](const CameraState& state) {
        const auto& analytics = state.media.analytics.front();
        std::string text = std::to_string(analytics.modules.front().cells->width);
        for (const auto& [name, value] : analytics.modules.front().parameters) {
            text += name == "Sensitivity" ? "/" + value : "";
        }
        for (const auto& [name, value] : analytics.rules.front().parameters) {
            text += name == "ActiveCells" ? "/" + value : "";
        }
        return text;
    };
    const char* kPresets = "Preset_1=Entrance Preset_2=Yard ";
    const char* kTour = "Tour_3RoundIdlePreset_1:10Preset_2:20";
    const ChangeCase cases[] = {
        {"continuousMove{ptz{velocity{x=-50 y=0 zoom=20}}}", velocity, Done("-50,20"),
         NoDome("0,0")},
        {"ptzStop{zoom=false}", velocity, Done("0,20"), NoDome("0,0")},
        {"gotoPreset{presetToken=Preset_2}", head, Done("6,-2"), NoDome("0,0")},
        {"ptz3dcontrol{startPosX=0 startPosY=0 endPosX=255 endPosY=255 centerPosX=0 centerPosY=0}",
         head, Failed("1,3"), Failed("0,0")},
        {"addPreset{presetName=Gate}",
         presets,
         {"*/presetToken", "Preset_4", "Preset_1=Entrance Preset_2=Yard Preset_4=Gate "},
         NoDome("")},
        {"modifyPresetName{presetToken=Preset_4 presetName=Door}", presets,
         Done("Preset_1=Entrance Preset_2=Yard Preset_4=Door "), NoDome("")},
        {"removePreset{presetToken=Preset_4}", presets, Done(kPresets), NoDome("")},
        {"removePreset{presetToken=Preset_4}", presets, Failed(kPresets), NoDome("")},
        {"startCruise{token=Tour_3}", tours, Done("Tour_3RoundTouringPreset_1:10Preset_2:20"),
         NoDome("")},
        {"pauseCruise{token=Tour_3}", tours, Done("Tour_3RoundPausedPreset_1:10Preset_2:20"),
         NoDome("")},
        {"stopCruise{token=Tour_3}", tours, Done(kTour), NoDome("")},
        {"modifyCruise{token=Tour_3 name=Short presets{item{token=Preset_2}}}", tours,
         Done("Tour_3ShortIdlePreset_2:1"), NoDome("")},
        {"delCruise{token=Tour_3}", tours, Failed("Tour_3ShortIdlePreset_2:1"), NoDome("")},
        {"addCruise",
         tours,
         {"*/token", "Tour_5", "Tour_3ShortIdlePreset_2:1Tour_5Tour_5Idle"},
         NoDome("")},
        {"imageSettings{brightness=70 wideDynamicRange{mode=ON}}", image, Done("70ONAUTO")},
        {"imageSettings{brightness=101}", image, Failed("70ONAUTO")},
        {"continuousFocus{speed=-0.5}", focus, Done("50"), NoDome("0")},
        {"imageStop", focus, Done("0"), NoDome("0")},
        {"videoEncodeCfg{item{index=9} item{index=1 encode=H264 resolution{width=352 height=288} "
         "frameRate=10 IFrameInterval=30} multicast{address{type=IPv4 iPv4Address=239.1.1.1}}}",
         encoder, Done("H264352/10/30/239.1.1.1")},
        {"videoEncodeCfg{item{index=1 encode=H264 frameRate=5 IFrameInterval=20}}", encoder,
         Done("H264352/5/20/239.1.1.1")},
        {"createOsd{pos{type=Custom x=0 y=0} type=Plain plainText=New}",
         osds,
         {"*/token", "OSD_2", "OSD_1UpperLeftPlainSIM-DOME OSD_2CustomPlainNew "},
         Expectation{"*/token", "OSD_1", "OSD_1CustomPlainNew "}},
        {"setOsd{token=OSD_1 pos{type=LowerLeft} type=Plain plainText=Set extensionswitch=on}",
         osds, Done("OSD_1LowerLeftPlainSeton OSD_2CustomPlainNew "),
         Done("OSD_1LowerLeftPlainSeton ")},
        {"deleteOsd{token=OSD_1}", osds, Done("OSD_2CustomPlainNew "), Done("")},
        {"motion{name=CellMotion ruleName=MotionRule sensitivity=33 columns=10 rows=4 "
         "area{item=1111100000 item=1111100000 item=0 item=0000011111}}",
         motion, Done("10/33/BPg+AAAf")},
        {"motion{name=CellMotion ruleName=none sensitivity=34}", motion, Failed("10/34/BPg+AAAf")},
    };
    ExpectChanges(host_, cases);
}

struct CStandardRequestsOn {
    CStandardRequestsOn() { SetVariable("ONVIF_CLIENT_EXTENSIONS", "standard-requests"); }
    ~CStandardRequestsOn() { SetVariable("ONVIF_CLIENT_EXTENSIONS", nullptr); }
    CStandardRequestsOn(const CStandardRequestsOn&) = delete;
    CStandardRequestsOn& operator=(const CStandardRequestsOn&) = delete;
};

class StandardCommands : public CStandardRequestsOn, public CCameraTest {};

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const std::size_t start = std::min(text.find_first_not_of(' ', at), end);
        lines.push_back(text.substr(start, end - start));
        at = end + 1;
    }
    return lines;
}

TEST_F(StandardCommands, ChangeWhatTheyNameAndNothingElse) {
    const struct {
        const char* change;
        const char* query;
        std::vector<std::string> lines;  // those of the query's result that are others then
    } cases[] = {
        {"videoEncodeCfg{item{index=1 frameRate=10} multicast{tTL=3}}",
         "profiles",
         {"<frameRate>10</frameRate>", "<tTL>3</tTL>"}},
        {"imageSettings{exposure{gain=7} wideDynamicRange{level=9} brightness=70}",
         "imageSettings",
         {"<brightness>70</brightness>", "<gain>7</gain>", "<level>9</level>"}},
        {"setOsd{token=OSD_1 pos{type=LowerLeft}}", "osd", {"<type>LowerLeft</type>"}},
        {"setOsd{token=OSD_1 plainText=Gate}", "osd", {"<plainText>Gate</plainText>"}},
        {"modifyCruise{token=Tour_3 name=New}", "cruises", {"<name>New</name>"}},
        {"modifyCruise{token=Tour_3 presets{item{token=Preset_2 stayTime=5} item{token=Preset_1 "
         "stayTime=20}}}",
         "cruises",
         {"<token>Preset_2</token>", "<stayTime>5</stayTime>", "<token>Preset_1</token>"}},
        {"alarmout{token=Relay_1 delayTime=8 switch=on}", "alarmout", {"<delayTime>8</delayTime>"}},
        {"ipv4{token=eth0 dhcp=false ip=192.0.2.77 netmask=255.255.255.0}",
         "ipv4",
         {"<ip>192.0.2.77</ip>"}},
    };
    CCamera& camera = host_.Add({.model = "dome"});
    const unsigned int id = Login(camera);
    for (const auto& each : cases) {
        const std::vector<std::string> before = Lines(Get(id, Xml(each.query)).value_or(""));
        EXPECT_EQ(At(Set(id, Xml(each.change)).value_or(""), "*/status"), "success") << each.change;
        const std::string document = Get(id, Xml(each.query)).value_or("");
        const std::vector<std::string> after = Lines(document);
        std::vector<std::string> changed;
        for (std::size_t i = 0; i < after.size(); ++i) {
            if (i >= before.size() || after[i] != before[i]) {
                changed.push_back(after[i]);
            }
        }
        EXPECT_EQ(before.size(), after.size()) << each.change << document;
        EXPECT_EQ(changed, each.lines) << each.change << document;
    }
    EXPECT_TRUE(Set(id, Xml("delCruise{token=Tour_3}")));
    EXPECT_EQ(camera.State().ptz.tours.size(), 0U);
}

TEST_F(StandardCommands, ProbeTheCategoriesOfTheSchemaAlone) {
    CCamera& camera = host_.Add({.getServices = false, .capabilitiesAll = false});
    EXPECT_NE(Login(camera), 0U);
    EXPECT_EQ(camera.Count("GetCapabilities"), 7U);
}

}  // namespace
}  // namespace client_test
