#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <csignal>
#include <cstring>
#include <ctime>
#include <iomanip>
#include <sstream>
#include <string>
#include <thread>

#include "support/ClosedPort.h"
#include "system/AlarmObserver.h"
#include "system/Tool.h"

namespace client_test {
namespace {

using camera_sim::CCamera;
using camera_sim::CCameraHost;

/// How far "2026-11-21T14:05:09.123" is ahead of now, in whole hours; -1000 for another form.
long HoursAhead(const std::string& text) {
    std::tm parts = {};
    int fraction = -1;
    char point = 0;
    std::istringstream stream(text);
    stream >> std::get_time(&parts, "%Y-%m-%dT%H:%M:%S") >> point >> fraction;
    const std::time_t now = std::time(nullptr);
    std::tm utc = *std::gmtime(&now);
    return stream.fail() || point != '.' || fraction < 0 || fraction > 999
               ? -1000
               : std::lround(std::difftime(std::mktime(&parts), std::mktime(&utc)) / 3600);
}

struct Form {
    const char* option;
    const char* beforeTime;
    long hoursAhead;
    const char* beforeCamera;
    const char* motion;
    const char* input;
    const char* active;
    const char* inactive;
};

TEST(Watch, ShowsEachChangeOfEveryCameraOnce) {
    constexpr Form kForms[] = {
        {"", "", 10, "  ", "  motion       ", "  alarm-input-1", "  active\n", "  inactive\n"},
        {"--json ", R"({"time":")", 0, R"(Z","camera":")", R"(","kind":"motion",)",
         R"(","kind":"alarm-input","input":1,)", "\"state\":true}\n", "\"state\":false}\n"},
    };
    for (const Form& form : kForms) {
        CCameraHost host;
        CCamera& a = host.Add({.model = "fixed"});
        CCamera& b = host.Add({.model = "fixed"});
        SetMotion(a, true);  // what is active already is told at once
        CRunningTool tool(
            "watch --for 100 " + std::string(form.option) + AddressOf(a) + " " + AddressOf(b),
            std::string(kRight) + " TZ=ABC-10");
        const auto expect = [&](const CCamera& camera, const char* kind, const char* state) {
            const std::size_t start = std::strlen(form.beforeTime);
            constexpr std::size_t kTime = sizeof "2026-11-21T14:05:09.123" - 1;
            const std::string line = tool.Line();
            ASSERT_GT(line.size(), start + kTime) << line;
            EXPECT_TRUE(line.starts_with(form.beforeTime)) << line;
            EXPECT_EQ(HoursAhead(line.substr(start, kTime)), form.hoursAhead) << line;
            EXPECT_EQ(line.substr(start + kTime),
                      form.beforeCamera + AddressOf(camera) + kind + state);
        };
        expect(a, form.motion, form.active);
        SetInput(b, true);
        expect(b, form.input, form.active);
        SetMotion(a, false);
        expect(a, form.motion, form.inactive);
        SetMotion(b, true);
        expect(b, form.motion, form.active);
        SetInput(b, false);
        expect(b, form.input, form.inactive);
        EXPECT_TRUE(tool.Signal(SIGINT));
        EXPECT_EQ(tool.End().code, 0);
    }
}

TEST(Watch, AHostThatFailsDoesNotStopTheOthers) {
    CCameraHost host;
    CCamera& good = host.Add({.model = "fixed"});
    SetMotion(good, true);
    const CClosedPort nobody;
    const std::string closed = LocalAddress(nobody.Port());
    CRunningTool tool("watch --for 100 " + closed + " " + AddressOf(good), kRight);
    std::string lines = tool.Line();
    lines += tool.Line();
    EXPECT_NE(lines.find("onvifctl: " + closed + " does not answer: "), std::string::npos) << lines;
    EXPECT_NE(lines.find(AddressOf(good) + "  motion"), std::string::npos) << lines;
    EXPECT_TRUE(tool.Signal(SIGINT));
    EXPECT_EQ(tool.End().code, 4) << "the worst of the hosts'";
}

TEST(Watch, EndsWhenThereIsNothingToWatch) {
    CCameraHost host;
    const std::string good = AddressOf(host.Add({}));
    const CClosedPort nobody;
    const std::string closed = LocalAddress(nobody.Port());
    const std::string wrong = "ONVIF_USER=admin ONVIF_PASSWORD=wrong";
    const std::string file = OwnFile("hosts.txt");
    std::ofstream(file) << std::string(2000, '0');
    ExpectRuns({{std::string("watch <") + kNowhere, 2, "no HOST"},
                {"watch " + good + ":x", 2, "HOST:PORT"},
                {"watch <" + file, 2, "too long"},
                {"watch --for 0 " + good, 0, ""},
                {"watch --for 100 " + good, 3, good + " refuses", wrong},
                {"watch --for 100 " + good + " " + closed, 4, good + " refuses", wrong}});
    std::ofstream(file) << "# gate\n\n \t" << closed << " # yard\r\n";
    ExpectRuns({{"watch --for 100 <" + file, 4, "onvifctl: " + closed + " does not answer: "}});
    std::remove(file.c_str());
}

TEST(Watch, ASignalBreaksOffALogin) {
    CCameraHost host;
    CCamera& camera = host.Add({});
    camera.Inject("*", {.kind = camera_sim::Fault::Kind::kSilence});
    CRunningTool tool("watch " + AddressOf(camera), kRight);
    EXPECT_TRUE(Await([&] { return camera.Count("*") > 0; }));
    EXPECT_TRUE(tool.Signal(SIGTERM));
    EXPECT_EQ(tool.End().code, 0);
}

}  // namespace
}  // namespace client_test
