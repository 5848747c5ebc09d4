#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <fstream>

#include "system/Client.h"

namespace client_test {
namespace {

struct Outcome {
    int code = -1;
    std::string output;  // standard output, then standard error
};

Outcome RunTool(const std::string& arguments, const std::string& environment) {
    const std::string errors = testing::TempDir() + "onvifctl-errors.txt";
    const std::string command = environment + " " + ONVIFCTL + " " + arguments + " 2>" + errors;
    Outcome outcome;
    FILE* pipe = popen(command.c_str(), "r");
    std::array<char, 4096> block = {};
    while (const std::size_t read = std::fread(block.data(), 1, block.size(), pipe)) {
        outcome.output.append(block.data(), read);
    }
    outcome.code = WEXITSTATUS(pclose(pipe));
    std::ifstream stream(errors);
    outcome.output.append(std::istreambuf_iterator<char>(stream), {});
    std::remove(errors.c_str());
    return outcome;
}

TEST(Onvifctl, ItsExitCodesAndOutputTellWhatHappened) {
    camera_sim::CameraHost host;
    camera_sim::Camera& camera = host.Add({});
    camera.Inject("GetDNS", {.kind = camera_sim::Fault::Kind::kSoapFault,
                             .soapFault = {.code = "Receiver", .reason = "no name servers"}});
    auto gone = std::make_unique<camera_sim::CameraHost>();
    const std::string closed = "127.0.0.1:" + std::to_string(gone->Add({}).Port());
    gone.reset();
    const std::string at = "127.0.0.1:" + std::to_string(camera.Port());
    const std::string right = "ONVIF_USER=admin ONVIF_PASSWORD=camera-1";
    const std::string file = testing::TempDir() + "request.xml";
    std::ofstream(file) << "<Set><manualAlarmout><token>Relay_1</token><active>1</active>"
                           "</manualAlarmout></Set>";
    const struct {
        std::string arguments;
        std::string environment;
        int code;
        const char* shows;
    } cases[] = {
        {"get " + at + " devInfo alarmin", right, 0, "<model>SIM-DOME</model>"},
        {"get " + at + " devInfo -u admin -p camera-1", "", 0, "<status>success</status>"},
        {"get " + at + " serviceUrl --format table", right, 0, "media2_service\n"},
        {"set " + at + " manualAlarmout --token Relay_2 --active 1", right, 0, "<SetResponse>"},
        {"set " + at + " networkProtocols --http/port 8000 --rtsp/port=8554", right, 0,
         "<SetResponse>"},
        {"set " + at + " " + file, right, 0, "<manualAlarmout>"},
        {"send " + at + " - <" + file, right, 0, "<manualAlarmout>"},
        {"info " + at, right, 1, "firmwareVersion"},
        {"demo " + at, right, 1, "--- Which streams?"},
        {"get " + at + " dns", right, 1, "dns: no name servers (error 6)"},
        {"get " + at + " nonsense", right, 1, "the request failed"},
        {"get " + at, right, 2, "no command"},
        {"get " + at + " --index 1", right, 2, "before any command"},
        {"get " + at + " profile --index", right, 2, "has no value"},
        {"get " + at + " '<x>'", right, 2, "not a name"},
        {"get " + at + " devInfo --format yaml", right, 2, "yaml"},
        {"set " + at + " -f /nonexistent", right, 2, "cannot read"},
        {"send " + at + " " ONVIFCTL, right, 2, "not a request document"},
        {"get 127.0.0.1:0 devInfo", right, 2, "HOST:PORT"},
        {"", "", 2, "subcommand"},
        {"get " + at + " devInfo", "ONVIF_USER=admin ONVIF_PASSWORD=wrong", 3, "refuses"},
        {"get " + closed + " devInfo", right, 4, "does not answer"},
        {"get --help", "", 0, "Examples:"},
    };
    for (const auto& each : cases) {
        const Outcome outcome = RunTool(each.arguments, each.environment);
        EXPECT_EQ(outcome.code, each.code) << each.arguments << "\n" << outcome.output;
        EXPECT_NE(outcome.output.find(each.shows), std::string::npos) << each.arguments << "\n"
                                                                      << outcome.output;
        EXPECT_EQ(outcome.output.find("CHttpClient::"), std::string::npos) << each.arguments;
    }
    EXPECT_TRUE(camera.State().relays[0].active);
    EXPECT_TRUE(camera.State().relays[1].active);
    EXPECT_EQ(camera.State().network.protocols[2].ports.front(), 8554);
    std::remove(file.c_str());

    camera.Inject("GetProfiles", {.kind = camera_sim::Fault::Kind::kGarbage, .bytes = 100});
    EXPECT_EQ(RunTool("get " + at + " devInfo", right).code, 5);
}

}  // namespace
}  // namespace client_test
