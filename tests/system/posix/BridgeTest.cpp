// onvifctl bridge with a real broker.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "support/Await.h"
#include "support/ClosedPort.h"
#include "system/AlarmObserver.h"
#include "system/Tool.h"
#include "system/posix/Broker.h"

namespace client_test {
namespace {

using camera_sim::CCamera;
using camera_sim::CCameraHost;
using Json = nlohmann::json;

/// "cam0", "cam1" ...
std::vector<std::string> Names(std::size_t count) {
    std::vector<std::string> names;
    while (names.size() < count) {
        names.push_back("cam" + std::to_string(names.size()));
    }
    return names;
}

/// Cameras with names, and the hosts file that tells them.
struct Fleet {
    explicit Fleet(const std::vector<std::string>& names) {
        std::string text;
        for (const std::string& name : names) {
            CCamera& camera = host.Add({.model = "fixed"});
            cameras.emplace_back(name, &camera);
            text += "['" + name + "']\naddress = '" + AddressOf(camera) + "'\n";
        }
        file = folder.File("hosts.toml", text);
    }

    CCamera& operator[](std::size_t i) const { return *cameras[i].second; }

    COwnFolder folder;
    CCameraHost host;
    std::vector<std::pair<std::string, CCamera*>> cameras;
    std::string file;
};

std::unique_ptr<CRunningTool> Bridge(const CBroker& broker, const Fleet& fleet,
                                     const std::string& options = "") {
    return std::make_unique<CRunningTool>("bridge --for 100 --broker " + broker.Address() +
                                              " --hosts " + fleet.file + " --expire 9 " + options,
                                          kRight, "/dev/null");
}

std::string Topic(const std::string& camera, const std::string& rest) {
    return "onvif/" + camera + "/" + rest;
}

using States = std::map<std::string, std::string>;

/// What the broker retains of cameras.
States Retained(const CBroker& broker) {
    States retained = CSubscriber(broker).All();
    std::erase_if(retained, [](const auto& each) {
        return !each.first.starts_with("onvif/cam") || each.first.ends_with("/bridge");
    });
    return retained;
}

void ExpectTruth(const CBroker& broker, const Fleet& fleet) {
    States truth;
    for (const auto& [name, camera] : fleet.cameras) {
        const auto state = camera->State();
        truth[Topic(name, "availability")] = "online";
        truth[Topic(name, "motion")] = state.media.videoSources.front().motion ? "ON" : "OFF";
        truth[Topic(name, "input/1")] = state.inputs.front().active ? "ON" : "OFF";
    }
    Await([&] { return Retained(broker) == truth; });
    EXPECT_EQ(Retained(broker), truth);
}

/// Other states in each of ten rounds: what the broker knows from before is none of the later ones.
void Change(const Fleet& fleet, std::size_t round) {
    for (std::size_t i = 0; i < fleet.cameras.size(); ++i) {
        SetMotion(fleet[i], (i + round) % 2 == 0);
        SetInput(fleet[i], (i / 2 + round) % 5 == 0);
    }
}

TEST(Bridge, StatesAreTrueThroughKillsRestartsAndOtherShares) {
    CBroker broker;
    const Fleet fleet(Names(40));
    std::map<unsigned int, std::unique_ptr<CRunningTool>> bridges;
    const auto start = [&](unsigned int number, unsigned int count) {
        bridges[number] = Bridge(broker, fleet,
                                 "--shard " + std::to_string(number) + "/" + std::to_string(count));
    };
    const auto startAll = [&](unsigned int count) {
        for (unsigned int number = 1; number <= count; ++number) {
            start(number, count);
        }
    };
    startAll(4);
    ExpectTruth(broker, fleet);
    const struct {
        const char* what;
        std::function<void()> begins, ends;
    } kTroubles[] = {
        {"a bridge is killed",
         [&] {
             EXPECT_TRUE(bridges[2]->Signal(SIGKILL));
             bridges[2]->End();
         },
         [&] { start(2, 4); }},
        {"the broker restarts", [&] { broker.Stop(SIGTERM); },
         [&] { EXPECT_TRUE(broker.Start()); }},
        {"the broker is killed and knows what was long ago", [&] { broker.Stop(SIGKILL); },
         [&] { EXPECT_TRUE(broker.Start()); }},
        {"three bridges take over from four",
         [&] {
             for (auto& [number, bridge] : bridges) {
                 EXPECT_TRUE(bridge->Signal(SIGTERM));
                 EXPECT_EQ(bridge->End().code, 0);
             }
             bridges.clear();
             for (const auto& [topic, payload] : CSubscriber(broker).All()) {
                 EXPECT_TRUE(payload != "ON" && payload != "OFF" && payload != "online") << topic;
             }
         },
         [&] { startAll(3); }},
    };
    std::size_t round = 0;
    for (const auto& trouble : kTroubles) {
        SCOPED_TRACE(trouble.what);
        Change(fleet, round++);
        trouble.begins();
        Change(fleet, round++);
        trouble.ends();
        Change(fleet, round++);
        ExpectTruth(broker, fleet);
    }
    std::set<std::string> owners;
    for (const std::string& name : Names(40)) {
        owners.insert(CSubscriber(broker).Latest(Topic(name, "bridge")));
    }
    EXPECT_EQ(owners, (std::set<std::string>{"1", "2", "3"}));
}

TEST(Bridge, WhatAKilledBridgeLeavesDoesNotCountAndExpires) {
    CBroker broker;
    const Fleet fleet(Names(2));
    const std::string own = "onvif/$bridge/1/availability";
    auto bridge = Bridge(broker, fleet);
    CSubscriber subscriber(broker);
    SetMotion(fleet[0], true);
    SetInput(fleet[0], true);
    SetMotion(fleet[1], true);
    ASSERT_TRUE(subscriber.Hears(own, "online"));
    ExpectTruth(broker, fleet);
    EXPECT_TRUE(bridge->Signal(SIGKILL));
    EXPECT_TRUE(subscriber.Hears(own, "offline")) << "by the last will";
    EXPECT_EQ(CSubscriber(broker).Latest(own), "offline");
    bridge->End();

    // The next one is not online before what is not known any more is gone.
    SetInput(fleet[0], false);
    fleet[1].Inject("*", {.kind = camera_sim::Fault::Kind::kClose});
    const std::size_t heard = subscriber.Messages().size();
    bridge = Bridge(broker, fleet);
    ASSERT_TRUE(subscriber.Hears(own, "online"));
    std::map<std::string, std::string> known;
    const auto messages = subscriber.Messages();
    for (std::size_t i = 0; i < messages.size() && (i < heard || known[own] != "online"); ++i) {
        known[messages[i].topic] = messages[i].payload;
    }
    EXPECT_NE(known[Topic("cam0", "input/1")], "ON");
    EXPECT_EQ(known[Topic("cam1", "motion")], "");
    EXPECT_EQ(known[Topic("cam1", "availability")], "offline");

    EXPECT_TRUE(bridge->Signal(SIGKILL));
    EXPECT_TRUE(Await([&] { return Retained(broker).empty(); })) << "what nobody refreshes is gone";
}

TEST(Bridge, ACameraThatIsLostHasNoStates) {
    CBroker broker;
    const CSubscriber first(broker);  // the broker works: it misses signals before
    broker.Stop(SIGTERM);             // and comes back later
    Fleet fleet(Names(2));
    fleet[0].Inject("*", {.kind = camera_sim::Fault::Kind::kClose});
    const auto bridge = Bridge(broker, fleet);
    ASSERT_TRUE(Await([&] { return fleet[0].Count("*") > 0; }));
    SetMotion(fleet[1], true);
    EXPECT_TRUE(broker.Start());
    CSubscriber subscriber(broker);
    const auto expect = [&](const char* camera, const char* availability, const char* motion) {
        EXPECT_TRUE(subscriber.Hears(Topic(camera, "availability"), availability)) << camera;
        EXPECT_TRUE(subscriber.Hears(Topic(camera, "motion"), motion)) << camera;
    };
    expect("cam1", "online", "ON");
    expect("cam0", "offline", "");
    SetMotion(fleet[0], true);
    fleet[0].ClearFaults();
    expect("cam0", "online", "ON");
    fleet[1].Inject("*", {.kind = camera_sim::Fault::Kind::kClose});
    expect("cam1", "offline", "");
    EXPECT_EQ(CSubscriber(broker).Latest(Topic("cam1", "motion")), "");
    EXPECT_TRUE(bridge->Signal(SIGINT));
    EXPECT_EQ(bridge->End().code, 4) << "as of watch";
}

TEST(Bridge, SharesMoveOnlyAsTheyMust) {
    constexpr std::size_t kCameras = 400;
    const COwnFolder folder;
    std::string text;
    for (const std::string& name : Names(kCameras)) {
        text += "[" + name + "]\naddress = '192.0.2.1'\n";
    }
    const std::string file = folder.File("hosts.toml", text);
    std::map<std::string, unsigned int> before;
    for (unsigned int count = 1; count <= 5; ++count) {
        std::map<std::string, unsigned int> owners;
        for (unsigned int number = 1; number <= count; ++number) {
            const std::size_t others = owners.size();
            CRunningTool tool("bridge --show-share --hosts " + file + " --shard " +
                                  std::to_string(number) + "/" + std::to_string(count),
                              kRight);
            for (std::string name = tool.Line(); name != "(no more)"; name = tool.Line()) {
                name.pop_back();
                EXPECT_TRUE(owners.emplace(name, number).second) << name << " has two owners";
            }
            EXPECT_GT(owners.size() - others, kCameras / count / 2) << number << "/" << count;
        }
        EXPECT_EQ(owners.size(), kCameras);
        for (const auto& [name, owner] : before) {
            EXPECT_TRUE(owners[name] == owner || owners[name] == count)
                << name << " moves between bridges that stay";
        }
        before = owners;
    }
    // For ever: bridges of different versions share a fleet.
    EXPECT_EQ(before["cam0"], 1U);
    EXPECT_EQ(before["cam1"], 4U);
    EXPECT_EQ(before["cam2"], 2U);
}

/// The first message of a topic behind so many others.
CSubscriber::Message NextOf(const CSubscriber& subscriber, const std::string& topic,
                            std::size_t heard = 0) {
    CSubscriber::Message next;
    EXPECT_TRUE(Await([&] {
        const auto messages = subscriber.Messages();
        const auto found = std::find_if(
            messages.begin() + static_cast<std::ptrdiff_t>(heard), messages.end(),
            [&](const CSubscriber::Message& message) { return message.topic == topic; });
        next = found == messages.end() ? next : *found;
        return found != messages.end();
    })) << topic;
    return next;
}

TEST(Bridge, CommandsAreDoneOrAnsweredWithTheReason) {
    CBroker broker;
    CCameraHost host;
    CCamera& camera = host.Add({});
    const COwnFolder folder;
    const std::string file =
        folder.File("hosts.toml", "[dome]\naddress = '" + AddressOf(camera) + "'\n");
    CRunningTool bridge("bridge --broker " + broker.Address() + " --hosts " + file, kRight,
                        "/dev/null");
    CSubscriber subscriber(broker);
    ASSERT_TRUE(subscriber.Hears(Topic("dome", "input/2"), "OFF"));
    RunTool("ptz " + AddressOf(camera) + " preset add Gate", kRight);
    RunTool("ptz " + AddressOf(camera) + " tour add Night Gate:20", kRight);

    const struct {
        const char* topic;
        std::string payload;
        std::string error;  // empty: it is done
    } kCases[] = {
        {"relay/2/set", "ON", ""},
        {"relay/3/set", "ON", "the camera lists 2"},
        {"relay/0/set", "ON", "no such relay"},
        {"relay/99999999999999999999/set", "ON", "no such relay"},
        {"relay/1/set", "on", "neither ON nor OFF"},
        {"relay/1/set", "", "neither ON nor OFF"},
        {"relay/1/set", std::string(300000, 'x'), "300000 bytes"},
        {"preset/set", "Gate", ""},
        {"preset/set", "Nowhere", "no preset 'Nowhere'"},
        {"preset/set", "", "is empty"},
        {"preset/set", std::string("\xFF\xFE\x00\x01", 4), "no text"},
        {"preset/set", "</presetToken><x>&amp;", "no preset"},
        {"tour/set", "Night", ""},
        {"tour/pause", "Night", ""},
        {"tour/stop", "Night", ""},
        {"tour/set", "Day", "no tour 'Day'"},
        {"snapshot/get", "-1", "no profile"},
        {"snapshot/get", "77", "no picture of profile 77"},
        {"snapshot/get", "0", ""},
    };
    for (const auto& each : kCases) {
        const std::size_t heard = subscriber.Messages().size();
        subscriber.Publish(Topic("dome", each.topic), each.payload);
        const std::string text = NextOf(subscriber, Topic("dome", "result"), heard).payload;
        const Json result = Json::parse(text);
        EXPECT_EQ(result["camera"], "dome");
        EXPECT_EQ(result["ok"], each.error.empty()) << each.topic << " " << text;
        EXPECT_NE(text.find(each.error), std::string::npos) << each.topic << " " << text;
    }
    EXPECT_TRUE(camera.State().relays[1].active);
    EXPECT_FALSE(camera.State().relays[0].active);
    EXPECT_EQ(camera.Count("GotoPreset"), 1U);
    EXPECT_EQ(camera.Count("OperatePresetTour"), 3U);
    EXPECT_TRUE(subscriber.Latest(Topic("dome", "snapshot")).starts_with("\xFF\xD8"));

    // Who names a topic gets the answer there, but not where states stand.
    const struct {
        const char* command;
        const char* responseTopic;
        std::string topic;
        const char* shows;
    } kAnswers[] = {{"preset/set", "my/answers", "my/answers", "'Nowhere'"},
                    {"snapshot/get", "my/pictures", "my/pictures", "\xFF\xD8"},
                    {"preset/set", "onvif/dome/motion", Topic("dome", "result"), "'Nowhere'"}};
    for (const auto& each : kAnswers) {
        const std::size_t heard = subscriber.Messages().size();
        const bool picture = each.command[0] == 's';
        subscriber.Publish(Topic("dome", each.command), picture ? "" : "Nowhere", false,
                           each.responseTopic, "number 7");
        const auto answer = NextOf(subscriber, each.topic, heard);
        EXPECT_EQ(answer.correlation, "number 7") << each.topic;
        EXPECT_NE(answer.payload.find(each.shows), std::string::npos) << each.topic;
    }

    // A retained command is none, and a flood is refused, not remembered.
    camera.Inject("*", {.kind = camera_sim::Fault::Kind::kDelay, .delay = std::chrono::seconds(2)});
    constexpr int kFlood = 40;
    const std::size_t heard = subscriber.Messages().size();
    subscriber.Publish(Topic("dome", "relay/1/set"), "ON", true);
    for (int i = 0; i < kFlood; ++i) {
        subscriber.Publish(Topic("dome", "preset/set"), "Gate");
    }
    const auto refusal = NextOf(subscriber, Topic("dome", "result"), heard).payload;
    EXPECT_NE(refusal.find("too many"), std::string::npos) << refusal;
    camera.ClearFaults();
    EXPECT_TRUE(Await([&] {
        const auto all = subscriber.Messages();
        return kFlood ==
               std::count_if(all.begin() + static_cast<std::ptrdiff_t>(heard), all.end(),
                             [](const auto& each) { return each.topic.ends_with("result"); });
    })) << "each is answered";
    EXPECT_LE(camera.Count("GotoPreset"), 12U);
    EXPECT_FALSE(camera.State().relays[0].active);
    EXPECT_TRUE(bridge.Signal(SIGTERM));
    EXPECT_EQ(bridge.End().code, 0);
}

TEST(Bridge, NamesBecomeTopicsThatAreTheirOwn) {
    CBroker broker;
    const std::pair<const char*, const char*> kCases[] = {
        {"gate", "gate"},         {"a/b", "a%2Fb"},       {"a%2Fb", "a%252Fb"},
        {"$bridge", "%24bridge"}, {"+", "%2B"},           {"#", "%23"},
        {"Außentor", "Außentor"}, {"\xC2\x9B", "%C2%9B"}, {"bridge", "bridge"},
    };
    std::vector<std::string> names;
    std::transform(std::begin(kCases), std::end(kCases), std::back_inserter(names),
                   [](const auto& each) { return each.first; });
    const Fleet fleet(names);
    const auto bridge = Bridge(broker, fleet, "--prefix plant/1 --raw");
    const CSubscriber subscriber(broker);
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string start = std::string("plant/1/") + kCases[i].second + "/";
        EXPECT_TRUE(subscriber.Hears(start + "availability", "online")) << start;
        SetMotion(fleet[i], true);
        EXPECT_TRUE(subscriber.Hears(start + "motion", "ON")) << start;
        EXPECT_TRUE(Await([&] {
            const auto all = subscriber.Messages();
            return std::any_of(all.begin(), all.end(), [&](const auto& each) {
                return each.topic == start + "event" &&
                       each.payload.starts_with("{\"camera\":" + Json(names[i]).dump()) &&
                       each.payload.find(R"("name":"IsMotion","value":"true")") !=
                           std::string::npos;
            });
        })) << subscriber.Latest(start + "event");
    }
}

TEST(Bridge, HomeAssistantLearnsOfTopicsThatAreThere) {
    CBroker broker;
    const Fleet fleet({"front_door", "front-door"});
    const auto bridge = Bridge(broker, fleet, "--home-assistant --discovery-prefix ha");
    const CSubscriber subscriber(broker);
    std::map<std::string, std::string> messages;
    ASSERT_TRUE(Await([&] {
        messages = subscriber.All();
        std::erase_if(messages, [](const auto& each) { return !each.first.starts_with("ha/"); });
        constexpr std::size_t kEach = 5;  // motion, input, relay, picture, its button
        return messages.size() == kEach * fleet.cameras.size();
    })) << messages.size();
    std::set<std::string> identifiers;
    for (const auto& [topic, text] : messages) {
        const Json message = Json::parse(text);
        EXPECT_TRUE(
            identifiers.insert(topic.substr(0, 8) + message["unique_id"].get<std::string>()).second)
            << topic;
        EXPECT_EQ(message["availability"].size(), 2U);
        for (const Json& each : message["availability"]) {
            EXPECT_TRUE(subscriber.Hears(each["topic"], "online")) << each;
        }
        if (topic.starts_with("ha/binary_sensor")) {
            EXPECT_TRUE(subscriber.Hears(message["state_topic"], "OFF")) << message;
        }
    }
}

/// An authority, and what it signs for both sides.
constexpr const char* kMakeCertificates = R"(openssl req -x509 -newkey rsa:2048 -nodes \
    -keyout ca.key -out ca.pem -days 2 -subj /CN=authority
printf subjectAltName=IP:127.0.0.1 >names
for who in server client; do
  openssl req -newkey rsa:2048 -nodes -keyout $who.key -out $who.csr -subj /CN=$who
  openssl x509 -req -in $who.csr -CA ca.pem -CAkey ca.key -CAcreateserial -days 2 \
      -extfile names -out $who.pem
done
mosquitto_passwd -b -c users bridge secret
)";

TEST(Bridge, ABrokerMayWantCertificatesAndCredentials) {
    const COwnFolder folder;
    const std::string& at = folder.name;
    const std::string script = folder.File("make", kMakeCertificates);
    ASSERT_EQ(std::system(("cd " + at + " && sh -e " + script + " >log 2>&1").c_str()), 0);
    const CBroker broker("allow_anonymous false\npassword_file " + at + "users\ncafile " + at +
                         "ca.pem\ncertfile " + at + "server.pem\nkeyfile " + at +
                         "server.key\nrequire_certificate true\n");
    const Fleet fleet(Names(1));
    const std::string address = broker.Address().replace(0, 4, "mqtts");
    const std::string ca = " --broker-ca " + at + "ca.pem";
    const std::string own = " --broker-cert " + at + "client.pem --broker-key " + at + "client.key";
    const std::string right = std::string(kRight) + " ONVIF_BROKER_USER=bridge";
    const struct {
        std::string options;
        std::string environment;
        const char* says;
    } kCases[] = {
        {ca + own, right + " ONVIF_BROKER_PASSWORD=secret", "connected to the broker"},
        {ca + own + " --broker-password-file " + folder.File("password", "secret\n"), right,
         "connected to the broker"},
        {ca + own, right + " ONVIF_BROKER_PASSWORD=wrong", "refuses: Not authorized"},
        {ca, right + " ONVIF_BROKER_PASSWORD=secret", "no connection to the broker"},
        {" --broker-ca " + at + "client.pem" + own, right + " ONVIF_BROKER_PASSWORD=secret",
         "TLS error"},
        {"", right + " ONVIF_BROKER_PASSWORD=secret", "TLS error"},
    };
    for (const auto& each : kCases) {
        CRunningTool bridge(
            "bridge --for 100 --broker " + address + " --hosts " + fleet.file + each.options,
            each.environment);
        EXPECT_NE(bridge.Line().find(each.says), std::string::npos) << each.options;
        EXPECT_TRUE(bridge.Signal(SIGTERM));
        EXPECT_EQ(bridge.End().code, 0);
    }
}

TEST(Bridge, WrongArgumentsAreToldAndHideWhatIsSecret) {
    const COwnFolder folder;
    const CClosedPort nobody;
    const std::string hosts =
        " --hosts " +
        folder.File("hosts.toml", "[gate]\naddress = '" + LocalAddress(nobody.Port()) + "'\n");
    const std::string broker = "bridge --broker mqtt://127.0.0.1:1" + hosts;
    ExpectRuns({{"bridge" + hosts, 2, "no --broker"},
                {"bridge --broker 127.0.0.1" + hosts, 2, "is not mqtt://"},
                {"bridge --broker mqtt://u:pw@127.0.0.1" + hosts, 2, "ONVIF_BROKER_PASSWORD"},
                {"bridge --broker mqtt://127.0.0.1:70000" + hosts, 2, "no port"},
                {"bridge --broker mqtt://" + hosts, 2, "names no host"},
                {broker + " --shard 3/2", 2, "is not I/N"},
                {broker + " --shard 0/2", 2, "is not I/N"},
                {broker + " --prefix a+b", 2, "cannot begin a topic"},
                {broker + " --expire 2", 2, "--expire"},
                {broker + " --broker-ca x.pem", 2, "mqtts://"},
                {"bridge --broker mqtts://127.0.0.1:1 --broker-ca /none" + hosts, 2, "cannot read"},
                {broker + " --broker-password-file /none", 2, "cannot read a password"},
                {"bridge --show-share --hosts " + folder.File("none.toml", ""), 2, "no camera"},
                {broker + " --for 1", 4, "no connection to the broker 127.0.0.1:1"}});
    const std::string said = RunTool("bridge --broker mqtt://u:pw@127.0.0.1" + hosts, "").output;
    EXPECT_EQ(said.find("pw"), std::string::npos) << said;
}

}  // namespace
}  // namespace client_test
