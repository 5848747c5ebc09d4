// Subscriptions, waiting pulls and notifications of the simulated camera.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <future>
#include <mutex>
#include <regex>
#include <string>
#include <vector>

#include "Exchange.h"
#include "camera_sim/CameraSim.h"
#include "support/Await.h"
#include "support/ScriptedPeer.h"

namespace {

using camera_sim::CameraState;
using camera_sim::CCamera;
using camera_sim::CCameraHost;
using client_test::WaitUntil;
using namespace std::chrono_literals;

constexpr const char* kEvents = "http://www.onvif.org/ver10/events/wsdl";
constexpr const char* kNotification = "http://docs.oasis-open.org/wsn/b-2";
constexpr const char* kServicePath = "/onvif/event_service";

std::string Soap(const std::string& path, const std::string& ns, const std::string& operation,
                 const std::string& arguments, const std::string& header = "") {
    return Http("POST", path, Envelope(ns, operation, arguments, header));
}

std::size_t CountOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

std::string Create(const CCamera& camera, const std::string& arguments = "") {
    return Exchange(camera.Port(),
                    Soap(kServicePath, kEvents, "CreatePullPointSubscription", arguments));
}
std::string Term(const std::string& time) {
    return "<InitialTerminationTime>" + time + "</InitialTerminationTime>";
}

/// A subscription as a client sees it.
struct PullPoint {
    explicit PullPoint(const CCamera& camera, const std::string& term = "PT1H")
        : port(camera.Port()) {
        const std::string reply = Create(camera, Term(term));
        path = "/" + Between(Between(reply, ":Address>", "<"), std::to_string(port) + "/", "<");
        header = Between(reply, "ReferenceParameters>", "</wsa5:ReferenceParameters>");
        EXPECT_TRUE(Contains(path, "/onvif/subscription")) << reply;
    }

    std::string PullBytes(const std::string& timeout, int limit = 100) const {
        return Soap(path, kEvents, "PullMessages",
                    "<Timeout>" + timeout + "</Timeout><MessageLimit>" + std::to_string(limit) +
                        "</MessageLimit>",
                    header);
    }
    std::string Pull(const std::string& timeout, int limit = 100) const {
        return Exchange(port, PullBytes(timeout, limit));
    }
    std::string Ask(const std::string& operation, const std::string& arguments = "") const {
        return Exchange(port, Soap(path, kNotification, operation, arguments, header));
    }

    std::uint16_t port;
    std::string path;
    std::string header;
};

void SetMotion(CameraState& state, bool motion) {
    state.media.videoSources[0].motion = motion;
}

void WaitForPulls(const CCamera& camera, std::size_t count) {
    WaitUntil([&] { return camera.Subscriptions().at(0).waitingPulls == count; });
}

/// The topics of the messages and their simple items: "t:A/B Name=Value ...|t:A/C ...".
std::string Told(const std::string& reply) {
    static const std::regex part(
        "Set\">([^<]*)</wsnt:Topic>|SimpleItem Name=\"([^\"]*)\" Value=\"([^\"]*)\"");
    std::string told;
    for (std::sregex_iterator at(reply.begin(), reply.end(), part), end; at != end; ++at) {
        told += (*at)[1].matched ? (told.empty() ? "" : "|") + (*at)[1].str()
                                 : " " + (*at)[2].str() + "=" + (*at)[3].str();
    }
    return told;
}

TEST(CameraEvents, ReportsStateAndChangesInEveryStyle) {
    struct Case {
        const char* topics;
        std::string motion;  // what VideoSource_1, Input_1 and Relay_1 tell when they begin
        std::string input;
        std::string relay = "";
        bool numeric = false;
        const char* subscriptions = "address";
        std::size_t described = 2;  // topics
    };
    const std::string video = " VideoSourceConfigurationToken=VideoSourceConfig_1";
    const std::string rule = video + " VideoAnalyticsConfigurationToken=Analytics_1 Rule=";
    const std::string motionRule = rule + "MotionRule IsMotion=true";
    const std::string input =
        "|tns1:Device/Trigger/DigitalInput InputToken=Input_1 LogicalState=true";
    const std::string relay = "|tns1:Device/Trigger/Relay RelayToken=Relay_1 LogicalState=active";
    const std::string cells = "tns1:RuleEngine/CellMotionDetector/Motion";
    const std::vector<Case> cases = {
        {"cell-motion", cells + motionRule, input},
        {"motion-region",
         "tns1:RuleEngine/MotionRegionDetector/Motion VideoSource=VideoSource_1 "
         "RuleName=MotionRule State=true",
         "|tns1:Device/Trigger/DigitalInput InputToken=Input_1 LogicalState=1", "", true, "id"},
        {"source-alarm", "tns1:VideoSource/MotionAlarm Source=VideoSource_1 State=true", input, "",
         false, "address-other"},
        {"qualified", "tns1:RuleEngine/tns1:CellMotionDetector/tns1:Motion" + motionRule,
         "|tns1:Device/tns1:Trigger/tns1:DigitalInput InputToken=Input_1 LogicalState=true"},
        {"field",
         "tns1:RuleEngine/FieldDetector/ObjectsInside" + rule +
             "FieldRule ObjectId=1 IsInside=true",
         input},
        {"line", "tns1:RuleEngine/LineDetector/Crossed" + rule + "LineRule ObjectId=1", input},
        {"detection", "tns1:VideoAnalytics/VMD/Motion VideoSource=VideoSource_1 active=true",
         input},
        {"guards",
         "tns1:RuleEngine/MotionGuard/Profile1 VideoSource=VideoSource_1 active=true"
         "|tns1:RuleEngine/FenceGuard/Profile1 VideoSource=VideoSource_1 active=false",
         "|tns1:Device/IO/Port Port=Input_1 State=true", "", false, "address", 3},
        {"human-shape", "tns1:UserAlarm/IVA/HumanShapeDetect" + video + " State=true", input, relay,
         false, "address", 3},
        {"two-rules", cells + rule + "RuleA IsMotion=true|" + cells + rule + "RuleB IsMotion=false",
         input, relay, false, "address", 3},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.topics);
        CCameraHost host;
        CCamera& camera = host.Add({.user = "",
                                    .topicStyle = test.topics,
                                    .numericStates = test.numeric,
                                    .subscriptionStyle = test.subscriptions});
        const PullPoint other(camera);
        const PullPoint point(camera);
        EXPECT_EQ(point.path == other.path, test.subscriptions == std::string("id"));
        EXPECT_FALSE(Contains(point.Pull("PT0S"), "Crossed"));
        const auto tell = [&](bool active) {
            camera.Change([active](CameraState& state) {
                SetMotion(state, active);
                state.inputs[0].active = state.relays[0].active = active;
            });
            const std::string reply = point.Pull("PT0S");
            EXPECT_FALSE(Contains(reply, "PropertyOperation=\"Initialized\""));
            return Told(reply);
        };
        const std::string begin = test.motion + test.input + test.relay;
        EXPECT_EQ(tell(true), begin);
        // The crossing of a line does not end.
        const bool event = Contains(begin, "Crossed");
        std::string end = event ? test.input.substr(1) : begin;
        for (const auto& [on, off] :
             {std::pair("=true", "=false"), std::pair("=active", "=inactive"),
              std::pair("LogicalState=1", "LogicalState=0")})
            end = std::regex_replace(end, std::regex(on), off);
        EXPECT_EQ(tell(false), end);
        Exchange(camera.Port(), Http("DELETE", "/control/inputs/Input_1", ""));
        EXPECT_EQ(CountOf(point.Pull("PT0S"), "PropertyOperation=\"Deleted\""), 1U);
        EXPECT_EQ(CountOf(point.Pull("PT0S"), "NotificationMessage"), 0U);
        EXPECT_EQ(CountOf(other.Pull("PT0S", 5), "<wsnt:NotificationMessage>"), 5U);
        const std::string properties =
            Exchange(camera.Port(), Soap(kServicePath, kEvents, "GetEventProperties", ""));
        EXPECT_EQ(CountOf(properties, "topic=\"true\""), test.described);
        EXPECT_EQ(CountOf(properties, "IsProperty=\"false\""), event ? 1U : 0U) << properties;
    }
}

TEST(CameraEvents, EndsAWaitingPull) {
    struct Case {
        const char* name;
        const char* timeout;
        bool waits;  // until something is done
        std::function<void(CCamera&, const PullPoint&)> act;
        const char* expected;  // in the reply; empty: the connection is closed
        unsigned status;
    };
    const auto nothing = [](CCamera&, const PullPoint&) {};
    const char* const kUnknown = "<SOAP-ENV:Value>wsrfr:ResourceUnknownFault<";
    const std::vector<Case> cases = {
        {"input by control request", "PT100S", true,
         [](CCamera& camera, const PullPoint&) {
             const auto set = [&](const char* path, const char* body) {
                 return Exchange(camera.Port(), Http("POST", path, body));
             };
             EXPECT_TRUE(Contains(set("/control/inputs/Input_9", "true"), " 404 "));
             EXPECT_TRUE(Contains(set("/control/inputs/Input_1", "on"), " 400 "));
             EXPECT_TRUE(Contains(set("/control/motion", "on"), " 400 "));
             EXPECT_TRUE(Contains(set("/control/inputs/Input_1", "true\n"), " 200 "));
         },
         "\"LogicalState\" Value=\"true\"", 200},
        {"timeout", "PT0.05S", false, nothing, "PullMessagesResponse", 200},
        {"expiry", "PT100S", false, nothing, kUnknown, 400},
        {"unsubscription", "PT100S", true,
         [](CCamera&, const PullPoint& point) {
             EXPECT_TRUE(Contains(point.Ask("Unsubscribe"), "UnsubscribeResponse"));
         },
         kUnknown, 400},
        {"reboot", "PT100S", true,
         [](CCamera& camera, const PullPoint&) {
             EXPECT_TRUE(
                 Contains(Exchange(camera.Port(), Http("POST", "/control/reboot", "")), " 200 "));
             EXPECT_TRUE(camera.Subscriptions().empty());
         },
         "", 0},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        CCameraHost host;
        CCamera& camera = host.Add({.user = ""});
        const PullPoint point(camera);
        EXPECT_TRUE(Contains(point.Pull("PT0S"), "\"Initialized\""));
        if (test.name == std::string("expiry"))
            point.Ask("Renew", "<TerminationTime>PT0.2S</TerminationTime>");
        auto waiting = std::async(std::launch::async, [&] { return point.Pull(test.timeout); });
        if (test.waits) WaitForPulls(camera, 1);
        test.act(camera, point);
        const std::string reply = waiting.get();
        EXPECT_TRUE(*test.expected == '\0' ? reply.empty() : Contains(reply, test.expected))
            << reply;
        EXPECT_EQ(Contains(reply, "NotificationMessage"), Contains(reply, "\"Changed\""));
        auto requests = camera.Requests();
        std::erase_if(requests, [](const auto& r) { return r.operation != "PullMessages"; });
        EXPECT_EQ(requests.back().status, test.status);
    }
}

TEST(CameraEvents, ForgetsThePullOfAClientThatLeft) {
    CCameraHost host;
    CCamera& camera = host.Add({.user = ""});
    const PullPoint point(camera);
    point.Pull("PT0S");
    {
        const client_test::CRawClient connection(camera.Port());
        connection.Send(point.PullBytes("PT100S"));
        WaitForPulls(camera, 1);
    }
    WaitForPulls(camera, 0);
    camera.Change([](CameraState& state) { SetMotion(state, true); });
    EXPECT_TRUE(Contains(point.Pull("PT0S"), "\"Changed\""));
}

TEST(CameraEvents, KeepsLimits) {
    CCameraHost host;
    CCamera& camera = host.Add({.user = "",
                                .maxSubscriptions = 2,
                                .maxTermination = 3600s,
                                .maxPullTimeout = 90s,
                                .maxMessageLimit = 10,
                                .messageQueueLimit = 4});
    for (const char* time : {"PT0S", "PT2H", "2001-01-01T00:00:00Z", "soon", "PT", "P1", "-PT5S"}) {
        EXPECT_TRUE(Contains(Create(camera, Term(time)),
                             ":UnacceptableInitialTerminationTimeFault</SOAP-ENV:Value>"))
            << time;
    }
    const PullPoint point(camera);
    for (const std::string& pull :
         {point.Pull("PT91S", 10), point.Pull("PT1M31S", 1), point.Pull("PT0S", 11)}) {
        EXPECT_TRUE(Contains(pull,
                             "<tev:MaxTimeout>PT90S</tev:MaxTimeout>"
                             "<tev:MaxMessageLimit>10</tev:MaxMessageLimit>"))
            << pull;
    }
    for (const std::string& pull :
         {point.Pull("PT0S", 0), point.Pull("PT0S", -1), point.Pull("10", 1)})
        EXPECT_TRUE(Contains(pull, "ter:InvalidArgVal")) << pull;
    for (const bool motion : {true, false, true})
        camera.Change([=](CameraState& state) { SetMotion(state, motion); });
    EXPECT_EQ(camera.Subscriptions()[0].dropped, 2U);
    EXPECT_EQ(CountOf(point.Pull("PT0S", 10), "<wsnt:NotificationMessage>"), 4U);
    PullPoint unknown = point;
    for (const char* path :
         {"/onvif/subscription/99", "/onvif/subscription/x", "/onvif/subscription", kServicePath}) {
        unknown.path = path;
        EXPECT_TRUE(Contains(unknown.Pull("PT0S", 1), ":ResourceUnknownFault")) << path;
    }
    const PullPoint last(camera);
    EXPECT_TRUE(Contains(Create(camera), "SubscribeCreationFailedFault"));
    last.Ask("Unsubscribe");
    EXPECT_TRUE(Contains(Create(camera), "CreatePullPointSubscriptionResponse"));
}

TEST(CameraEvents, RenewsOnRequest) {
    CCameraHost host;
    CCamera& camera = host.Add({.user = ""});
    const PullPoint point(camera, "PT100S");
    const auto rest = [&] { return camera.Subscriptions().at(0).rest; };
    const auto renew = [&](const std::string& time) {
        return point.Ask("Renew", "<TerminationTime>" + time + "</TerminationTime>");
    };
    EXPECT_LE(rest(), 100s);
    EXPECT_TRUE(Contains(renew("PT2H"), "RenewResponse"));
    EXPECT_GT(rest(), 3600s);
    // An absolute time is one of the camera's clock.
    camera.Change([](CameraState& state) {
        using namespace std::chrono;
        const sys_seconds then = sys_days(2030y / January / 1);
        state.clock.offset = then - floor<seconds>(system_clock::now());
    });
    EXPECT_TRUE(Contains(renew("2030-01-01T20:00:00Z"), ">2030-01-01T"));
    EXPECT_GT(rest(), 19 * 3600s);
    EXPECT_TRUE(Contains(renew("PT0S"), ":UnacceptableTerminationTimeFault"));
    EXPECT_GT(rest(), 19 * 3600s);

    point.Pull("PT0S");
    const auto strictRest = rest();
    point.Pull("PT0S");
    EXPECT_LE(rest(), strictRest);
    CCamera& lenient = host.Add({.user = "", .pullsRenew = true});
    const PullPoint extended(lenient, "PT100S");
    const auto lenientRest = [&] { return lenient.Subscriptions().at(0).rest; };
    WaitUntil([&] { return lenientRest() < 100s - 50ms; });
    WaitUntil([&] {
        const auto before = lenientRest();
        extended.Pull("PT0S");
        return lenientRest() > before;
    });
}

TEST(CameraEvents, FiltersTopics) {
    const std::string dialect = "http://www.onvif.org/ver10/tev/topicExpression/ConcreteSet";
    CCameraHost host;
    CCamera& camera = host.Add({.user = ""});
    const auto filter = [&](const std::string& expression, const std::string& how) {
        return "<Filter><TopicExpression Dialect='" + how + "'>" + expression +
               "</TopicExpression></Filter>";
    };
    for (const auto& [expression, messages] :
         {std::pair("x:RuleEngine//.", 1U), std::pair("x:Device/Trigger/DigitalInput", 2U),
          std::pair("x:RuleEngine/CellMotionDetector/Motion|x:Device//.", 3U),
          std::pair("x:Device", 0U)}) {
        Create(camera, filter(expression, dialect));
        EXPECT_EQ(camera.Subscriptions().back().queued, messages) << expression;
    }
    EXPECT_TRUE(Contains(Create(camera, filter("a//b", dialect)), "InvalidTopicExpressionFault"));
    EXPECT_TRUE(Contains(Create(camera, filter("a", "other")), "DialectUnknownFault"));
    EXPECT_TRUE(
        Contains(Create(camera, "<Filter><MessageContent/></Filter>"), "InvalidFilterFault"));
}

TEST(CameraEvents, AnswersOnAKeptConnectionWhatCameWhileAPullWaited) {
    CCameraHost host;
    CCamera& camera = host.Add({.user = "", .keepAlive = camera_sim::KeepAlive::kPolite});
    const PullPoint point(camera);
    const client_test::CRawClient client(camera.Port());
    const std::string close = "Connection: close\r\n";
    std::string keep = point.PullBytes("PT1M");
    keep.erase(keep.find(close), close.size());
    client.Send(keep + keep);
    WaitForPulls(camera, 1);
    client.Send(point.PullBytes("PT0S"));
    camera.Change([](CameraState& state) { SetMotion(state, true); });
    const std::string replies = client.ReadToEnd();
    EXPECT_EQ(CountOf(replies, "</tev:PullMessagesResponse>"), 3U) << replies;
    EXPECT_EQ(CountOf(replies, "PropertyOperation=\"Changed\""), 1U) << replies;
}

TEST(CameraEvents, ARecorderReportsMotionOfOneChannel) {
    CCameraHost host;
    CCamera& camera = host.Add({.model = "recorder", .user = "", .channels = 5});
    const PullPoint point(camera);
    EXPECT_EQ(CountOf(point.Pull("PT0S"), "PropertyOperation=\"Initialized\""), 10U);
    Exchange(camera.Port(), Http("POST", "/control/motion/VideoSource_4", "true"));
    EXPECT_EQ(Told(point.Pull("PT0S")),
              "tns1:RuleEngine/CellMotionDetector/Motion "
              "VideoSourceConfigurationToken=VideoSourceConfig_4 "
              "VideoAnalyticsConfigurationToken=Analytics_4 Rule=MotionRule IsMotion=true");
    EXPECT_EQ(camera.Count("event:messages"), 1U);
    EXPECT_EQ(camera.Count("event:pulled"), 11U);
    const std::string profiles = Exchange(
        camera.Port(),
        Soap("/onvif/media_service", "http://www.onvif.org/ver10/media/wsdl", "GetProfiles", ""));
    EXPECT_EQ(CountOf(profiles, "<trt:Profiles "), 10U);
    EXPECT_NEAR(static_cast<double>(profiles.size()), 10 * 4500.0, 10 * 300.0);
}

TEST(CameraEvents, PostsNotifications) {
    std::mutex lock;
    std::vector<std::string> posts;  // guarded by lock
    const client_test::CScriptedPeer consumer([&](client_test::CPeerConnection& connection) {
        std::string post;
        while (!Contains(post, "</SOAP-ENV:Envelope>")) post += connection.Read(1);
        const std::lock_guard guard(lock);
        posts.push_back(post);
        connection.Send(posts.size() == 2 ? "HTTP/1.1 500 No\r\n\r\n"
                                          : "HTTP/1.1 204 None\r\n\r\n");
    });
    const std::string address = "http://127.0.0.1:" + std::to_string(consumer.Port()) + "/take";
    CCameraHost host;
    CCamera& camera = host.Add({.model = "fixed", .user = ""});
    const auto subscribe = [&](const std::string& at) {
        return Exchange(camera.Port(), Soap(kServicePath, kNotification, "Subscribe",
                                            "<ConsumerReference><Address>" + at +
                                                "</Address></ConsumerReference>" + Term("PT60S")));
    };
    for (const char* refused : {"http://192.0.2.1/", "http://127.0.0.1.example/", "", "https://x",
                                "http://127.0.0.1:0/", "http://127.0.0.1:80/a&#13;&#10;b"})
        EXPECT_TRUE(Contains(subscribe(refused), "SubscribeCreationFailedFault")) << refused;
    EXPECT_TRUE(Contains(subscribe(address), "SubscribeResponse"));
    camera.Change([](CameraState& state) { state.inputs[0].active = true; });
    WaitUntil([&] { return camera.Count("event:notified") == 2; });
    EXPECT_EQ(camera.Count("event:failed"), 1U);
    const std::lock_guard guard(lock);
    ASSERT_EQ(posts.size(), 3U);
    EXPECT_TRUE(posts[0].starts_with("POST /take HTTP/1.1\r\n")) << posts[0];
    EXPECT_TRUE(Contains(posts[0], "<wsnt:Notify>") && Contains(posts[0], "\"IsMotion\""));
    EXPECT_TRUE(Contains(posts[1], "\"InputToken\"")) << posts[1];
    EXPECT_TRUE(Contains(posts[2], "\"Changed\"")) << posts[2];
    const auto info = camera.Subscriptions().at(0);
    EXPECT_EQ(info.consumer, address);
    EXPECT_EQ(info.delivered, 2U);
    EXPECT_TRUE(Contains(Exchange(camera.Port(), Http("GET", "/control/subscriptions", "")),
                         "\"consumer\":\"" + address + "\""));
}

}  // namespace
