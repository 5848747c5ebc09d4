#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>

#include "system/Tool.h"

namespace client_test {
namespace {

using camera_sim::HttpScheme;

/// What no trace of these requests may hold.
std::vector<std::string> SecretsOf(const std::vector<camera_sim::RecordedRequest>& requests) {
    const std::regex secret(
        "<\\w+:(?:Username|Password|Nonce)(?: [^>]*)?>([^<]+)<|"
        "(?:username|nonce|cnonce|response|opaque)=\"([^\"]+)\"");
    std::vector<std::string> secrets = {"admin", "camera-1", "Created>2"};
    for (const auto& request : requests) {
        const std::string text = request.head + request.body;
        for (std::sregex_iterator each(text.begin(), text.end(), secret), end; each != end;
             ++each) {
            secrets.push_back((*each)[(*each)[1].matched ? 1 : 2]);
        }
    }
    return secrets;
}

TEST(Trace, HoldsEveryExchangeOfADemoAndNoSecret) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add(
        {.httpAuthentication = HttpScheme::kDigest, .snapshotAuthentication = HttpScheme::kDigest});
    const std::string folder = OwnFile("traced");
    const std::string file = folder + ".txt";
    const std::string at = AddressOf(camera);
    const std::string quiet = std::string(kRight) + " ONVIF_CLIENT_TRACE=off ";
    ExpectRuns({{"demo " + at + " -v --change " + folder + " --trace " + file, 0,
                 "onvifctl: " + at + " picture /snapshot/Profile_1 401 ", quiet}});
    ExpectRuns({{"watch --for 1 " + at, 0, "", quiet + "ONVIF_CLIENT_TRACE_FILE=" + file}});
    std::ifstream stream(file, std::ios::binary);
    const std::string trace(std::istreambuf_iterator<char>(stream), {});
    const std::regex entry("== [-0-9]{10} [:0-9]{8}\\.\\d{3} 127\\.0\\.0\\.1:\\d+ \\w+ /\\S* ");
    EXPECT_EQ(std::distance(std::sregex_iterator(trace.begin(), trace.end(), entry), {}),
              static_cast<std::ptrdiff_t>(camera.Count("*")));
    const auto secrets = SecretsOf(camera.Requests());
    EXPECT_GT(secrets.size(), 100U);
    for (const std::string& secret : secrets) {
        EXPECT_EQ(trace.find(secret), std::string::npos) << secret;
    }
    EXPECT_NE(trace.find("PullMessages /onvif/subscription/"), std::string::npos);
    std::filesystem::remove_all(folder);
}

TEST(Trace, IsARegularFileWithinBounds) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add({});
    camera.Change([](auto& state) { state.information.model = std::string(200000, 'x'); });
    const std::string file = OwnFile("bounded.txt");
    std::string get = "get " + AddressOf(camera) + " --trace ";
    ExpectRuns({{get + kNowhere + " devInfo", 6, "no regular file"}});
    for (get += file; get.size() < 400;) {
        get += " devInfo";
    }
    ExpectRuns({{get, 0, "xxx"}});
    EXPECT_LT(std::filesystem::file_size(file), 5242880U);
    EXPECT_LT(std::filesystem::file_size(OwnFile("bounded.1.txt")), 5242880U);
}

TEST(Trace, FailuresSayWhyAndWhatToDo) {
    using enum camera_sim::Fault::Kind;
    camera_sim::CCameraHost host;
    const struct {
        camera_sim::Fault fault;
        std::string says;
        std::string operation = "GetDNS";
        std::string command = "get HOST dns";
    } cases[] = {
        {{.kind = kSilence}, "did not reply to the request GetDNS in time (8"},
        {{.kind = kClose}, "closed the connection without a reply to the request GetDNS; try"},
        {{.kind = kBareStatus, .status = 400}, "GetDNS a bad request (HTTP 400); look"},
        {{.kind = kUnauthorized}, "refuses the credentials for the request GetDNS (HTTP 401); log"},
        {{.kind = kBareStatus, .status = 404}, "nothing at /onvif/device_service for the request"},
        {{.kind = kBareStatus, .status = 500}, "failed at the request GetDNS (HTTP 500); look"},
        {{.kind = kRawReply, .reply = "HTTP/1.1 200 OK\r\n\r\n<a/>"}, "is not XML"},
        {{.kind = kRawReply, .reply = "\x1B]"}, "in reply to the request GetDNS is not HTTP"},
        {{.kind = kSoapFault, .soapFault = {.subcode = "NotAuthorized", .reason = "go\naway"}},
         "refuses the credentials for the request GetDNS (HTTP 400): go away; log in"},
        {{.kind = kClose}, "profile 0: the device closed", "http:snapshot", "snapshot HOST -o -"},
        {{}, "the device was not asked: a parameter", "none", "get HOST streamURI --index 9"},
    };
    for (auto each : cases) {
        camera_sim::CCamera& camera = host.Add({});
        camera.Inject(each.operation, each.fault);
        each.command.replace(each.command.find("HOST"), 4, AddressOf(camera));
        ExpectRuns({{each.command, 1, each.says}});
    }
}

}  // namespace
}  // namespace client_test
