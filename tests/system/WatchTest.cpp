#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <csignal>
#include <ctime>
#include <iomanip>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

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
    long hoursAhead;
    const char* start;  // '@' stands for the camera, '#' for the time
    const char* motion;
    const char* input;
    const char* active;
    const char* inactive;
};

TEST(Watch, ShowsEachChangeOfEveryCameraOnce) {
    constexpr Form kForms[] = {
        {"", 10, "#  @  ", "motion       ", "alarm-input-1", "  active\n", "  inactive\n"},
        {"--json ", 0, R"({"camera":"@","time":"#Z","kind":")", R"(motion",)",
         R"(alarm-input","input":1,)", "\"state\":true}\n", "\"state\":false}\n"},
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
            std::string expected = form.start;
            expected.replace(expected.find('@'), 1, AddressOf(camera));
            const std::size_t start = expected.find('#');
            constexpr std::size_t kTime = sizeof "2026-11-21T14:05:09.123" - 1;
            const std::string line = tool.Line();
            ASSERT_GT(line.size(), start + kTime) << line;
            const std::string time = line.substr(start, kTime);
            EXPECT_EQ(HoursAhead(time), form.hoursAhead) << line;
            EXPECT_EQ(line, expected.replace(start, 1, time) + kind + state);
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

/// The lines that come until each of @p texts has stood in one.
std::string LinesWith(CRunningTool& tool, std::vector<std::string> texts) {
    std::string lines;
    while (!texts.empty() && lines.find("(no more)") == std::string::npos) {
        const std::string line = tool.Line();
        lines += line;
        std::erase_if(
            texts, [&](const std::string& text) { return line.find(text) != std::string::npos; });
    }
    EXPECT_TRUE(texts.empty()) << "no line with " << texts.front() << " in\n" << lines;
    return lines;
}

TEST(Watch, TellsWhyACameraCannotBeWatchedAndGoesOnWithTheOthers) {
    const CClosedPort nobody;
    CCameraHost host;
    CCamera& good = host.Add({.model = "fixed"});
    SetMotion(good, true);
    const std::string closed = LocalAddress(nobody.Port());
    const std::string without = AddressOf(host.Add({.events = false}));
    const std::string full = AddressOf(host.Add({.maxSubscriptions = 0}));
    for (const char* option : {"", "--raw "}) {
        CRunningTool tool("watch --json --for 100 " + (option + closed) + " " + AddressOf(good) +
                              " " + without + " " + full,
                          kRight, kNowhere);
        const std::string lost = R"("kind":"connection","state":"lost","reason":")";
        const std::string none = " gives no subscription to its events: ";
        LinesWith(tool, {lost + closed + " does not answer: ",
                         lost + without + none + "Optional action not implemented\",",
                         lost + full + none + "Too many subscriptions\",",
                         R"({"camera":")" + AddressOf(good)});
        EXPECT_TRUE(tool.Signal(SIGINT));
        EXPECT_EQ(tool.End().code, 4) << "the worst of the cameras'";
    }
}

TEST(Watch, ACameraComesDiesAndComesBack) {
    const std::uint16_t port = CCameraHost().Add({}).Port();
    std::unique_ptr<CCameraHost> host;
    const std::string command = "watch --for 100 " + LocalAddress(port);
    CRunningTool alarms(command, kRight, kNowhere);
    CRunningTool events(command + " --raw", kRight, kNowhere);
    const auto expect = [&](const char* connection, const char* alarm, const char* event) {
        for (auto& [tool, news] : {std::pair{&alarms, alarm}, std::pair{&events, event}}) {
            const std::string lines = LinesWith(*tool, {connection, news});
            EXPECT_LE(lines.find(connection), lines.find(news)) << lines;
        }
    };
    for (const char* loss : {"lost: does not answer: ", "lost: does not answer any more\n"}) {
        host.reset();
        expect(loss, loss, loss);
        std::string error;
        CCamera* camera = nullptr;
        host = std::make_unique<CCameraHost>();
        ASSERT_TRUE(Await([&] { return camera = host->TryAdd({.port = port}, error); })) << error;
        SetMotion(*camera, true);
        expect("connection     back\n", "motion         active\n", "IsMotion=true\n");
    }
    for (CRunningTool* tool : {&alarms, &events}) {
        EXPECT_TRUE(tool->Signal(SIGINT));
        EXPECT_EQ(tool->End().code, 0) << "it is back";
    }
}

TEST(Watch, ARefusedSubscriptionIsTriedAgainButNotWrongCredentials) {
    CCameraHost host;
    CCamera& locked = host.Add({});
    CCamera& busy = host.Add({.password = "wrong"});
    busy.Inject("CreatePullPointSubscription", {.kind = camera_sim::Fault::Kind::kSoapFault,
                                                .remaining = 3,
                                                .soapFault = {"Receiver", "Action", {}, "Busy"}});
    const std::string wrong = "ONVIF_USER=admin ONVIF_PASSWORD=wrong";
    ExpectRuns({{"watch --for 100 " + AddressOf(locked), 3, "refuses", wrong}});
    const std::uint64_t once = locked.Count("*");
    CRunningTool tool("watch --json " + AddressOf(locked) + " " + AddressOf(busy), wrong, kNowhere);
    LinesWith(tool, {R"(","final":true})", R"(Busy","final":false})",
                     R"("state":"back","reason":null,"final":false})"});
    EXPECT_EQ(locked.Count("*"), 2 * once);
    EXPECT_TRUE(tool.Signal(SIGINT));
    EXPECT_EQ(tool.End().code, 3) << "the other one is back";
}

TEST(Watch, RawShowsEveryEventAsTheDeviceTellsIt) {
    CCameraHost host;
    CCamera& camera = host.Add({.model = "fixed", .topicStyle = "field"});
    const std::string topic = "tns1:RuleEngine/FieldDetector/ObjectsInside";
    CRunningTool json("watch --raw --json --for 100 " + AddressOf(camera), kRight);
    CRunningTool lines("watch --raw --for 100 " + AddressOf(camera), kRight);
    LinesWith(json, {R"("kind":"event","topic":")" + topic + R"(","operation":"Initialized")",
                     R"("source":[{"name":"InputToken","value":"Input_1"}],"key":[],)"
                     R"("data":[{"name":"LogicalState","value":"false"}]})"});
    LinesWith(lines, {topic});
    SetMotion(camera, true);
    LinesWith(json, {R"("key":[{"name":"ObjectId","value":"1"}],)"
                     R"("data":[{"name":"IsInside","value":"true"}]})"});
    LinesWith(lines, {"  Changed      ", "  ObjectId=1  IsInside=true\n"});
    ExpectRuns({{"watch --raw --format table " + AddressOf(camera), 2, "--raw"}});
}

TEST(Watch, EndsWhenThereIsNothingToWatch) {
    CCameraHost host;
    const std::string good = AddressOf(host.Add({}));
    const CClosedPort nobody;
    const std::string closed = LocalAddress(nobody.Port());
    const std::string file = OwnFile("hosts.txt");
    std::ofstream(file) << std::string(2000, '0');
    ExpectRuns({{std::string("watch <") + kNowhere, 2, "no HOST"},
                {"watch " + good + ":x", 2, "HOST:PORT"},
                {"watch <" + file, 2, "too long"},
                {"watch --for 0 " + good, 0, ""}});
    std::ofstream(file) << "# gate\n\n \t" << closed << " # yard\r\n";
    {
        CRunningTool tool("watch --for 100 <" + file, kRight);
        LinesWith(tool, {"onvifctl: " + closed + " does not answer: "});
        EXPECT_TRUE(tool.Signal(SIGINT) && tool.End().code == 4);
    }
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
