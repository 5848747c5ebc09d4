#include <gtest/gtest.h>

#include <functional>
#include <latch>
#include <new>
#include <utility>

#include "events/ControlLoop.h"
#include "events/DeviceExchanges.h"
#include "events/DeviceTasks.h"
#include "onvif_client/OnvifClient.h"
#include "platform/Clock.h"

namespace onvif_client {
namespace {

/// Stands still until it is moved. Starts shortly before the ticks wrap.
class CStillClock final : public IClock {
 public:
    std::uint32_t TickCount() const override { return ticks; }
    std::int64_t CalendarSeconds() const override { return calendar; }
    void Sleep(std::uint32_t) const override {}

    std::uint32_t ticks = 0xFFFFFF00U;
    std::int64_t calendar = 1'700'000'000;
};

/// Writes down what it hears: "m1 " motion active, "a0 " alarm input inactive.
class CNotingObserver final : public CONVIFAlarmStateObserver {
 public:
    void OnMotionAlarmState(unsigned int, bool state) override { Note('m', state); }
    void OnAlarmInState(unsigned int, unsigned int alarmIn, bool state) override {
        EXPECT_EQ(alarmIn, 1U);
        Note('a', state);
    }
    std::string Take() { return std::exchange(heard_, ""); }

 private:
    void Note(char kind, bool state) { heard_ += {kind, state ? '1' : '0', ' '}; }
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
    std::shared_ptr<EventDeviceRecord> Add(std::uint32_t loginId) {
        auto record = std::make_shared<EventDeviceRecord>(sessions_, loginId, &observer_,
                                                          "http://h/" + std::to_string(loginId));
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

    CStillClock clock_;
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

TEST_F(ControlLoop, ARefusedResubscriptionDoesNotHoldUpPulls) {
    const auto record = Add(1);
    tasks_.refused = DeviceTask::kResubscribe;
    record->OnPullAnswer({});
    EXPECT_EQ(PassAfter(0, 100), "pull1 ");
    record->Unclaim();
    EXPECT_EQ(PassAfter(0), "");
    tasks_.refused.reset();
    EXPECT_EQ(PassAfter(0), "resubscribe1 ");
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
    EXPECT_EQ(PassAfter(0, 100), "");
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
