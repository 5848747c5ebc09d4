#include <gtest/gtest.h>

#include <filesystem>

#include "system/AlarmObserver.h"
#include "system/Tool.h"

namespace client_test {
namespace {

TEST(Onvifctl, FullDisksAndTerminals) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add({});
    SetMotion(camera, true);
    const std::string at = AddressOf(camera);
    ExpectRuns({{"snapshot " + at + " -o - >/dev/full", 6, "cannot write"},
                {"watch --for 100 " + at + " >/dev/full", 6, "cannot write"}});
    const std::string folder = OwnFile("pictures");
    std::filesystem::create_directory(folder);
    const std::string limited = kRight + std::string(" sh -c 'ulimit -f 1; exec \"$@\"' sh");
    EXPECT_EQ(RunTool("snapshot " + at + " -o " + folder + "/large.jpg", limited).code, 6);
    EXPECT_EQ(std::filesystem::remove_all(folder), 1U) << "nothing was left in it";

    camera.Change([](auto& state) { state.information.model = "a\tb\x7F\xC2\x9B\xC3\xA9"; });
    const std::string terminal = " sh -c 'script -qec \"$*\" /dev/null </dev/null' sh";
    const std::string shown = RunTool("get " + at + " devInfo", kRight + terminal).output;
    EXPECT_NE(shown.find("a\tb\\x7F\\u009B\xC3\xA9</model>\r\n"), std::string::npos) << shown;
}

}  // namespace
}  // namespace client_test
