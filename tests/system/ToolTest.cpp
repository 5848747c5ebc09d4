#include <gtest/gtest.h>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <utility>
#include <vector>

#include "support/Await.h"
#include "support/ClosedPort.h"
#include "system/Tool.h"

namespace client_test {
namespace {

std::filesystem::path PathOf(const std::string& text) {
    return std::u8string(text.begin(), text.end());
}

std::string ReadFile(const std::string& file) {
    std::ifstream stream(PathOf(file), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

const std::string kHead = "HTTP/1.1 200 OK\r\n\r\n";

TEST(Onvifctl, ItsExitCodesAndOutputTellWhatHappened) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add({});
    camera.Inject("GetDNS", {.kind = camera_sim::Fault::Kind::kSoapFault,
                             .soapFault = {.code = "Receiver", .reason = "no name servers"}});
    const CClosedPort nobody;
    const std::string closed = LocalAddress(nobody.Port());
    const std::string at = AddressOf(camera);
    const auto& abroad = host.Add({.user = "J\xC3\xBC", .password = "\xE2\x82\xAC"});
    const std::string file = OwnFile("request.xml");
    std::ofstream(file) << "<Set><manualAlarmout><token>Relay_1</token><active>1</active>"
                           "</manualAlarmout></Set>";
    ExpectRuns(
        {{"get " + at + " devInfo alarmin", 0, "<model>SIM-DOME</model>"},
         {"get " + at + " --extensions all,no-basic devInfo", 0, "<model>"},
         {"get " + at + " devInfo -u admin -p camera-1", 0, "<status>success</status>", ""},
         {"get " + at + " serviceUrl --format table", 0, "media2_service\n"},
         {"set " + at + " manualAlarmout --token Relay_2 --active 1", 0, "<SetResponse>"},
         {"set " + at + " networkProtocols --http/port 8000 --rtsp/port=8554", 0, "<SetResponse>"},
         {"set " + at + " " + file, 0, "<manualAlarmout>"},
         {"send " + at + " - <" + file, 0, "<manualAlarmout>"},
         {"info " + at, 1, "firmwareVersion"},
         {"demo " + at, 1, "--- Which streams?"},
         {"get " + at + " dns", 1, "dns: no name servers (error 6)"},
         {"get " + at + " nonsense --any", 1, "the device was not asked"},
         {"get " + at, 2, "no command"},
         {"watch " + at + " --for nan", 2, "no number of seconds"},
         {"get " + at + " --index 1", 2, "before any command"},
         {"get " + at + " profile --index", 2, "has no value"},
         {"get " + at + " 'x<y'", 2, "not a name"},
         {"get " + at + " devInfo --format yaml", 2, "yaml"},
         {"set " + at + " -f /nonexistent", 2, "cannot read"},
         {"send " + at + " " ONVIFCTL, 2, "not a request document"},
         {"get 127.0.0.1:0 devInfo", 2, "HOST:PORT"},
         {"", 2, "subcommand", ""},
         {"get " + at + " devInfo", 3, "refuses", "ONVIF_USER=admin ONVIF_PASSWORD=wrong"},
         {"get " + AddressOf(abroad) + " devInfo", 0, "<model>",
          "ONVIF_USER=J\xC3\xBC ONVIF_PASSWORD=\xE2\x82\xAC"},
         {"get " + closed + " devInfo", 4, "does not answer"},
         {"get " + at + " devInfo", 0, "there is no extension keep-clok",
          std::string(kRight) + " ONVIF_CLIENT_LOG=info ONVIF_CLIENT_EXTENSIONS=keep-clok"},
         {"get --help", 0, "Examples:", ""}});
    EXPECT_TRUE(camera.State().relays[0].active);
    EXPECT_TRUE(camera.State().relays[1].active);
    EXPECT_EQ(camera.State().network.protocols[2].ports.front(), 8554);
    std::remove(file.c_str());

    camera.Inject("GetProfiles", {.kind = camera_sim::Fault::Kind::kGarbage, .bytes = 100});
    EXPECT_EQ(RunTool("get " + at + " devInfo", kRight).code, 5);
}

TEST(Onvifctl, WhatGetShowsCanBeEditedAndSet) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add({});
    camera_sim::CCamera& fixed = host.Add({.model = "fixed"});
    const std::string at = AddressOf(camera);
    const std::string file = OwnFile("edited.xml");
    const std::string set = "set " + at + " " + file;
    // A renamed preset gets the position where the dome looks.
    camera.Change([](auto& state) { state.ptz.start = state.ptz.presets[1].position; });
    const struct {
        const char* get;
        std::string from;
        std::string to;
        const char* operation;
        camera_sim::CCamera& of;
    } cases[] = {
        {"imageSettings", "<gain>12", "<gain>14", "SetImagingSettings", camera},
        {"imageSettings", "<crGain>50", "<crGain>7", "SetImagingSettings", fixed},
        {"motion", "<sensitivity>60", "<sensitivity>61", "ModifyAnalyticsModules", camera},
        {"motion", "<sensitivity>60", "<sensitivity>61", "ModifyAnalyticsModules", fixed},
        {"videoEncoderCfg --index 1 --index 2", "<bitrate>768", "<bitrate>700",
         "SetVideoEncoderConfiguration", camera},
        {"videoEncoderCfg --index 1 --index 2", "239.255.42.3", "239.255.42.7",
         "SetVideoEncoderConfiguration", camera},
        {"videoEncoderCfg --index 1", "<quality>4", "<quality>6", "SetVideoEncoderConfiguration",
         fixed},
        {"videoEncoderCfg --index 1", ">Main<", ">Baseline<", "SetVideoEncoderConfiguration",
         camera},
        {"videoEncoderCfg --index 1", ">Main<", ">Baseline<", "SetVideoEncoderConfiguration",
         fixed},
        {"osd", ">SIM-DOME<", ">Gate &amp; yard<", "SetOSD", camera},
        {"osd", ">UpperLeft<", ">LowerRight<", "SetOSD", camera},
        {"presets", ">Yard<", ">Garden<", "SetPreset", camera},
        {"cruises", "<stayTime>10", "<stayTime>15", "ModifyPresetTour", camera},
    };
    for (const auto& each : cases) {
        const std::string get = "get " + AddressOf(each.of) + " " + each.get;
        std::string text = RunTool(get, kRight).output;
        const std::size_t place = text.find(each.from);
        ASSERT_NE(place, std::string::npos) << text;
        const std::size_t before = each.of.Count(each.operation);
        std::ofstream(file) << text.replace(place, each.from.size(), each.to);
        ExpectRuns({{"set " + AddressOf(each.of) + " " + file, 0, "<status>success</status>"}});
        EXPECT_EQ(RunTool(get, kRight).output, text) << each.get;
        EXPECT_EQ(each.of.Count(each.operation), before + 1) << "other items stay untouched";
    }
    ExpectRuns({{"set " + at + " -f - <" + file, 0, "nothing to change"}});

    const std::pair<const char*, const char*> useless[] = {
        {"<osd/><devInfo/><dns/>", "devInfo, dns"},
        {"<osd><status>fail<errorCode>6</errorCode></status></osd>", "(error 6)"},
        {"", "no settings"},
    };
    for (const auto& [commands, shows] : useless) {
        std::ofstream(file) << "<GetResponse>" << commands << "</GetResponse>";
        ExpectRuns({{set, 2, shows}});
    }
    // One request is refused, the other one is made all the same.
    std::ofstream(file) << "<GetResponse><osd><item><token>no</token></item></osd><imageSettings>"
                           "<contrast>33</contrast></imageSettings></GetResponse>";
    ExpectRuns({{set, 1, "<imageSettings>"}});
    EXPECT_EQ(camera.State().media.videoSources[0].imaging.contrast, 33);
    std::remove(file.c_str());
}

TEST(Onvifctl, PicturesAndStreams) {
    camera_sim::CCameraHost host;
    for (const char* model : {"dome", "fixed"}) {
        camera_sim::CCamera& camera = host.Add({.model = model});
        const std::string at = AddressOf(camera);
        const std::string file = OwnFile("\xC3\xA4\xE2\x82\xAC.jpg");
        const std::string snapshot = "snapshot " + at + " -o ";
        ExpectRuns({{snapshot + file + " --index 1", 0, " bytes"}});
        const std::string picture = ReadFile(file);
        EXPECT_TRUE(picture.starts_with("\xFF\xD8") && picture.ends_with("\xFF\xD9"));
        const std::string bytes = "BM\r\n\n\x1A\x80";  // texts would change on the way
        camera.Inject(
            "http:snapshot",
            {.kind = camera_sim::Fault::Kind::kRawReply, .remaining = 1, .reply = kHead + bytes});
        EXPECT_EQ(RunTool(snapshot + "-", kRight).output, bytes + "onvifctl: 7 bytes\n");

        ExpectRuns({{snapshot + "/nonexistent/x", 6, "cannot write"},
                    {snapshot + file + " --index 9", 1, "no picture"},
                    {"stream " + at, 0, "0  Profile_1  MainStream"},
                    {"stream " + at + " --index 9", 1, "not asked"}});
        const std::string folder = OwnFile("pictures");
        std::string demo = "demo ";
        demo.append(at).append(" --change ").append(folder);
        const bool isDome = std::string(model) == "dome";
        ExpectRuns({{demo, isDome ? 0 : 1, isDome ? "after.jpg" : "not available: "}});
        EXPECT_NE(ReadFile(folder + "/before.jpg"), ReadFile(folder + "/after.jpg"));
        EXPECT_EQ(std::filesystem::remove_all(folder), 3U) << "the two pictures of the demo";
        for (const char* reply : {"<HTML>\x1B[2J", "\x9B", "BM", "\xFF\xD8\xFF"}) {
            camera.Inject("http:snapshot", {.kind = camera_sim::Fault::Kind::kRawReply,
                                            .remaining = 1,
                                            .reply = kHead + reply});
        }
        ExpectRuns({{snapshot + kNowhere, 1, "an HTML page: <HTML>\\x1B[2J\n"},
                    {snapshot + kNowhere, 1, "but this: \\x9B\n"},
                    {snapshot + kNowhere, 0, "2 bytes"},
                    {snapshot + kNowhere, 1, "ended early, after 3 bytes"}});
        camera.Inject("http:snapshot", {.kind = camera_sim::Fault::Kind::kTruncate, .bytes = 2000});
        ExpectRuns({{snapshot + file, 1, ""}});
        EXPECT_EQ(ReadFile(file), picture) << "a failure keeps what was there";
        std::filesystem::remove(PathOf(file));
        EXPECT_EQ(RunTool("stream " + at + " --index 1", kRight).output,
                  "rtsp://127.0.0.1:554/stream/Profile_2\n");
    }
}

TEST(Onvifctl, DevicesControlNeitherTheTerminalNorTheSizeOfTables) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add({});
    const auto answer = [&camera](const std::string& operation, const std::string& values) {
        const std::string name = operation + "Response>";
        camera.Inject(operation,
                      {.kind = camera_sim::Fault::Kind::kRawReply,
                       .reply = kHead + "<?xml version='1.0'?><s:Envelope xmlns:s='s'><s:Body><" +
                                name + values + "</" + name + "</s:Body></s:Envelope>"});
    };
    answer("GetDeviceInformation", "<Model>a\tb\x7F\x9B\xC2\x9B&#27;\xC3\xA9</Model>");
    const std::string get = "get " + AddressOf(camera) + " ";
    ExpectRuns({{get + "devInfo", 0, ">a\tb\x7F\xEF\xBF\xBD\xC2\x9B\xEF\xBF\xBD\xC3\xA9</model>\n"},
                {get + "devInfo --format table", 0, "a b\\x7F\xEF\xBF\xBD\\u009B"}});

    std::string presets = "<Preset token='" + std::string(10000, 'x') + "'/>";
    std::string tours = "<PresetTour>";
    for (int i = 0; i < 90; ++i) {
        presets += "<Preset token='1'><Name>1</Name></Preset>";
        tours += i < 45 ? "</PresetTour><PresetTour>" : "<TourSpot><StayTime/></TourSpot>";
    }
    answer("GetPresets", presets);
    answer("GetPresetTours", tours + "</PresetTour>");
    for (const char* command : {"presets", "cruises"}) {
        EXPECT_LT(RunTool(get + command + " --format table", kRight).output.size(),
                  2 * RunTool(get + command, kRight).output.size());
    }
}

TEST(Onvifctl, DomesMoveByNamesOfPresetsAndTours) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add({});
    const std::string ptz = "ptz " + AddressOf(camera) + " ";
    const auto head = [&camera] { return camera.State().ptz; };
    ExpectRuns({{ptz + "move -50 20", 0, ""}});
    EXPECT_EQ(head().velocity, (camera_sim::PtzPosition{-0.5, 0.2, 0}));
    ExpectRuns({{ptz + "move 10 0 30 --for 0", 0, ""}});
    EXPECT_EQ(camera.Count("ContinuousMove"), 2U);
    EXPECT_EQ(head().velocity, camera_sim::PtzPosition{});
    ExpectRuns({{ptz + "preset goto Yard", 0, ""}});
    EXPECT_EQ(head().start, head().presets[1].position);

    ExpectRuns(
        {{ptz + "preset add Gate", 0, "Preset_4\n"},
         {ptz + "preset rename Yard Gate", 0, ""},
         {ptz + "preset goto Gate", 2, "Preset_2 Preset_4"},
         {ptz + "preset remove Preset_2", 0, ""},
         {ptz + "preset list", 0, "Preset_4  Gate      0.6   -0.2  0.4\n"},
         {ptz + "preset goto Yard", 2, "no preset 'Yard'"},
         {ptz + "tour add Night Gate:5 Yard", 2, "no preset 'Yard'"},
         {ptz + "tour add N\xC3\xA4hte Gate:5 Preset_1", 0, "Tour_5\n"},
         {ptz + "tour start N\xC3\xA4hte", 0, ""},
         {ptz + "tour list", 0, "Tour_5  N\xC3\xA4hte  Touring  Preset_4:5 Preset_1:10\n"},
         {ptz + "tour pause Tour_5", 0, ""},
         {ptz + "tour remove --literal Tour_3", 1, ""},
         {ptz + "tour remove Tour_3", 0, ""},
         {ptz + "move 101 0", 2, "-100"},
         {ptz, 2, "subcommand"},
         {"ptz " + AddressOf(host.Add({.model = "fixed"})) + " move 1 1 --for 9", 1, "not"}});
    EXPECT_EQ(head().tours.at(0).state, "Paused");
}

TEST(Onvifctl, ASignalEndsATimedMoveWithAStop) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add({});
    CRunningTool tool("ptz " + AddressOf(camera) + " move 10 0 --for 3000", kRight);
    EXPECT_TRUE(Await([&] { return camera.Count("ContinuousMove") > 0; }));
    EXPECT_TRUE(tool.Signal(SIGINT));
    EXPECT_EQ(tool.Line(), "onvifctl: stopped by a signal\n");
    EXPECT_EQ(tool.End().code, 130);
    EXPECT_EQ(camera.Count("Stop"), 1U);
}

TEST(Onvifctl, ImageSettingsByName) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add({});
    const std::string image = "image " + AddressOf(camera) + " ";
    ExpectRuns({{image + "set brightness 61 wideDynamicRange/level 30", 0, ""},
                {image + "get", 0, "\n  wideDynamicRange/level       30         0 to 100\n"},
                {image + "set brightness 300", 1, "warning: the device permits 0 to 100"},
                {image + "set --literal exposure/window/top 0", 1, "stays 1"},
                {image + "set shine 1", 2, "wideDynamicRange/level, whiteBalance/mode"},
                {image + "set brightness", 2, "no value"}});
    const auto imaging = camera.State().media.videoSources[0].imaging;
    EXPECT_EQ(imaging.brightness, 61);
    EXPECT_EQ(imaging.wideDynamicRange.mode, "OFF");
    EXPECT_EQ(camera.Count("SetImagingSettings"), 3U) << "also what the options do not permit";
}

}  // namespace
}  // namespace client_test
