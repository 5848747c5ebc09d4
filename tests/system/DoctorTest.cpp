// What the tool says of a device at first contact, and why a login fails.
#include <gtest/gtest.h>
#include <tuple>

#include "support/ClosedPort.h"
#include "support/ScriptedPeer.h"
#include "system/Tool.h"

namespace client_test {
namespace {

using camera_sim::CameraOptions;
using camera_sim::Fault;
using camera_sim::HttpScheme;

TEST(Doctor, AddressesAreTakenInSeveralFormsAndRefusedForWhatTheyAre) {
    camera_sim::CCameraHost host;
    const std::string at = AddressOf(host.Add({}));
    const std::tuple<std::string, int, const char*> cases[] = {
        {at, 0, "<devInfo>"},
        {"http://" + at, 0, "<devInfo>"},
        {"HTTP://" + at + "/onvif/device_service", 0, "<devInfo>"},
        {"http://" + at + "?a=b:9", 0, "<devInfo>"},
        {"https://" + at, 2, "allow HTTP in the device"},
        {"rtsp://" + at, 2, "is not HOST, HOST:PORT or http://"},
        {"::1", 2, "is an IPv6 address"},
        {"[::1]", 2, "is an IPv6 address"},
        {"http://[::1]:80/onvif", 2, "is an IPv6 address"},
        {"2001:db8:0:1:1:1:1:1", 2, "is an IPv6 address"},
        {"::ffff:192.0.2.1", 2, "is an IPv6 address"},
        {"fe80::1%eth0", 2, "is an IPv6 address"},
        {"127.0.0.1:80:80", 2, "HOST:PORT"},
        {"127.0.0.1:", 2, "HOST:PORT"},
        {"127.0.0.1:65536", 2, "HOST:PORT"},
        {":80", 2, "HOST:PORT"},
        {"http://", 2, "HOST:PORT"},
        {"127.0.0.1/onvif", 2, "HOST:PORT"},
        {"'two words'", 2, "HOST:PORT"},
        {"http://admin:pass@" + at, 2, "an address holds no '@'"},
        {"no..such..host", 4, "no IPv4 address is known for 'no..such..host'"},
    };
    for (const auto& [address, code, shows] : cases) {
        ExpectRuns({{"get " + address + " devInfo", code, shows}});
    }
}

CScriptedPeer::Script Answers(const std::string& reply) {
    return [reply](CPeerConnection& connection) {
        connection.Read(1);
        connection.Send(reply);
        connection.EndSending();
        connection.WaitForClose();
    };
}

std::string Http(const std::string& head, const std::string& body = "") {
    return "HTTP/1.1 " + head + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
           body;
}

TEST(Doctor, SaysWhatAnswersInThePlaceOfADevice) {
    const std::string digest =
        "401 No\r\nWWW-Authenticate: Basic realm=\"x\"\r\n"
        "WWW-Authenticate: Digest realm=\"x\", nonce=\"1\", qop=\"auth\"";
    const struct {
        CScriptedPeer::Script script;
        const char* finding;
        int code;
        const char* options = "";
    } cases[] = {
        {[](auto& connection) {
             connection.Send("SSH-2.0-any\r\n");
             connection.Read(1);
         },
         "as no web server does: SSH-2.0-any", 5},
        {Answers("\x15\x03\x01"), "speaks HTTPS on port", 5},
        {Answers(Http("400 Bad", "<html>plain HTTP request was sent to HTTPS port</html>")),
         "speaks HTTPS on port", 5},
        {Answers("\x1B[31m\x07"), R"(with what is no proper HTTP: \x1B[31m\x07)", 5},
        {[](auto&) {}, "closes it without a word", 4},
        {Answers(Http("404 Not Found")), "(HTTP status 404)", 5},
        {Answers(Http("200 OK", "<!DOCTYPE html><html><body>x</body></html>")), "a web page", 5},
        {Answers(Http("200 OK", "{}")), "does not answer as an ONVIF device", 5},
        {Answers(Http("301 Gone\r\nlocation: https://x/")), "sends on to HTTPS: https://x/", 5},
        {Answers(Http("302 Gone\r\nLocation: http://x/")), "to another address: http://x/", 5},
        {Answers(Http("403 Forbidden")), "(HTTP status 403)", 5},
        {Answers("HTTP/1.1 100 Continue\r\n\r\n" + Http("500 No")), "HTTP status 500", 5},
        {Answers(Http(digest)), "extension http-digest is off", 4, " --literal"},
        {Answers(Http(digest)), "refuses the user name or the password", 3},
        {Answers(Http("401 No\r\nWWW-Authenticate: Basic realm=\"a, Digest b\"")),
         "asks for HTTP Basic and nothing else", 3},
        {Answers(Http("401 No")), "refuses the user name or the password", 3},
    };
    for (const auto& each : cases) {
        const CScriptedPeer peer(each.script);
        const std::string at = LocalAddress(peer.Port());
        ExpectRuns({{"get " + at + " devInfo" + each.options, each.code, each.finding},
                    {"doctor " + at + each.options, each.code, each.finding}});
    }
    const CClosedPort nobody;
    const CScriptedPeer silent([](auto& connection) { connection.WaitForClose(); });
    // What waits for a ClientHello alone, and answers that.
    const CScriptedPeer tls([](auto& connection) {
        if (connection.Read(5).starts_with("\x16\x03")) {
            connection.Send("\x15\x03\x03");
        }
    });
    ExpectRuns({{"doctor " + LocalAddress(nobody.Port()), 4, "(connection refused)"},
                {"doctor " + LocalAddress(silent.Port()), 4, "and says nothing"},
                {"doctor " + LocalAddress(tls.Port()), 5, "speaks HTTPS on port"},
                {"doctor no..such..host", 4, "no IPv4 address is known"}});
}

/// The names in "extensions" of a JSON report, with blanks behind.
std::string NamedExtensions(std::string report) {
    const std::string key = R"({"name":")";
    std::string names;
    for (std::size_t at = report.find(key); at != std::string::npos; at = report.find(key)) {
        report.erase(0, at + key.size());
        names += report.substr(0, report.find('"')) + " ";
    }
    return names;
}

TEST(Doctor, NamesTheExtensionsThatADeviceNeeds) {
    const std::chrono::hours far(30);
    const camera_sim::User op = {"op", "camera-1", camera_sim::Role::kOperator};
    constexpr const char* kSetting = " --set-clock";
    constexpr const char* kSettingAsOperator = " --set-clock -u op";
    constexpr const char* kOfRecorder = "per-source-alarms large-messages ";
    // All of these send their faults with HTTP status 500 and have one input.
    const auto camera = [](CameraOptions options) {
        options.model = options.model == "dome" ? "fixed" : options.model;
        options.unauthorizedStatus = options.senderFaultStatus = 500;
        return options;
    };
    const struct {
        CameraOptions camera;
        const char* extensions;
        const char* shows;
        int code = 0;
        const char* arguments = "";
    } cases[] = {
        {{}, "", " is well\",\"clockDifference\":"},
        {{.model = "recorder"}, kOfRecorder, "32 profiles"},
        {{.model = "recorder"}, kOfRecorder, "with all extensions", 1, " --literal"},
        {{.chunkBytes = 7}, "http-framing ", "come in chunks"},
        {{.noLength = true}, "http-framing ", "state no length"},
        {{.xmlProlog = false}, "open-faults ", "no XML declaration"},
        {{.httpAuthentication = HttpScheme::kDigestSha256}, "http-digest ", "realm="},
        {{.httpAuthentication = HttpScheme::kBasic}, "", "HTTP Basic and nothing else", 3},
        {{.media2 = true, .media = false}, "media-fallback ", "second media service alone"},
        {{.media2 = true, .brokenMedia2 = true}, "media-fallback ", "without it 0 of 2 profiles"},
        {{.clockOffset = far}, "keep-clock ", "30 h ahead of this machine's"},
        {{.clockOffset = -far}, "", "30 h behind", 0, kSetting},
        {{.clockOffset = far, .clockRefusal = "failed"}, "keep-clock ", "no picture", 0, kSetting},
        {{.accounts = {op}}, "keep-clock ", "sets the clock is refused", 0, kSettingAsOperator},
        {{.openOperations = {}}, "", "UTC with credentials, as this machine's"},
        {{.events = false}, "", "lets log in, but fails at: subscription, pull", 1},
    };
    for (const auto& each : cases) {
        camera_sim::CCameraHost host;
        camera_sim::CCamera& one = host.Add(camera(each.camera));
        const std::string doctor = "doctor " + AddressOf(one) + each.arguments;
        const Outcome outcome = RunTool(doctor + " --format json", kRight);
        EXPECT_EQ(outcome.code, each.code) << outcome.output;
        EXPECT_EQ(NamedExtensions(outcome.output), each.extensions) << outcome.output;
        EXPECT_NE(outcome.output.find(each.shows), std::string::npos) << each.shows << "\n"
                                                                      << outcome.output;
        EXPECT_EQ(one.Subscriptions().size(), 0U) << doctor;
        EXPECT_EQ(one.Count("SetSystemDateAndTime") > 0, *each.arguments != '\0') << doctor;
    }
}

TEST(Doctor, TriesNoPasswordTwiceAndTellsTheRestOfAFailure) {
    camera_sim::CCameraHost host;
    const std::string wrong = "ONVIF_USER=admin ONVIF_PASSWORD=wrong";
    camera_sim::CCamera& camera = host.Add({.clockOffset = std::chrono::hours(-2)});
    const std::string at = AddressOf(camera);
    RunTool("get " + at + " devInfo", wrong);
    const std::size_t once = camera.Count("GetProfiles");
    ASSERT_GT(once, 0U);
    ExpectRuns({{"doctor " + at, 3, "refuses the user name or the password", wrong}});
    EXPECT_EQ(camera.Count("GetProfiles"), 2 * once) << "one login";

    camera_sim::CCamera& refusing =
        host.Add({.clockOffset = std::chrono::hours(-2), .clockRefusal = "not-authorized"});
    ExpectRuns({{"get " + AddressOf(refusing) + " devInfo --literal", 3,
                 "its clock is 2 h behind this machine's"},
                {"get " + at + " devInfo", 3, "refuses a login without a user", ""}});

    camera.Inject("http:snapshot", {.kind = Fault::Kind::kBareStatus, .status = 404});
    ExpectRuns({{"doctor " + at, 1, "  !!  picture "}, {"doctor " + at, 1, "  ok  pull "}});
}

}  // namespace
}  // namespace client_test
