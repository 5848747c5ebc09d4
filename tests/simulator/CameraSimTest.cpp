// The simulated camera, asked by a client of its own that knows nothing of either library.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "Exchange.h"
#include "camera_sim/CameraSim.h"
#include "support/PeerSocket.h"

namespace {

struct Token {
    std::string user = "user";
    std::string digest = "tuOSpGlFlIXsozq4HFNeeGeFLEI=";
    std::string nonce = "LKqI6G/AikKCQrN0zqZFlg==";
    std::string created = "2010-09-16T07:50:45Z";
    std::string type = "PasswordDigest";
};

std::string Post(std::uint16_t port, const std::string& operation, const std::string& header = "") {
    return Exchange(port, Http("POST", "/onvif/device_service",
                               Envelope(kDeviceNamespace, operation, "", header)));
}

std::string Header(const Token& token) {
    return "<w:Security xmlns:w='wsse'><w:UsernameToken><w:Username>" + token.user +
           "</w:Username><w:Password Type='x#" + token.type + "'>" + token.digest +
           "</w:Password><w:Nonce>" + token.nonce + "</w:Nonce><u:Created xmlns:u='wsu'>" +
           token.created + "</u:Created></w:UsernameToken></w:Security>";
}

/// Moves the camera's clock to 2010-09-16T07:50:45Z plus @p distance.
void SetClock(camera_sim::CCamera& camera, std::chrono::seconds distance) {
    using namespace std::chrono;
    const sys_seconds then = sys_days(2010y / September / 16) + 7h + 50min + 45s + distance;
    const auto now = floor<seconds>(system_clock::now());
    camera.Change([&](camera_sim::CameraState& state) { state.clock.offset = then - now; });
}

const camera_sim::CameraOptions kOptions = {.user = "user", .password = "userpassword"};

bool Accepted(const std::string& reply) {
    return reply.starts_with("HTTP/1.1 200 ") && Contains(reply, "GetDeviceInformationResponse");
}

bool Refused(const std::string& reply) {
    return reply.starts_with("HTTP/1.1 400 ") && Contains(reply, "ter:NotAuthorized");
}

/// What comes back for two operations in turn; a client that ends its request is not kept waiting.
std::vector<std::string> SpoiledReplies(const camera_sim::Spoiling& spoiling) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add(kOptions);
    EXPECT_TRUE(camera.Spoil(spoiling));
    std::vector<std::string> replies;
    for (int i = 0; i < 4; ++i) {
        const client_test::CRawClient client(camera.Port());
        client.Send(Http("POST", "/onvif/device_service",
                         Envelope(kDeviceNamespace, i % 2 == 0 ? "GetHostname" : "No")));
        client.EndSending();
        replies.push_back(client.ReadToEnd());
    }
    return replies;
}

TEST(CameraSim, SpoilsRepliesByKindAndSeed) {
    const auto sound = SpoiledReplies({.kind = "none"});
    for (const auto& kind : camera_sim::SpoilKinds()) {
        SCOPED_TRACE(kind.name);
        const camera_sim::Spoiling spoiling = {.kind = std::string(kind.name), .seed = 3};
        const auto spoiled = SpoiledReplies(spoiling);
        EXPECT_EQ(SpoiledReplies({.kind = std::string(kind.name), .oneIn = 0}), sound);
        if (kind.name.starts_with("reset-")) {
            // A reset may overtake what was sent before it.
            EXPECT_TRUE(std::equal(
                sound.begin(), sound.end(), spoiled.begin(),
                [](const auto& whole, const auto& part) { return whole.starts_with(part); }));
            continue;
        }
        EXPECT_EQ(spoiled, SpoiledReplies(spoiling));
        // Two of the kinds deliver everything, only not as a client likes it.
        const bool whole =
            kind.name == "none" || kind.name == "drip" || kind.name == "silence-answered";
        EXPECT_EQ(spoiled == sound, whole);
    }
    std::string error;
    for (const char* text : {"", "cuts", "cut:", "cut:x", "cut:1:", "cut:1:2:3", "cut:-1"}) {
        EXPECT_FALSE(camera_sim::ParseSpoiling(text, error)) << text;
    }
    EXPECT_EQ(camera_sim::ParseSpoiling("all:7:3", error)->oneIn, 3U);
}

TEST(CameraSim, ChecksUsernameTokens) {
    using namespace std::chrono_literals;
    struct Case {
        const char* name;
        const char* refusal;  // null: accepted
        Token token{};
        std::chrono::seconds distance = 0s;
    };
    const char* const digested = "wrong digest";
    const char* const untimely = "created too far from the camera's time";
    const char* const timeless = "no readable creation time";
    const char* const nonce = "AAECAwQFBgcICQoLDA0ODw==";
    // The digests were computed by other means than the simulator's.
    const std::vector<Case> cases = {
        {"right", nullptr},
        {"fraction of a second",
         nullptr,
         {.digest = "MB6f8PVjqzs9Lo6Kg5Zi+lvxGUo=",
          .nonce = nonce,
          .created = "2010-09-16T07:50:45.250Z"}},
        {"zone of UTC",
         nullptr,
         {.digest = "muvFZEqqR3uSbxe1nkgaeZg1uH0=",
          .nonce = nonce,
          .created = "2010-09-16T07:50:45+00:00"}},
        {"other zone",
         nullptr,
         {.digest = "RNNzFE8KCr/ooyVKx/Bgel/opS8=",
          .nonce = nonce,
          .created = "2010-09-16T02:20:45.5-05:30"}},
        {"zone too far", timeless, {.created = "2010-09-16T07:50:45+15:00"}},
        {"nonce digested as text",
         digested,
         {.digest = "5Y0yDw2p2Q/LBykdxvCoZCGromw=", .nonce = nonce}},
        {"other password", digested, {.digest = "np3emxBW68l6P2tSt3PDRwSNG+k="}},
        {"other time", digested, {.created = "2010-09-16T07:50:46Z"}},
        {"other user", "unknown user", {.user = "admin"}},
        {"text", "no password digest", {.digest = "userpassword", .type = "PasswordText"}},
        {"nonce not Base64", "no readable nonce", {.nonce = "???"}},
        {"no time", timeless, {.created = "now"}},
        {"just fresh", nullptr, {}, 290s},
        {"stale", untimely, {}, 310s},
        {"early", untimely, {}, -310s},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        camera_sim::CCameraHost host;
        camera_sim::CCamera& camera = host.Add(kOptions);
        SetClock(camera, test.distance);
        const std::string reply = Post(camera.Port(), "GetDeviceInformation", Header(test.token));
        EXPECT_TRUE(test.refusal == nullptr ? Accepted(reply) : Refused(reply)) << reply;
        ASSERT_EQ(camera.Requests().size(), 1U);
        EXPECT_EQ(camera.Requests()[0].refusal, test.refusal == nullptr ? "" : test.refusal);
        EXPECT_EQ(camera.Requests()[0].authenticated, test.refusal == nullptr);
        EXPECT_TRUE(Refused(Post(camera.Port(), "GetDeviceInformation", Header(test.token))))
            << "a replay";
        EXPECT_TRUE(Refused(Post(camera.Port(), "GetDeviceInformation")));
        EXPECT_TRUE(Contains(Post(camera.Port(), "GetSystemDateAndTime"), "UTCDateTime"));

        auto otherOptions = kOptions;
        otherOptions.strictClock = otherOptions.httpDate = true;
        otherOptions.refuseReplays = false;
        camera_sim::CCamera& other = host.Add(otherOptions);
        SetClock(other, test.distance);
        for (int times = 0; times < 2; ++times) {
            const std::string time = Post(other.Port(), "GetSystemDateAndTime", Header(test.token));
            EXPECT_EQ(Refused(time), test.refusal != nullptr) << time;
            EXPECT_TRUE(Contains(time, "\r\nDate: Thu, 16 Sep 2010 07:")) << time;
        }
        EXPECT_FALSE(Refused(Post(other.Port(), "GetSystemDateAndTime")));
    }
}

TEST(CameraSim, LetsAccountsDoWhatTheirRolesPermit) {
    using camera_sim::Role;
    camera_sim::CameraOptions options;
    options.user = "";
    options.httpAuthentication = camera_sim::HttpScheme::kBasic;
    options.accounts = {{"u", "", Role::kUser}, {"o", "", Role::kOperator}, {"a", ""}};
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add(options);
    struct Case {
        const char* service;
        const char* operation;
        Role role;
    };
    const std::vector<Case> cases = {
        {"device", "GetDeviceInformation", Role::kUser},
        {"media", "GetProfiles", Role::kUser},
        {"media", "CreateOSD", Role::kOperator},
        {"device", "SetRelayOutputState", Role::kOperator},
        {"device", "SetSystemDateAndTime", Role::kAdministrator},
        {"device", "GetHostname", Role::kNone},
    };
    for (const auto& [service, operation, role] : cases) {
        const std::string name = service;
        const std::string body =
            Envelope("http://www.onvif.org/ver10/" + name + "/wsdl", operation);
        for (const auto& [credentials, has] :
             {std::pair("eDo=", Role::kNone), std::pair("dTo=", Role::kUser),
              std::pair("bzo=", Role::kOperator), std::pair("YTo=", Role::kAdministrator)}) {
            const std::string reply = Exchange(
                camera.Port(), Http("POST", "/onvif/" + name + "_service", body,
                                    std::string("Authorization: Basic ") + credentials + "\r\n"));
            const bool refused = Contains(reply, "NotAuthorized") || reply.find(" 401 ") == 8;
            EXPECT_EQ(refused, has < role) << operation << ": " << reply;
        }
    }
}

TEST(CameraSim, IsNotMadeWithUnknownOptions) {
    const std::pair<camera_sim::CameraOptions, const char*> cases[] = {
        {{.topicStyle = "none"}, "unknown topic style \"none\""},
        {{.subscriptionStyle = "none"}, "unknown subscription style \"none\""},
        {{.snapshotRealm = "Hall\r\nServer: x"}, "the realm holds a line break"},
    };
    camera_sim::CCameraHost host;
    for (const auto& [options, refusal] : cases) {
        std::string error;
        EXPECT_EQ(host.TryAdd(options, error), nullptr);
        EXPECT_EQ(error, refusal);
    }
}

TEST(CameraSim, MeetsRequestsWithFaultsInTurn) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add({.user = ""});
    using Kind = camera_sim::Fault::Kind;
    camera.Inject("tds:GetDeviceInformation", {.kind = Kind::kClose, .remaining = 1});
    camera.Inject("tr2:*", {.kind = Kind::kClose});
    camera.Inject("tds:*", {.kind = Kind::kTruncate, .remaining = 1, .bytes = 10});
    camera.Inject("GetProfiles", {.kind = Kind::kClose});
    EXPECT_EQ(Post(camera.Port(), "GetDeviceInformation"), "");
    EXPECT_EQ(Post(camera.Port(), "GetDeviceInformation"), "HTTP/1.1 2");
    EXPECT_TRUE(Accepted(Post(camera.Port(), "GetDeviceInformation")));
    EXPECT_EQ(camera.Count("GetDeviceInformation"), 3U);
    EXPECT_EQ(camera.Count("trt:GetDeviceInformation"), 0U);
    EXPECT_EQ(camera.Faults().size(), 2U);
}

TEST(CameraSim, SendsRepliesInEveryForm) {
    using camera_sim::KeepAlive;
    struct Case {
        camera_sim::CameraOptions options;
        const char* sent;
        std::size_t answered = 1;  // of the two requests before one that cannot be read
        bool bare = false;         // the first answer
    };
    const std::vector<Case> cases = {
        {{}, "\r\nConnection: close\r\n\r\n<?xml"},
        {{.keepAlive = KeepAlive::kPolite}, "\r\nConnection: close\r\n\r\n<?xml", 2},
        {{.keepAlive = KeepAlive::kAlways},
         "Connection: keep-alive\r\n\r\nHTTP/1.1 200 OK",
         3,
         true},
        {{.keepAlive = KeepAlive::kPolite, .chunkBytes = 5},
         "utf-8\r\nTransfer-Encoding: chunked\r\nConnection: keep-alive\r\n\r\n5\r\n<?xml\r\n5\r\n",
         2},
        {{.chunkBytes = 1000}, "lope>\r\n0\r\n\r\n"},
        {{.keepAlive = KeepAlive::kAlways, .noLength = true},
         "utf-8\r\nConnection: close\r\n\r\n<?xml"},
        {{.keepAlive = KeepAlive::kPolite, .noBareLength = true},
         "404 Not Found\r\nServer: onvif-camera-sim\r\nConnection: keep-alive\r\n\r\nHTTP",
         2,
         true},
        {{.interimReply = true}, "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\n"},
        {{.looseEnvelopeEnd = true}, ":Envelope >"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(&test - cases.data());
        camera_sim::CCameraHost host;
        camera_sim::CCamera& camera = host.Add(test.options);
        if (test.bare) {
            camera.Inject(
                "*", {.kind = camera_sim::Fault::Kind::kBareStatus, .remaining = 1, .status = 404});
        }
        const std::string body = Envelope(kDeviceNamespace, "GetHostname");
        const std::string path = "/onvif/device_service";
        const std::string reply = Exchange(
            camera.Port(), Http("POST", path, body, "") +
                               Http("POST", path, body, "Connection: close\r\n") + "?\r\n\r\n");
        EXPECT_TRUE(Contains(reply, test.sent)) << reply;
        EXPECT_EQ(camera.Count("GetHostname"), std::min<std::size_t>(test.answered, 2));
        EXPECT_EQ(Contains(reply, "400 Bad Request"), test.answered == 3);
    }
}

// Under ThreadSanitizer this is also the test of the locks.
TEST(CameraSim, ServesManyThreadsAndEndsWhileClientsWait) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 50;
    std::vector<std::thread> clients;
    std::atomic<int> accepted = 0;
    std::thread waiting;
    {
        camera_sim::CCameraHost host;
        camera_sim::CCamera& camera = host.Add({.user = ""});
        for (int i = 0; i < kThreads; ++i) {
            clients.emplace_back([&] {
                for (int round = 0; round < kRounds; ++round) {
                    camera.Change([](auto& state) { ++state.network.interfaces[0].mtu; });
                    accepted += Accepted(Post(camera.Port(), "GetDeviceInformation")) ? 1 : 0;
                    EXPECT_FALSE(camera.Requests().empty());
                }
            });
        }
        for (std::thread& client : clients) client.join();
        camera.Inject("*", {.kind = camera_sim::Fault::Kind::kSilence});
        waiting = std::thread([port = camera.Port()] { EXPECT_EQ(Post(port, "GetDNS"), ""); });
        while (camera.Count("GetDNS") == 0) std::this_thread::yield();
    }
    waiting.join();
    EXPECT_EQ(accepted, kThreads * kRounds);
}

TEST(CameraSim, AnswersProbesForItsTypesAndScopes) {
    camera_sim::CCameraHost host;
    host.Add({.model = "fixed"});
    host.Add({.discoverable = false});
    host.Add({.model = "dome"});
    const std::uint16_t port = host.AnswerProbes();
    const client_test::CPeerSocket client(client_test::CPeerSocket::Kind::kDatagrams);
    const std::string space = "http://schemas.xmlsoap.org/ws/2005/04/discovery";
    const auto probe = [&](const std::string& id, const std::string& content) {
        return Envelope(space, "Probe", content,
                        "<MessageID>" + id + "</MessageID><Action>" + space + "/Probe</Action>" +
                            "<To>urn:schemas-xmlsoap-org:ws:2005:04:discovery</To>");
    };
    const std::string types = "<Types xmlns:x='http://www.onvif.org/ver10/network/wsdl'>x:";
    const std::string root = "onvif://www.onvif.org/";
    const std::pair<std::string, int> cases[] = {
        {types + "NetworkVideoTransmitter</Types>", 2},
        {types + "Device</Types>", 0},
        {"<Scopes>ONVIF://WWW.onvif.org/type/ptz</Scopes>", 1},
        {"<Scopes>" + root + "typ</Scopes>", 0},
        {"<Scopes>" + root + "type/ " + root + "other</Scopes>", 0}};
    for (const auto& [content, wanted] : cases) {
        client.SendTo(port, probe("", content));  // nobody answers
        client.SendTo(port, probe("urn:asked", content));
        client.SendTo(port, probe("urn:end", "<Scopes>" + root + "type/ptz</Scopes>"));
        int answers = 0;
        for (std::uint16_t from = 0; Contains(client.ReceiveFrom(from), ">urn:asked<"); ++answers) {
        }
        EXPECT_EQ(answers, wanted) << content;
    }
}

}  // namespace
