#include <gtest/gtest.h>

#include <cmath>

#include <functional>
#include <vector>

#include "support/Outline.h"
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
        {"continuousMove{ptz{velocity{x=-50 y=0 zoom=20}}}", velocity, done("-50,20"),
         with(noDome, "0,0")},
        {"ptzStop{zoom=false}", velocity, done("0,20"), with(noDome, "0,0")},
        {"gotoPreset{presetToken=Preset_2}", head, done("6,-2"), with(noDome, "0,0")},
        {"ptz3dcontrol{startPosX=0 startPosY=0 endPosX=255 endPosY=255 centerPosX=0 centerPosY=0}",
         head, with(none, "1,3"), with(none, "0,0")},
        {"addPreset{presetName=Gate}",
         presets,
         {"@/presetToken", "Preset_4", "Preset_1=Entrance Preset_2=Yard Preset_4=Gate "},
         with(noDome, "")},
        {"modifyPresetName{presetToken=Preset_4 presetName=Door}", presets,
         done("Preset_1=Entrance Preset_2=Yard Preset_4=Door "), with(noDome, "")},
        {"removePreset{presetToken=Preset_4}", presets, done(kPresets), with(noDome, "")},
        {"removePreset{presetToken=Preset_4}", presets, with(none, kPresets), with(noDome, "")},
        {"startCruise{token=Tour_3}", tours, done("Tour_3RoundTouringPreset_1:10Preset_2:20"),
         with(noDome, "")},
        {"pauseCruise{token=Tour_3}", tours, done("Tour_3RoundPausedPreset_1:10Preset_2:20"),
         with(noDome, "")},
        {"stopCruise{token=Tour_3}", tours, done(kTour), with(noDome, "")},
        {"modifyCruise{token=Tour_3 name=Short presets{item{token=Preset_2}}}", tours,
         done("Tour_3ShortIdlePreset_2:1"), with(noDome, "")},
        {"delCruise{token=Tour_3}", tours, with(none, "Tour_3ShortIdlePreset_2:1"),
         with(noDome, "")},
        {"addCruise",
         tours,
         {"@/token", "Tour_5", "Tour_3ShortIdlePreset_2:1Tour_5Tour_5Idle"},
         with(noDome, "")},
        {"imageSettings{brightness=70 wideDynamicRange{mode=ON}}", image, done("70ONAUTO"),
         done("70ONAUTO")},
        {"imageSettings{brightness=101}", image, with(none, "70ONAUTO"), with(none, "70ONAUTO")},
        {"continuousFocus{speed=-0.5}", focus, done("50"), with(noDome, "0")},
        {"imageStop", focus, done("0"), with(noDome, "0")},
        {"videoEncodeCfg{item{index=9} item{index=1 encode=H264 resolution{width=352 height=288} "
         "frameRate=10 IFrameInterval=30} multicast{address{type=IPv4 iPv4Address=239.1.1.1}}}",
         encoder, done("H264352/10/30/239.1.1.1"), done("H264352/10/30/239.1.1.1")},
        {"videoEncodeCfg{item{index=1 encode=H264 frameRate=5 IFrameInterval=20}}", encoder,
         done("H264352/5/20/239.1.1.1"), done("H264352/5/20/239.1.1.1")},
        {"createOsd{pos{type=Custom x=0 y=0} type=Plain plainText=New}",
         osds,
         {"@/token", "OSD_2", "OSD_1UpperLeftPlainSIM-DOME OSD_2CustomPlainNew "},
         {"@/token", "OSD_1", "OSD_1CustomPlainNew "}},
        {"setOsd{token=OSD_1 pos{type=LowerLeft} type=Plain plainText=Set extensionswitch=on}",
         osds, done("OSD_1LowerLeftPlainSeton OSD_2CustomPlainNew "),
         done("OSD_1LowerLeftPlainSeton ")},
        {"deleteOsd{token=OSD_1}", osds, done("OSD_2CustomPlainNew "), done("")},
        {"motion{name=CellMotion ruleName=MotionRule sensitivity=33 columns=10 rows=4 "
         "area{item=1111100000 item=1111100000 item=0 item=0000011111}}",
         motion, done("10/33/BPg+AAAf"), done("10/33/BPg+AAAf")},
        {"motion{name=CellMotion ruleName=none sensitivity=34}", motion,
         with(none, "10/34/BPg+AAAf"), with(none, "10/34/BPg+AAAf")},
    };
    for (const char* model : {"dome", "fixed"}) {
        CCamera& camera = host_.Add({.model = model});
        const unsigned int id = Login(camera);
        for (const ServiceCase& each : cases) {
            const Expectation& expected = model == std::string("dome") ? each.dome : each.fixed;
            const auto result = Set(id, Xml(each.command));
            std::string shown =
                result ? At(*result, "*/" + std::string(expected.path + 2)) : "(failed)";
            EXPECT_EQ(shown, result ? expected.value : expected.path) << model << each.command;
            EXPECT_EQ(each.shown(camera.State()), expected.state) << model << each.command;
        }
    }
}

}  // namespace
}  // namespace client_test
