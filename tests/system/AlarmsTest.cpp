#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "support/System.h"
#include "system/AlarmObserver.h"
#include "system/Client.h"
#include "system/Tool.h"

namespace client_test {
namespace {

using camera_sim::CameraOptions;
using camera_sim::CCamera;
using camera_sim::CCameraHost;
using camera_sim::Fault;
using std::chrono::milliseconds;

/// Takes any number of subscriptions, as a removed observer's stays until it expires; a reply never
/// grows too large for the library.
CameraOptions Busy(milliseconds period) {
    CameraOptions options;
    options.maxSubscriptions = 100000;
    options.messageQueueLimit = 10;
    options.motionPeriod = options.inputPeriod = period;
    return options;
}

bool PullsWaitAt(const CCamera& camera, std::size_t count) {
    return Await([&] {
        const auto subscriptions = camera.Subscriptions();
        return subscriptions.size() == 1 && subscriptions[0].waitingPulls == count;
    });
}

class Alarms : public testing::Test {
 protected:
    unsigned int Observed(CCamera& camera) {
        const unsigned int id = Login(camera);
        EXPECT_TRUE(ONVIF_CLIENT_AddAlarmStateObserver(id, &observer_));
        observed_.push_back(id);
        return id;
    }
    void TearDown() override {
        std::for_each(observed_.begin(), observed_.end(), ONVIF_CLIENT_DelAlarmStateObserver);
    }

    CCameraHost host_;
    std::vector<unsigned int> observed_;
    CAlarmObserver observer_;
    CStartedLibrary library_;  // ends before the observer does
};

TEST_F(Alarms, ChangesArriveInWhateverFormACameraTellsThem) {
    struct Row {
        CameraOptions options;
        CCamera& camera;
        unsigned int id;
        unsigned int bySource;
    };
    std::vector<Row> rows;
    const std::vector<std::string> prefixes = camera_sim::PrefixStyleNames();
    const auto observedWith = [&](const char* extensions, CCamera& camera) {
        SetVariable("ONVIF_CLIENT_EXTENSIONS", extensions);
        ONVIF_CLIENT_Initial();
        const unsigned int id = Observed(camera);
        SetVariable("ONVIF_CLIENT_EXTENSIONS", nullptr);
        return id;
    };
    for (const std::string& topics : camera_sim::TopicStyleNames()) {
        for (const std::string& subscriptions : camera_sim::SubscriptionStyleNames()) {
            const CameraOptions options = {.prefixStyle = prefixes[rows.size() % prefixes.size()],
                                           .topicStyle = topics,
                                           .numericStates = rows.size() % 2 == 0,
                                           .subscriptionStyle = subscriptions};
            CCamera& camera = host_.Add(options);
            rows.push_back({options, camera, observedWith("", camera),
                            observedWith("per-source-alarms", camera)});
        }
    }
    ASSERT_GE(rows.size(), prefixes.size());
    for (const Row& row : rows) {
        SetMotion(row.camera, true);
        SetInput(row.camera, true);
        SetMotion(row.camera, false);
        SetInput(row.camera, false);
    }
    const std::set<std::string> known = {"cell-motion", "motion-region", "source-alarm",
                                         "qualified"};
    for (const auto& [options, camera, id, bySource] : rows) {
        // The topic of an input is not known with a prefix at every level.
        const char* heard = options.topicStyle == "qualified" ? "M+M-" : "M+I+M-I-";
        EXPECT_TRUE(!known.contains(options.topicStyle) || observer_.Hears(id, heard))
            << observer_.Heard(id) << " " << options.topicStyle << " " << options.subscriptionStyle
            << " " << options.prefixStyle;
        // A line that was crossed is told as motion for a while.
        const bool lasts = options.topicStyle == "line" || options.topicStyle == "many";
        EXPECT_TRUE(observer_.Hears(bySource, "M+I+M-I-") ||
                    (lasts && observer_.Heard(bySource) == "M+I+I-M-"))
            << observer_.Heard(bySource) << " " << options.topicStyle;
    }
}

TEST_F(Alarms, ACameraThatAnswersPullsOddlyIsHeardAndDelaysNoOther) {
    const std::string nothing =
        "<?xml version=\"1.0\"?><s:Envelope xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\">"
        "<s:Body><t:PullMessagesResponse/></s:Body></s:Envelope>";
    const std::string head = "HTTP/1.1 200 OK\r\nContent-Length: ";
    const auto raw = [](const std::string& reply) {
        return Fault{.kind = Fault::Kind::kRawReply, .remaining = 5, .reply = reply};
    };
    const Fault faults[] = {
        {.kind = Fault::Kind::kSoapFault, .remaining = 5, .soapFault = {.reason = "no"}},
        {.kind = Fault::Kind::kUnauthorized, .remaining = 1},
        {.kind = Fault::Kind::kSegments, .bytes = 1},
        raw(head + std::to_string(nothing.size()) + "\r\n\r\n" + nothing),
        raw(head + "0\r\n\r\n"),
        raw(head + "9\r\n\r\n<a><b></a> and more than was announced"),
    };
    CCamera& sound = host_.Add({});
    const unsigned int soundId = Observed(sound);
    std::string changes;
    for (const Fault& fault : faults) {
        // Which refuses all pulls but those that keep to the limits that it then names.
        CCamera& camera = host_.Add({.senderFaultStatus = 500,
                                     .maxPullTimeout = std::chrono::seconds(30),
                                     .maxMessageLimit = 100});
        camera.Inject("PullMessages", fault);
        const unsigned int id = Observed(camera);
        const auto kind = static_cast<int>(fault.kind);
        SetMotion(sound, changes.size() % 4 == 0);
        changes += changes.size() % 4 == 0 ? "M+" : "M-";
        EXPECT_TRUE(observer_.Hears(soundId, changes)) << kind;
        SetInput(camera, true);
        ASSERT_TRUE(observer_.Hears(id, "I+")) << kind << " " << observer_.Heard(id);
        SetInput(camera, false);
        EXPECT_TRUE(observer_.Hears(id, "I+I-")) << kind << " " << observer_.Heard(id);
    }
}

TEST_F(Alarms, NobodyAtEitherEndIsNoError) {
    CCamera& camera = host_.Add({});
    const unsigned int id = Login(camera);
    constexpr unsigned int kUnknown = 9999;
    EXPECT_TRUE(ONVIF_CLIENT_AddAlarmStateObserver(kUnknown, &observer_));
    EXPECT_TRUE(ONVIF_CLIENT_AddAlarmStateObserver(kUnknown, nullptr));
    EXPECT_TRUE(ONVIF_CLIENT_AddAlarmStateObserver(id, nullptr));
    SetMotion(camera, true);
    const auto untold = [&] {
        const auto subscriptions = camera.Subscriptions();
        return subscriptions.size() == 1 && subscriptions[0].queued == 0 &&
               subscriptions[0].waitingPulls == 1 && camera.Count("PullMessages") > 1;
    };
    EXPECT_TRUE(Await(untold));
    ONVIF_CLIENT_DelAlarmStateObserver(kUnknown);
    ONVIF_CLIENT_DelAlarmStateObserver(kUnknown);
    EXPECT_TRUE(ONVIF_CLIENT_AddAlarmStateObserver(id, &observer_));
    EXPECT_TRUE(observer_.Hears(id, "M+"));
    ONVIF_CLIENT_Logout(id);
    SetMotion(camera, false);
    ONVIF_CLIENT_DelAlarmStateObserver(id);
    EXPECT_EQ(observer_.Heard(id), "M+");
}

TEST_F(Alarms, AnObserverMayDoAnythingInItsCallback) {
    struct Scene {
        unsigned int id;     // of the device that the callback is about
        unsigned int other;  // of a device with the same observer
        CCamera& otherCamera;
        CAlarmObserver& own;
        CAlarmObserver& second;
    };
    const auto del = ONVIF_CLIENT_DelAlarmStateObserver;
    const auto add = ONVIF_CLIENT_AddAlarmStateObserver;
    const auto restart = [](const Scene& scene, int times) {
        for (int i = 0; i < times; ++i) {
            ONVIF_CLIENT_Quit();
            // What the device tells a pull that was broken off is lost.
            PullsWaitAt(scene.otherCamera, 0);
            ONVIF_CLIENT_Initial();
        }
    };
    using Text = const char*;
    const struct {
        Text name;
        std::function<void(const Scene&)> action;
        // What the observer hears in the end of the device and of the other one, and what the
        // second observer hears of both.
        Text own, ownOfOther, second, secondOfOther;
    } cases[] = {
        {"removes itself", [&](auto& s) { del(s.id); }, "M+", "I+", "", ""},
        {"replaces itself", [&](auto& s) { add(s.id, &s.second); }, "M+", "I+", "M+M-", ""},
        {"registers again", [&](auto& s) { add(s.id, &s.own); }, "M+M-", "I+", "", ""},
        {"leaves nobody", [&](auto& s) { add(s.id, nullptr); }, "M+", "I+", "", ""},
        {"removes another", [&](auto& s) { del(s.other); }, "M+M-", "", "", ""},
        {"replaces another", [&](auto& s) { add(s.other, &s.second); }, "M+M-", "", "", "I+"},
        {"logs out", [](auto& s) { ONVIF_CLIENT_Logout(s.id); }, "M+", "I+", "", ""},
        {"asks", [](auto& s) { EXPECT_NE(Get(s.id, "<devInfo/>"), ""); }, "M+M-", "I+", "", ""},
        {"restarts", [&](auto& s) { restart(s, 1); }, "M+M-", "I+", "", ""},
        {"restarts twice", [&](auto& s) { restart(s, 2); }, "M+M-", "I+", "", ""},
        {"removes itself, restarts", [&](auto& s) { del(s.id), restart(s, 1); }, "M+", "I+", "",
         ""},
        {"throws", [](auto&) { throw std::runtime_error("an application's"); }, "M-", "I+", "", ""},
    };
    for (const auto& each : cases) {
        CCamera& camera = host_.Add({.model = "fixed"});
        CCamera& otherCamera = host_.Add({.model = "fixed"});
        const unsigned int id = Login(camera);
        const unsigned int other = Login(otherCamera);
        CAlarmObserver second;
        CAlarmObserver* self = nullptr;
        std::atomic<bool> acted = false;
        CAlarmObserver own([&](unsigned int loginId) {
            if (loginId == id && self != nullptr) {
                const Scene scene{id, other, otherCamera, *std::exchange(self, nullptr), second};
                const std::shared_ptr<void> end(nullptr, [&](void*) { acted = true; });
                each.action(scene);
            }
        });
        self = &own;
        ONVIF_CLIENT_AddAlarmStateObserver(id, &own);
        ONVIF_CLIENT_AddAlarmStateObserver(other, &own);
        SetMotion(camera, true);
        EXPECT_TRUE(Await([&] { return acted.load(); })) << each.name;
        SetInput(otherCamera, true);
        SetMotion(camera, false);
        const auto hears = [&](const CAlarmObserver& who, unsigned int of,
                               const std::string& what) {
            EXPECT_TRUE(who.Hears(of, what)) << each.name << ": " << who.Heard(of);
        };
        hears(own, other, each.ownOfOther);
        hears(second, other, each.secondOfOther);
        hears(own, id, each.own);
        hears(second, id, each.second);
        ONVIF_CLIENT_DelAlarmStateObserver(id);
        ONVIF_CLIENT_DelAlarmStateObserver(other);
    }
}

TEST_F(Alarms, NothingIsToldAfterAnObserverHasQuit) {
    std::atomic<bool> quits = true;
    CAlarmObserver observer([&](unsigned int) {
        if (quits) {
            ONVIF_CLIENT_Quit();
        }
    });
    std::vector<unsigned int> ids;
    for (CCamera* camera : {&host_.Add({}), &host_.Add({})}) {
        ids.push_back(Login(*camera));
        ONVIF_CLIENT_AddAlarmStateObserver(ids.back(), &observer);
        // One reply brings both changes.
        camera->Change([](auto& state) {
            state.media.videoSources.front().motion = true;
            state.inputs.front().active = true;
        });
    }
    EXPECT_TRUE(Await([&] { return observer.calls > 0; }));
    ONVIF_CLIENT_Quit();
    EXPECT_EQ(observer.calls, 1);
    quits = false;
    ONVIF_CLIENT_Initial();
    const auto all = [&](unsigned int id) { return observer.Heard(id) == "M+I+"; };
    EXPECT_TRUE(Await([&] { return std::any_of(ids.begin(), ids.end(), all); }));
    std::for_each(ids.begin(), ids.end(), ONVIF_CLIENT_DelAlarmStateObserver);
}

TEST_F(Alarms, ARestartOfTheSocketLayerAloneIsGotOver) {
    CCamera& camera = host_.Add({});
    const unsigned int id = Observed(camera);
    EXPECT_TRUE(PullsWaitAt(camera, 1));
    ONVIF_SEARCH_Quit();
    EXPECT_TRUE(PullsWaitAt(camera, 0));
    ONVIF_CLIENT_Initial();
    SetMotion(camera, true);
    EXPECT_TRUE(observer_.Hears(id, "M+"));
}

TEST_F(Alarms, ARemovedObserverIsNotCalledAnyMore) {
    const unsigned int id = Login(host_.Add(Busy(milliseconds(2))));
    for (int round = 0; round < 100; ++round) {
        std::atomic<bool> removed = false;
        std::atomic<int> late = 0;
        CAlarmObserver observer([&](unsigned int) {
            if (round % 2 == 0) {
                ONVIF_CLIENT_DelAlarmStateObserver(id);
            }
            std::this_thread::sleep_for(milliseconds(2));
            late += removed;
        });
        ONVIF_CLIENT_AddAlarmStateObserver(id, &observer);
        ASSERT_TRUE(Await([&] { return observer.calls > 0; })) << round;
        ONVIF_CLIENT_DelAlarmStateObserver(id);
        removed = true;
        const int calls = observer.calls;
        std::this_thread::sleep_for(milliseconds(5));
        EXPECT_EQ(late, 0);
        EXPECT_EQ(observer.calls, calls);
    }
}

TEST_F(Alarms, TwoThreadsThatRegisterLeaveOneObserver) {
    CCamera& camera = host_.Add(Busy(milliseconds(0)));
    const unsigned int id = Login(camera);
    for (int round = 0; round < 50; ++round) {
        SetMotion(camera, false);
        CAlarmObserver observers[2];
        {
            std::vector<std::jthread> threads;
            for (CAlarmObserver& each : observers) {
                threads.emplace_back([&] { ONVIF_CLIENT_AddAlarmStateObserver(id, &each); });
            }
        }
        const auto calls = [&] { return observers[0].calls + observers[1].calls; };
        EXPECT_EQ(calls(), 0);
        SetMotion(camera, true);
        ASSERT_TRUE(Await([&] { return calls() > 0; })) << round;
        SetMotion(camera, false);
        CAlarmObserver& hearing = observers[observers[0].calls == 0 ? 1 : 0];
        EXPECT_TRUE(hearing.Hears(id, "M+M-"));
        EXPECT_EQ(calls(), hearing.calls);
        ONVIF_CLIENT_DelAlarmStateObserver(id);
    }
}

TEST_F(Alarms, TheLibraryQuitsAndStartsInTheMiddleOfEverything) {
    const CameraOptions busy = Busy(milliseconds(3));
    std::vector<unsigned int> steady;
    for (int i = 0; i < 3; ++i) {
        steady.push_back(Observed(host_.Add(busy)));
    }
    const unsigned int changing = Login(host_.Add(busy));
    {
        std::vector<std::jthread> threads;
        threads.emplace_back([&](const std::stop_token& stop) {
            while (!stop.stop_requested()) {
                Get(steady[0], "<devInfo/>");
            }
        });
        for (int i = 0; i < 2; ++i) {
            threads.emplace_back([&](const std::stop_token& stop) {
                while (!stop.stop_requested()) {
                    ONVIF_CLIENT_AddAlarmStateObserver(changing, &observer_);
                    ONVIF_CLIENT_DelAlarmStateObserver(changing);
                }
            });
        }
        for (int round = 0; round < 200; ++round) {
            ONVIF_CLIENT_Quit();
            const int calls = observer_.calls;
            std::this_thread::yield();
            EXPECT_EQ(observer_.calls, calls);
            ONVIF_CLIENT_Initial();
            if (round % 10 == 0) {
                EXPECT_TRUE(Await([&] { return observer_.calls > calls; }));
            }
        }
    }
    ONVIF_CLIENT_AddAlarmStateObserver(changing, &observer_);
    steady.push_back(changing);
    for (const unsigned int id : steady) {
        const std::size_t heard = observer_.Heard(id).size();
        EXPECT_TRUE(Await([&] { return observer_.Heard(id).size() > heard + 8; })) << id;
    }
    ONVIF_CLIENT_DelAlarmStateObserver(changing);
}

TEST(Applications, EndWithTheirOwnStatus) {
    CCameraHost host;
    const CCamera& camera = host.Add(Busy(milliseconds(APPLICATION_CAMERA_PERIOD)));
    std::istringstream modes(APPLICATION_MODES);
    int rounds = 0;
    for (std::string mode; modes >> mode >> rounds;) {
        const std::string arguments = std::to_string(camera.Port()) + " " + mode;
        for (int round = 0; round < rounds; ++round) {
            // What a sanitizer finds has a status of its own, and so has a crash.
            const Outcome outcome = CRunningTool(arguments, "", "&1", APPLICATION).End();
            EXPECT_EQ(outcome.code, 7) << mode << ", round " << round << "\n" << outcome.output;
        }
    }
    EXPECT_GT(rounds, 0);
}

}  // namespace
}  // namespace client_test
