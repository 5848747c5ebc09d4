#include <gtest/gtest.h>

#include <functional>
#include <latch>
#include <new>
#include <regex>
#include <stdexcept>
#include <utility>

#include "events/ControlLoop.h"
#include "events/DeviceExchanges.h"
#include "events/DeviceTasks.h"
#include "events/SourceStates.h"
#include "onvif_client/OnvifClient.h"
#include "support/MovedClock.h"

namespace onvif_client {
namespace {

/// Writes down what it hears: "m1 " motion active, "a0 " alarm input 1 inactive, "b0 " input 2, "r0
/// " relay 1.
class CNotingObserver final : public CONVIFAlarmStateObserver {
 public:
    void OnMotionAlarmState(unsigned int, bool state) override { Note('m', state); }
    void OnAlarmInState(unsigned int, unsigned int alarmIn, bool state) override {
        Note(static_cast<char>(alarmIn <= 1000 ? 'a' + alarmIn - 1 : 'r' + alarmIn - 1001), state);
    }
    std::string Take() { return std::exchange(heard_, ""); }

    std::function<void()> meanwhile = [] {};

 private:
    void Note(char kind, bool state) {
        heard_ += {kind, state ? '1' : '0', ' '};
        meanwhile();
    }
    std::string heard_;
};

class CNotedTasks final : public ITaskQueue {
 public:
    bool QueueTask(std::shared_ptr<EventDeviceRecord> record, DeviceTask task) override {
        static constexpr const char* kNames[] = {"pull", "resubscribe", "renew"};
        if (withoutMemory) {
            throw std::bad_alloc();
        }
        if (task == refused || (task == refusedToSilent && !record->Answers())) {
            return false;
        }
        noted += kNames[static_cast<int>(task)] + std::to_string(record->LoginId()) + " ";
        return true;
    }
    std::string Take() { return std::exchange(noted, ""); }

    std::optional<DeviceTask> refused;
    std::optional<DeviceTask> refusedToSilent;
    bool withoutMemory = false;
    std::string noted;
};

/// Nobody gets a session.
class CNoSessions final : public ISessionSource {
 public:
    CHttpClient* Acquire(std::uint32_t) override {
        meanwhile();
        return nullptr;
    }
    bool Release(std::uint32_t) override { return false; }

    std::function<void()> meanwhile = [] {};
};

const SubscriptionAnswer kSubscribed = {"http://h/subscription"};

class ControlLoop : public testing::Test {
 protected:
    std::shared_ptr<EventDeviceRecord> Add(std::uint32_t loginId, CExtensions extensions = {}) {
        auto record = std::make_shared<EventDeviceRecord>(
            sessions_, loginId, &observer_, "http://h/" + std::to_string(loginId),
            "h" + std::to_string(loginId), extensions);
        record->EndSubscribing(kSubscribed);
        devices_.Put(record);
        return record;
    }
    /// What a pass has done @p ticks milliseconds and @p seconds of the calendar later.
    std::string PassAfter(std::uint32_t ticks, std::int64_t seconds = 0) {
        clock_.ticks += ticks;
        clock_.calendar += seconds;
        loop_.Pass();
        return tasks_.Take();
    }

    client_test::CMovedClock clock_;
    const CScopedClock scoped_{clock_};
    CNotingObserver observer_;
    CNoSessions sessions_;
    CDeviceTable devices_;
    CNotedTasks tasks_;
    CControlLoop loop_{devices_, tasks_};
};

using Items = std::vector<AlarmItem>;
constexpr AlarmType kMotion = AlarmType::kMotion;
constexpr AlarmType kInput = AlarmType::kAlarmInput;

TEST_F(ControlLoop, ObserversHearChangesRepetitionsAndClearing) {
    const auto record = Add(1);
    const struct {
        Items items;
        std::uint32_t later;
        const char* heard;
    } steps[] = {
        {{{kMotion, false}, {kInput, false}}, 0, ""},
        {{{kMotion, true}, {kMotion, true}, {AlarmType::kNone, true}}, 0, "m1 "},
        {{}, 5000, ""},
        {{}, 1, "m1 "},
        {{{kInput, true}}, 0, "a1 m1 "},
        {{{kMotion, true}}, 10, ""},
        {{}, 5001, "a1 m1 "},
        {{}, 54989, "a1 m1 "},
        {{}, 1, "a0 m1 "},  // the input 60001 ms after its item, motion 10 ms younger
        {{}, 10, "m0 "},
        {{}, 100000, ""},
        {{{kMotion, true}, {kInput, true}, {kMotion, false}}, 0, "m1 a1 m0 "},
    };
    for (const auto& step : steps) {
        clock_.ticks += step.later;
        record->OnPullAnswer({step.items, "", 0});  // keeps the time-out of pulls out of the way
        loop_.Pass();
        record->Unclaim();
        EXPECT_EQ(observer_.Take(), step.heard) << &step - steps;
    }
}

/// The result of a pull with messages "topic|operation|source|key|data" and ";" between them.
PullReply Result(const std::string& messages) {
    const std::regex item("(\\w+)=(\\w*) ?");
    const std::regex message("([^|;]*)\\|([^|;]*)\\|([^|;]*)\\|([^|;]*)\\|([^|;]*);?");
    const std::string items =
        std::regex_replace(messages, item, "<item><name>$1</name><val>$2</val></item>");
    return {status::kSuccess,
            std::make_shared<CXmlDocument>(
                "<GetResponse><pullMessages><status>success</status>" +
                std::regex_replace(items, message,
                                   "<notifyMessage><topic>$1</topic><message><propertyOper>$2"
                                   "</propertyOper><source>$3</source><key>$4</key><data>$5"
                                   "</data></message></notifyMessage>") +
                "</pullMessages></GetResponse>")};
}

/// A device whose every source has a state of its own, or not.
class SourceAlarms : public ControlLoop {
 protected:
    /// What the observer hears.
    /// @param news  messages, or "lost" and "subscribed" of the subscription.
    std::string After(std::uint32_t milliseconds, const std::string& news) {
        if (record_ == nullptr) {
            record_ = Add(1, bySource_ ? CExtensions{Extension::kPerSourceAlarms} : CExtensions{});
        }
        clock_.ticks += milliseconds;
        if (news == "lost" || news == "subscribed") {
            record_->EndSubscribing(news == "lost" ? std::nullopt : std::optional(kSubscribed));
            record_->BeginPull({});
        } else if (news == "inputs") {
            record_->SetInputs({"B", "A"});
        } else if (news != "nothing") {
            record_->OnPullAnswer(ReadPull(Result(news), bySource_));
        }
        loop_.Pass();
        return observer_.Take();
    }
    bool bySource_ = true;
    std::shared_ptr<EventDeviceRecord> record_;
};

const std::string kIsIn = "t:RuleEngine/t:FieldDetector/t:ObjectsInside|Changed|Rule=";
const std::string kDigital = "t:Device/Trigger/DigitalInput|Initialized|Input=";
const std::string kCell = "t:RuleEngine/CellMotionDetector/Motion|";
const std::string kOn = "||IsMotion=true;";
const std::string kOff = "||IsMotion=false;";

TEST_F(SourceAlarms, EverySourceAndRuleHasAStateThatStays) {
    struct Step {
        std::uint32_t later;
        std::string news;
        const char* literally;
        const char* bySource;
    };
    const std::vector<Step> scenes[] = {
        // An object's id is no state.
        {{0, kIsIn + "A|ObjectId=7|IsInside=true", "", "m1 "},
         {9, kIsIn + "A|ObjectId=1|IsInside=false", "m1 ", "m0 "}},
        // Rules and channels in one reply, items in any order.
        {{0, kIsIn + "A Channel=1||IsInside=true;" + kIsIn + "B||IsInside=0", "m1 m0 ", "m1 "},
         {9, "RuleEngine/FieldDetector/ObjectsInside||Channel=1 Rule=A||IsInside=0", "", "m0 "}},
        {{0, kIsIn + "A|Z=a|IsInside=1;" + kIsIn + "A|Z=b|IsInside=1", "", "m1 "},
         {9, kIsIn + "A|Z=a|IsInside=0", "", ""},
         {9, kIsIn + "A|Z=b|IsInside=0", "", "m0 "}},
        // While the device answers, nothing is repeated or cleared.
        {{0, kCell + "|Rule=A" + kOn, "m1 ", "m1 "},
         {6000, "", "m1 ", ""},
         {55000, "", "m0 ", ""},
         {0, kCell + "Deleted|Rule=A||", "", "m0 "}},
        {{0, kCell + "|" + kOn, "m1 ", "m1 "},
         {180000, "nothing", "m0 ", ""},
         {1, "nothing", "", "m0 "}},
        // Inputs in the device's order, relays apart.
        {{0,
          "Device/Trigger/Relay||Token=A||LogicalState=active;" + kDigital + "B||State=0;" +
              kDigital + "A||State=true",
          "a1 ", "r1 b1 "},
         {9, kDigital + "B||State=on;Device/Trigger/Relay||Token=A||LogicalState=inactive", "a0 ",
          "a1 r0 "}},
        {{0, "inputs", "", ""},
         {0, kDigital + "C||State=1;" + kDigital + "A||State=1;" + kDigital + "B||State=1", "a1 ",
          "c1 b1 a1 "}},
        // What a new subscription does not name among its initial states is over.
        {{0, kDigital + "A||State=1;" + kDigital + "B||State=1;" + kDigital + "C||State=1", "a1 ",
          "a1 b1 c1 "},
         {4000, "subscribed", "", ""},
         {0, kDigital + "A||State=1", "", ""},
         {5000, kDigital + "B||State=1", "", ""},
         {25000, "", "a1 ", ""},
         {1, "", "a1 ", "c0 "}},
        // Where it tells none, that is no word against a state.
        {{0, kCell + "Changed|Rule=A" + kOn, "m1 ", "m1 "},
         {4000, "subscribed", "", ""},
         {0, "VideoSource/MotionAlarm|Initialized|Source=1||State=false", "m0 ", ""},
         {40000, kCell + "Changed|Rule=B" + kOn, "m1 ", ""},
         {40000, kCell + "Changed|Rule=A" + kOff, "m0 ", ""},
         {0, kCell + "Changed|Rule=B" + kOff, "", "m0 "}},
        {{0, kCell + "|" + kOn + kDigital + "A||State=1", "m1 a1 ", "m1 a1 "},
         {9, "lost", "", "a0 m0 "},
         {9, kCell + "|" + kOn, "", "m1 "}},
        // What has no state is over soon.
        {{0, "RuleEngine/LineDetector/Crossed||Rule=A||ObjectId=5", "", "m1 "},
         {4000, "RuleEngine/LineDetector/Crossed||Rule=A||ObjectId=6", "", ""},
         {5000, "", "", ""},
         {1, "", "", "m0 "},
         {0, "RuleEngine/LineDetector/Crossed|Initialized|Rule=A||ObjectId=5", "", ""}},
    };
    for (const bool bySource : {false, true}) {
        bySource_ = bySource;
        for (const auto& scene : scenes) {
            record_.reset();
            for (const Step& step : scene) {
                EXPECT_EQ(After(step.later, step.news), bySource ? step.bySource : step.literally)
                    << &scene - scenes << " " << step.news;
            }
        }
    }
    record_.reset();
    observer_.meanwhile = [this] { loop_.Interrupt(); };
    EXPECT_EQ(After(0, kCell + "|" + kOn + kCell + "|" + kOff), "m1 ");
    EXPECT_EQ(After(0, "nothing"), "m0 ") << "what the interruption left";
}

TEST_F(SourceAlarms, AreBounded) {
    // What differs behind the kept part of a topic is the same state, whatever alarm it names.
    const std::string front = "Device/" + std::string(256, 'x');
    EXPECT_EQ(After(0, front + "/Motion||" + kOn), "m1 ");
    EXPECT_EQ(After(0, front + "/DigitalInput||||State=true;"), "");
    EXPECT_EQ(After(0, front + "/DigitalInput||||State=false;"), "m0 ");
    EXPECT_EQ(After(0, kCell + "|Rule=A" + kOn), "m1 ");
    std::string on;
    std::string off;
    for (std::size_t i = 1; i <= CSourceStates::kMostActive; ++i) {
        const std::string number = std::to_string(i);
        on.append(kCell).append("|Rule=").append(number).append(kOn);
        off.append(kCell).append("|Rule=").append(number).append(kOff);
        off.append(kDigital).append(number).append("||State=0;");
    }
    EXPECT_EQ(After(1, on), "");
    EXPECT_EQ(After(0, off), "m0 ") << "the first one made room";
    EXPECT_NE(After(0, kDigital + "1000||State=1"), "");
    EXPECT_EQ(After(0, kDigital + "1001||State=1"), "") << "they share the last number";
}

TEST_F(SourceAlarms, TopicsAndItemsOfManyMakesAreKnown) {
    const struct {
        const char* told;
        std::vector<std::string> messages;
    } cases[] = {
        {"m1 ",
         {"t:Platform/t:VMD/t:Camera1Profile1||||active=1",
          "t:Platform/ObjectAnalytics/Device1Scenario2||||Active=TRUE",
          "Platform/FenceGuard/Camera1Profile1||||active=1",
          "RuleEngine/x:SmartEventDetector/x:SmartEvent||Rule=A||IsSmartEvent=true",
          "UserAlarm/HumanShapeDetect||||State=true", "Device/Trigger/MotionDetector||||State=on",
          "VideoSource/MotionAlarm/.||Source=1||State=true",
          "RuleEngine/LineDetector/Crossed||||IsCrossed=true ObjectId=0",
          "VideoAnalytics/MotionDetection||||ObjectId=0 State=true Count=0",
          kCell + "||IsMotion=true|"}},
        {"a1 ",
         {"Device/IO/Port||port=3||State=1", "Device/IO/PIRSensor||||State=active",
          "Device/t:Trigger/t:DigitalInput||||Value=0 LogicalState=true"}},
        {"r1 ", {"Device/Trigger/Relay||Token=1||LogicalState=active"}},
        {"",
         {kCell + "||IsMotion=true|IsMotion=false",
          "RuleEngine/FieldDetector/ObjectsInside||||ObjectId=1",
          "RuleEngine/FieldDetector/ObjectsInside||||IsInside=2",
          "VideoSource/SignalLoss||||State=true", "RuleEngine/TamperDetector/Tamper||||State=1",
          "Device/HardwareFailure/StorageFailure||||Failed=true",
          "VideoSource/ConnectionFailed||||State=true", "Monitoring/ProcessorUsage||||Value=1",
          "RuleEngine/CountAggregation/Counter||||Value=1", "Notifications/NoMotion||||State=true",
          "||||"}},
    };
    for (const auto& [told, messages] : cases) {
        for (const std::string& message : messages) {
            record_.reset();
            EXPECT_EQ(After(0, message), told) << message;
        }
    }
}

TEST_F(ControlLoop, TasksAreQueuedWhenTheyAreDue) {
    const auto one = Add(1);
    const auto two = Add(2);
    EXPECT_EQ(PassAfter(60000, 99), "");
    EXPECT_EQ(PassAfter(1), "pull1 pull2 ");
    EXPECT_EQ(PassAfter(60001), "") << "a pull never runs twice at once";
    one->Unclaim();
    one->OnPullAnswer({});
    EXPECT_EQ(PassAfter(0), "pull1 ");
    one->Unclaim();
    two->Unclaim();
    EXPECT_EQ(PassAfter(0, 1), "resubscribe1 resubscribe2 ") << "they pull themselves";
    clock_.ticks += 30000;
    SendPull(*one, sessions_);
    one->EndSubscribing(kSubscribed);
    one->Unclaim();
    EXPECT_EQ(PassAfter(60000), "");
    EXPECT_EQ(PassAfter(1), "pull1 ");
}

TEST_F(ControlLoop, AFirstSubscriptionInTheBackgroundIsDueAtOnceAndPulledFromLater) {
    const auto record = std::make_shared<EventDeviceRecord>(
        sessions_, 1, &observer_, "", "", CExtensions{Extension::kBackgroundSubscription});
    devices_.Put(record);
    record->Resume();
    tasks_.refusedToSilent = DeviceTask::kResubscribe;
    EXPECT_EQ(PassAfter(60001), "") << "nobody knows yet that it answers";
    tasks_.refusedToSilent.reset();
    EXPECT_EQ(PassAfter(0), "resubscribe1 ");
    Subscribe(*record, sessions_);
    record->Unclaim();
    EXPECT_EQ(PassAfter(0), "pull1 ");
}

TEST_F(ControlLoop, TheLogTellsOnceWhatChangesAtWhichDevice) {
    const auto record = Add(1);
    testing::internal::CaptureStderr();
    for (int i = 0; i < 2; ++i) {
        record->OnNoSocket();
        PassAfter(0);
    }
    for (const char step : std::string("smrrmrssffs")) {
        if (step == 's' || step == 'f') {
            record->EndSubscribing(step == 's' ? std::optional(kSubscribed) : std::nullopt);
        } else {
            const auto outcome = step == 'r' ? PullOutcome::kRefused : PullOutcome::kMessages;
            record->OnPullAnswer({{{kMotion, true}}, "", 0, outcome});
        }
    }
    observer_.meanwhile = [] { throw std::runtime_error("an application's"); };
    tasks_.withoutMemory = true;
    PassAfter(0, 100);
    EXPECT_EQ(std::regex_replace(testing::internal::GetCapturedStderr(),
                                 std::regex("[-0-9]{10} [:.0-9]{12} (info|error) OnvifEvent "), ""),
              "no sockets are left: 1 devices are observed, and each has one for its pull; the "
              "process needs at least 65 descriptors\n"
              "h1: pulls are paced\nh1: pulls go on at once\nh1: pulls are paced\n"
              "h1: pulls go on at once\nh1: the subscription is lost\n"
              "h1: the subscription stands again\nASSERT: an observer threw (h1)\n"
              "ASSERT: a visit threw (h1)\n");
}

TEST_F(ControlLoop, AVisitWithoutMemoryIsMadeUpForLater) {
    Add(1);
    const auto two = Add(2);
    tasks_.withoutMemory = true;
    EXPECT_EQ(PassAfter(0, 100), "");
    two->OnPullAnswer({{{kMotion, true}}, "", 0});
    EXPECT_EQ(PassAfter(0), "");
    EXPECT_EQ(observer_.Take(), "m1 ") << "although the visit of 1 failed";
    tasks_.withoutMemory = false;
    EXPECT_EQ(PassAfter(0), "resubscribe1 resubscribe2 ");
}

TEST_F(ControlLoop, TheLongestDueSubscriptionsGoFirstAndSilentDevicesHoldUpNoOthers) {
    Add(1)->EndSubscribing({});
    ++clock_.calendar;
    const auto youngest = Add(2);
    Add(3);
    ++clock_.calendar;
    youngest->EndSubscribing(kSubscribed);
    tasks_.refused = DeviceTask::kResubscribe;
    youngest->OnPullAnswer({});
    EXPECT_EQ(PassAfter(0, 100), "pull2 ") << "what is refused does not hold it up";
    youngest->Unclaim();
    EXPECT_EQ(PassAfter(0), "");
    tasks_.refused.reset();
    tasks_.refusedToSilent = DeviceTask::kResubscribe;
    EXPECT_EQ(PassAfter(0), "resubscribe3 ");
    EXPECT_EQ(PassAfter(0), "resubscribe2 ");
    tasks_.refusedToSilent.reset();
    EXPECT_EQ(PassAfter(0), "resubscribe1 ");
}

TEST(DeviceTasks, SilentDevicesLeaveRoomForAnother) {
    std::latch come(1);
    CNoSessions sessions;
    sessions.meanwhile = [&] { come.wait(); };
    CDeviceTasks tasks(sessions);
    const auto taken = [&](const std::optional<SubscriptionAnswer>& answer) {
        auto record = std::make_shared<EventDeviceRecord>(sessions, 1, nullptr, "");
        record->EndSubscribing(answer);
        return tasks.QueueTask(std::move(record), DeviceTask::kResubscribe);
    };
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(taken({}));
    }
    EXPECT_FALSE(taken({}));
    EXPECT_TRUE(taken(kSubscribed));
    EXPECT_FALSE(taken(kSubscribed));
    come.count_down();
}

TEST_F(ControlLoop, AStartMakesUpForWhatTheLastStopBrokeOff) {
    const auto stands = Add(1);
    const auto failed = Add(2);
    failed->EndSubscribing({});
    stands->Resume();
    failed->Resume();
    const auto brokenOff = Add(3);
    sessions_.meanwhile = [&] { brokenOff->Resume(); };
    Subscribe(*brokenOff, sessions_);
    const auto failsLater = Add(4);
    sessions_.meanwhile = [] {};
    failsLater->Resume();
    Subscribe(*failsLater, sessions_);
    EXPECT_EQ(PassAfter(0), "pull1 resubscribe2 resubscribe3 pull4 ");
}

TEST_F(ControlLoop, ASubscriptionWhoseMessagesArePostedIsRenewed) {
    const Items motion = {{kMotion, true}};
    const auto posted = Add(1);
    posted->AddNotifiedItems(motion);
    EXPECT_EQ(PassAfter(0), "");
    EXPECT_EQ(observer_.Take(), "") << "a device that is pulled from ignores posts";
    posted->UseNotifications("http://10.0.0.5/manager");
    posted->AddNotifiedItems(motion);
    EXPECT_EQ(PassAfter(592000, 592), "");
    EXPECT_EQ(observer_.Take(), "m1 ");
    EXPECT_EQ(PassAfter(1), "renew1 ");
    EXPECT_FALSE(posted->Pulls());
}

}  // namespace
}  // namespace onvif_client
