#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "system/Tool.h"

namespace client_test {
namespace {

using Kind = camera_sim::Fault::Kind;

/// The camera answers the operation with these values, whatever it is asked.
void Answer(camera_sim::CCamera& camera, const std::string& operation, const std::string& values) {
    const std::string name = operation + "Response>";
    camera.Inject(operation,
                  {.kind = Kind::kRawReply,
                   .reply = "HTTP/1.1 200 OK\r\n\r\n<?xml version='1.0'?><s:Envelope xmlns:s='s'>"
                            "<s:Body><" +
                            name + values + "</" + name + "</s:Body></s:Envelope>"});
}

TEST(Onvifctl, UnknownWordsAreRefusedWithTheNearestOnes) {
    ExpectRuns({{"wach", 2, "unknown subcommand 'wach': did you mean watch?\n"},
                {"ptz x preset gto Yard", 2, "unknown action 'gto': did you mean goto?\n"},
                {"help ptz mvoe", 2, "did you mean move?"},
                {"help ptz preset rename", 0, "onvifctl ptz HOST preset rename [OPTIONS] PRESET"},
                {"get x devinfo", 2, "unknown command 'devinfo': did you mean devInfo?\n"},
                {"get x profiles ptzStop", 2, "'ptzStop' is a command of set\n"},
                {"set x videoEncoderCfg --item/index 0", 2, "of get: did you mean videoEncodeCfg?"},
                {"get x devInfo --formt table", 2, "did you mean the option --format?"},
                {"get x devInfo --foo 1", 2, "unknown parameter 'foo' of devInfo, which has none"},
                {"set x dns --colour red", 2, "it has: dhcp, ip\n"},
                {"set x dateAndTime --time 5", 2, "unknown parameter 'time' of dateAndTime"},
                {"completion", 2, "bash, zsh or fish"}});
}

TEST(Onvifctl, WhatADeviceDoesNotTellHidesNothingElse) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add({});
    camera.Inject("GetDeviceInformation", {.kind = Kind::kGarbage, .bytes = 100});
    camera.Inject("GetDNS", {.kind = Kind::kSoapFault,
                             .soapFault = {.code = "Receiver", .reason = "no name\tservers"}});
    camera.Inject("GetStreamUri", {.kind = Kind::kGarbage, .bytes = 100});
    const std::string at = AddressOf(camera);
    for (const char* subcommand : {"info ", "demo "}) {
        ExpectRuns({{subcommand + at, 1, "devInfo  not available: "},
                    {subcommand + at, 1, "dns  not available: no name servers (error 6)\n"},
                    {subcommand + at, 1, "   [3]\n"}});
    }
    // Whatever fails, the shapes stay; a request that fails as a whole does so for each command.
    const std::string dns =
        R"({"camera":")" + at + R"(","results":[{"command":"dns","status":"fail",)";
    const std::string nothing = R"(,"values":{"dhcp":null,"ip":[]}})";
    ExpectRuns(
        {{"get " + at + " dns --format json", 1,
          dns + R"("error":{"code":"6","description":"no name\tservers"})" + nothing + "]}\n"},
         {"get " + at + " dns devInfo --format json", 1, dns + R"("error":{"code":null,)"},
         {"get " + at + " dns devInfo --format json", 1, nothing + R"(,{"command":"devInfo",)"}});
}

TEST(Onvifctl, WhatADeviceOnlySaysThatItKeepsIsAFailure) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& presets = host.Add({});
    Answer(presets, "SetPreset", "<PresetToken>P9</PresetToken>");
    const std::string add = "ptz " + AddressOf(presets) + " preset add Gate";
    ExpectRuns({{add, 1, "keeps the preset 'Gate', but lists no such one\n"},
                {add + " --format json", 1, R"("addPreset","status":"fail")"}});
    camera_sim::CCamera& tours = host.Add({});
    const std::string tour = "ptz " + AddressOf(tours) + " tour add Night Entrance Yard";
    ExpectRuns({{tour, 0, "Tour_"}});
    Answer(tours, "ModifyPresetTour", "");
    ExpectRuns({{tour, 1, "has 0 of 2 presets\n"}});
    Answer(tours, "CreatePresetTour", "<PresetTourToken>T9</PresetTourToken>");
    ExpectRuns({{tour, 1, "keeps the tour 'Night', but lists no such one\n"}});

    Answer(tours, "GetImagingSettings", "<ImagingSettings/>");
    const std::string image = "image " + AddressOf(tours) + " ";
    ExpectRuns({{image + "set brightness 5", 1, "the device shows no image settings\n"},
                {image + "get", 1, "the device shows no image settings\n"}});
}

TEST(Onvifctl, AnEditedEncoderKeepsItsCodecUnlessThatWasEdited) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add({});
    const std::string at = AddressOf(camera);
    const std::string file = OwnFile("encoder.xml");
    const struct {
        std::string from;
        std::string to;
        const char* shows;
        const char* codec;
    } edits[] = {{"<bitrate>4096", "<bitrate>4000", "profile 0 keeps H265", "H265"},
                 {"<encode>H264", "<encode>JPEG", "<videoEncodeCfg>", "JPEG"}};
    for (const auto& [from, to, shows, codec] : edits) {
        std::string text = RunTool("get " + at + " videoEncoderCfg --index 0", kRight).output;
        const std::size_t place = text.find(from);
        ASSERT_NE(place, std::string::npos) << text;
        std::ofstream(file) << text.replace(place, from.size(), to);
        ExpectRuns({{"set " + at + " " + file, 0, shows},
                    {"get " + at + " profiles", 0, std::string("<encode>") + codec}});
        EXPECT_EQ(camera.State().media.videoEncoders[0].encoding, codec);
        EXPECT_EQ(camera.State().media.videoEncoders[0].bitrate, 4000);
    }
    std::remove(file.c_str());
}

}  // namespace
}  // namespace client_test
