#include <gtest/gtest.h>

#include <cmath>

#include <functional>
#include <vector>

#include "system/Client.h"

namespace client_test {
namespace {

using camera_sim::CameraState;
using camera_sim::CCamera;

class Services : public CCameraTest {};

struct Expectation {
    const char* path;  // what the result shows at this path; "(failed)" for a failed request
    const char* value;
    const char* state;  // what the camera is then
};

struct ServiceCase {
    const char* command;
    std::function<std::string(const CameraState&)> shown;
    Expectation dome;
    Expectation fixed;  // neither dome, ver20 media service, nor motorised focus
};

TEST_F(Services, EveryChangeReachesTheCamera) {
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
    const Expectation noDome = {"@/status", "fail", ""};
    const Expectation none = {"(failed)", "", ""};
    const auto done = [](const char* state) { return Expectation{"@/status", "success", state}; };
    const auto with = [](Expectation expectation, const char* state) {
        expectation.state = state;
        return expectation;
    };
    const char* kPresets = "Preset_1=Entrance Preset_2=Yard ";
    const char* kTour = "Tour_3RoundIdlePreset_1:10Preset_2:20";
    const ServiceCase cases[] = {
        {"<continuousMove><ptz><velocity><x>-50</x><y>0</y><zoom>20</zoom></velocity></ptz>"
         "</continuousMove>",
         velocity, done("-50,20"), with(noDome, "0,0")},
        {"<ptzStop><zoom>false</zoom></ptzStop>", velocity, done("0,20"), with(noDome, "0,0")},
        {"<gotoPreset><presetToken>Preset_2</presetToken></gotoPreset>", head, done("6,-2"),
         with(noDome, "0,0")},
        {"<ptz3dcontrol><startPosX>0</startPosX><startPosY>0</startPosY><endPosX>255</endPosX>"
         "<endPosY>255</endPosY><centerPosX>0</centerPosX><centerPosY>0</centerPosY></"
         "ptz3dcontrol>",
         head, with(none, "1,3"), with(none, "0,0")},
        {"<addPreset><presetName>Gate</presetName></addPreset>",
         presets,
         {"@/presetToken", "Preset_4", "Preset_1=Entrance Preset_2=Yard Preset_4=Gate "},
         with(noDome, "")},
        {"<modifyPresetName><presetToken>Preset_4</presetToken><presetName>Door</presetName>"
         "</modifyPresetName>",
         presets, done("Preset_1=Entrance Preset_2=Yard Preset_4=Door "), with(noDome, "")},
        {"<removePreset><presetToken>Preset_4</presetToken></removePreset>", presets,
         done(kPresets), with(noDome, "")},
        {"<removePreset><presetToken>Preset_4</presetToken></removePreset>", presets,
         with(none, kPresets), with(noDome, "")},
        {"<startCruise><token>Tour_3</token></startCruise>", tours,
         done("Tour_3RoundTouringPreset_1:10Preset_2:20"), with(noDome, "")},
        {"<pauseCruise><token>Tour_3</token></pauseCruise>", tours,
         done("Tour_3RoundPausedPreset_1:10Preset_2:20"), with(noDome, "")},
        {"<stopCruise><token>Tour_3</token></stopCruise>", tours, done(kTour), with(noDome, "")},
        {"<modifyCruise><token>Tour_3</token><name>Short</name><presets><item><token>Preset_2"
         "</token></item></presets></modifyCruise>",
         tours, done("Tour_3ShortIdlePreset_2:1"), with(noDome, "")},
        {"<delCruise><token>Tour_3</token></delCruise>", tours,
         with(none, "Tour_3ShortIdlePreset_2:1"), with(noDome, "")},
        {"<addCruise/>",
         tours,
         {"@/token", "Tour_5", "Tour_3ShortIdlePreset_2:1Tour_5Tour_5Idle"},
         with(noDome, "")},
        {"<imageSettings><brightness>70</brightness><wideDynamicRange><mode>ON</mode>"
         "</wideDynamicRange></imageSettings>",
         image, done("70ONAUTO"), done("70ONAUTO")},
        {"<imageSettings><brightness>101</brightness></imageSettings>", image,
         with(none, "70ONAUTO"), with(none, "70ONAUTO")},
        {"<continuousFocus><speed>-0.5</speed></continuousFocus>", focus, done("50"),
         with(noDome, "0")},
        {"<imageStop/>", focus, done("0"), with(noDome, "0")},
        {"<videoEncodeCfg><item><index>9</index></item><item><index>1</index><encode>H264</encode>"
         "<resolution><width>352</width><height>288</height></resolution><frameRate>10</frameRate>"
         "<IFrameInterval>30</IFrameInterval></item><multicast><address><type>IPv4</type>"
         "<iPv4Address>239.1.1.1</iPv4Address></address></multicast></videoEncodeCfg>",
         encoder, done("H264352/10/30/239.1.1.1"), done("H264352/10/30/239.1.1.1")},
        {"<videoEncodeCfg><item><index>1</index><encode>H264</encode><frameRate>5</frameRate>"
         "<IFrameInterval>20</IFrameInterval></item></videoEncodeCfg>",
         encoder, done("H264352/5/20/239.1.1.1"), done("H264352/5/20/239.1.1.1")},
        {"<createOsd><pos><type>Custom</type><x>0</x><y>0</y></pos><type>Plain</type><plainText>New"
         "</plainText></createOsd>",
         osds,
         {"@/token", "OSD_2", "OSD_1UpperLeftPlainSIM-DOME OSD_2CustomPlainNew "},
         {"@/token", "OSD_1", "OSD_1CustomPlainNew "}},
        {"<setOsd><token>OSD_1</token><pos><type>LowerLeft</type></pos><type>Plain</"
         "type><plainText>"
         "Set</plainText><extensionswitch>on</extensionswitch></setOsd>",
         osds, done("OSD_1LowerLeftPlainSeton OSD_2CustomPlainNew "),
         done("OSD_1LowerLeftPlainSeton ")},
        {"<deleteOsd><token>OSD_1</token></deleteOsd>", osds, done("OSD_2CustomPlainNew "),
         done("")},
        {"<motion><name>CellMotion</name><ruleName>MotionRule</ruleName><sensitivity>33"
         "</sensitivity><columns>10</columns><rows>4</rows><area><item>1111100000</item><item>"
         "1111100000</item><item>0</item><item>0000011111</item></area></motion>",
         motion, done("10/33/BPg+AAAf"), done("10/33/BPg+AAAf")},
        {"<motion><name>CellMotion</name><ruleName>none</ruleName><sensitivity>34</sensitivity>"
         "</motion>",
         motion, with(none, "10/34/BPg+AAAf"), with(none, "10/34/BPg+AAAf")},
    };
    for (const char* model : {"dome", "fixed"}) {
        CCamera& camera = host_.Add({.model = model});
        const unsigned int id = Login(camera);
        for (const ServiceCase& each : cases) {
            const Expectation& expected = model == std::string("dome") ? each.dome : each.fixed;
            const auto result = Set(id, each.command);
            std::string shown =
                result ? At(*result, "*/" + std::string(expected.path + 2)) : "(failed)";
            EXPECT_EQ(shown, result ? expected.value : expected.path) << model << each.command;
            EXPECT_EQ(each.shown(camera.State()), expected.state) << model << each.command;
        }
    }
}

}  // namespace
}  // namespace client_test
