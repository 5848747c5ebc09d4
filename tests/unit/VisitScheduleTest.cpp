// Whoever is passed over has nothing to do: two controllers live through the same history, and one
// of them visits every device in every pass.
#include <gtest/gtest.h>

#include <array>
#include <deque>
#include <random>

#include "events/ControlLoop.h"
#include "onvif_client/OnvifClient.h"
#include "support/MovedClock.h"

namespace onvif_client {
namespace {

constexpr std::uint32_t kDevices = 12;
const SubscriptionAnswer kSubscribed = {"http://h/subscription"};

class CNoSessions final : public ISessionSource {
 public:
    CHttpClient* Acquire(std::uint32_t) override { return nullptr; }
    bool Release(std::uint32_t) override { return false; }
};

/// Devices, their control loop, and all that it does.
class CSide final : private ITaskQueue {
 public:
    CSide(const client_test::CMovedClock& clock, bool visitsAll)
        : visitsAll_(visitsAll), observer_(clock, told) {}

    void Add(std::uint32_t id, CExtensions extensions) {
        Remove(id);
        auto& record = records_[id] = std::make_shared<EventDeviceRecord>(
            sessions_, id, &observer_, "http://h", "", extensions);
        devices_.Put(record);
    }
    void Remove(std::uint32_t id) {
        if (const auto taken = devices_.Take(id)) {
            const CLockGuard visit(taken->VisitLock());
            taken->Remove();
        }
        std::erase_if(claimed_, [id](const auto& each) { return each.first->LoginId() == id; });
        records_[id].reset();
    }
    EventDeviceRecord* At(std::uint32_t id) { return records_[id].get(); }
    void Pass() {
        if (visitsAll_) {
            devices_.WakeEveryone();
        }
        loop_.Pass();
    }
    /// The task that waited longest ends.
    void EndTask(bool answers) {
        if (claimed_.empty()) {
            return;
        }
        const auto [record, task] = claimed_.front();
        claimed_.pop_front();
        if (task == DeviceTask::kResubscribe) {
            record->BeginSubscribing();
            record->EndSubscribing(answers ? std::optional(kSubscribed) : std::nullopt);
        }
        if (task == DeviceTask::kPull || (task == DeviceTask::kResubscribe && answers)) {
            record->EndPull();
            record->BeginPull({});
        }
        record->Unclaim();
    }

    std::uint64_t Visits() const { return loop_.Visits(); }

    bool takesTasks = true;
    std::string told;

 private:
    class CObserver final : public CONVIFAlarmStateObserver {
     public:
        CObserver(const client_test::CMovedClock& clock, std::string& told)
            : clock_(clock), told_(told) {}
        void OnMotionAlarmState(unsigned int id, bool state) override { Note(id, "m", state); }
        void OnAlarmInState(unsigned int id, unsigned int number, bool state) override {
            Note(id, "i" + std::to_string(number), state);
        }

     private:
        void Note(unsigned int id, const std::string& kind, bool state) {
            told_ += std::to_string(clock_.ticks) + ":" + std::to_string(id) + kind +
                     (state ? "+ " : "- ");
        }
        const client_test::CMovedClock& clock_;
        std::string& told_;
    };

    bool QueueTask(std::shared_ptr<EventDeviceRecord> record, DeviceTask task) override {
        const bool taken = takesTasks || task == DeviceTask::kPull;
        told += "t" + std::to_string(static_cast<int>(task)) + ":" +
                std::to_string(record->LoginId()) + (taken ? " " : "! ");
        if (taken) {
            claimed_.emplace_back(std::move(record), task);
        }
        return taken;
    }

    const bool visitsAll_;
    CObserver observer_;
    CNoSessions sessions_;
    CDeviceTable devices_;
    CControlLoop loop_{devices_, *this};
    std::array<std::shared_ptr<EventDeviceRecord>, kDevices> records_;
    std::deque<std::pair<std::shared_ptr<EventDeviceRecord>, DeviceTask>> claimed_;
};

/// One thing that happens, on both sides alike.
class CHistory {
 public:
    explicit CHistory(std::uint32_t seed) : random_(seed) {}

    std::uint32_t Below(std::uint32_t bound) {
        return static_cast<std::uint32_t>(random_() % bound);
    }

    void Happen(std::array<CSide*, 2> sides, client_test::CMovedClock& clock) {
        const std::uint32_t id = Below(kDevices);
        const std::uint32_t kind = Below(20);
        const PullAnswer answer = Answer();
        CExtensions extensions;
        if (Below(4) == 0) {
            extensions.Add(Extension::kBackgroundSubscription);
        }
        if (Below(2) == 0) {
            extensions.Add(Extension::kPerSourceAlarms);
        }
        if (kind == 0) {
            clock.calendar += Below(2) == 0 ? -std::int64_t{Below(1000)} : Below(1000);
        }
        for (CSide* const side : sides) {
            if (kind == 1) {
                side->takesTasks = false;
            } else if (kind == 2 || side->At(id) == nullptr) {
                side->Add(id, extensions);
            } else if (kind == 3) {
                side->Remove(id);
            } else if (EventDeviceRecord* const record = side->At(id)) {
                HappenTo(*record, kind, answer);
            }
        }
    }

 private:
    PullAnswer Answer() {
        PullAnswer answer;
        for (std::uint32_t i = Below(3); i > 0; --i) {
            AlarmItem item;
            item.type = Below(2) == 0 ? AlarmType::kMotion : AlarmType::kAlarmInput;
            item.state = Below(2) == 0;
            item.initial = Below(3) == 0;
            item.news = Below(5) == 0 ? AlarmNews::kPulse : AlarmNews::kState;
            item.topic = "t" + std::to_string(Below(2));
            item.source = "s" + std::to_string(Below(3));
            answer.items.push_back(item);
        }
        answer.outcome = static_cast<PullOutcome>(Below(4));
        return answer;
    }

    static void HappenTo(EventDeviceRecord& record, std::uint32_t kind, const PullAnswer& answer) {
        if (kind == 4) {
            record.Resume();
        } else if (kind == 5) {
            record.OnNoConnection();
        } else if (kind == 6) {
            record.UseNotifications("http://h/manager");
        } else if (kind == 7) {
            record.AddNotifiedItems(answer.items);
        } else if (kind == 8) {
            record.SetInputs({"s1", "s0"});
        } else {
            record.OnPullAnswer(answer);
        }
    }

    std::mt19937 random_;
};

TEST(VisitSchedule, LeavesOutWhoHasNothingToDoAndNobodyElse) {
    constexpr std::uint32_t kSeeds = 40;
    constexpr int kPasses = 3000;  // with 12 devices: more than a million visits
    // Half of the time nothing long passes. The rules' spans end at one of these, to the
    // millisecond.
    constexpr std::array<std::uint32_t, 12> kSteps = {1,    9,    10,   10,   230,  990,
                                                      1000, 1001, 4990, 9999, 1000, 30000};
    constexpr std::array<std::uint32_t, 3> kRarities = {1, 15, 60};  // passes between two events
    std::size_t told = 0;
    std::array<std::uint64_t, 2> visits = {};
    testing::internal::CaptureStderr();  // what is lost and regained is logged, very often
    for (std::uint32_t seed = 1; seed <= kSeeds; ++seed) {
        SCOPED_TRACE(seed);
        client_test::CMovedClock clock;
        const CScopedClock scoped(clock);
        CHistory history(seed);
        CSide all(clock, true);
        CSide few(clock, false);
        const std::uint32_t rarity = kRarities.at(seed % kRarities.size());
        std::uint32_t milliseconds = 0;
        for (int pass = 0; pass < kPasses; ++pass) {
            const std::uint32_t step = kSteps.at(history.Below(pass % 64 < 32 ? 5 : 12));
            clock.ticks += step;
            clock.calendar += (milliseconds % 1000 + step) / 1000;
            milliseconds += step;
            for (std::uint32_t i = history.Below(3); i > 0; --i) {
                if (history.Below(rarity) == 0) {
                    history.Happen({&all, &few}, clock);
                }
            }
            if (history.Below(10) == 0) {
                all.takesTasks = few.takesTasks = true;
            }
            while (const std::uint32_t end = history.Below(8)) {
                all.EndTask(end > 1);
                few.EndTask(end > 1);
            }
            all.Pass();
            few.Pass();
            ASSERT_EQ(few.told, all.told) << "in pass " << pass;
            told += all.told.size();
            all.told.clear();
            few.told.clear();
        }
        visits[0] += all.Visits();
        visits[1] += few.Visits();
    }
    testing::internal::GetCapturedStderr();
    EXPECT_GT(visits[0], std::uint64_t{1000000});
    EXPECT_LT(visits[1], visits[0] / 4) << "idle devices are visited";
    EXPECT_GT(told, std::size_t{200000}) << "too little has happened";
}

}  // namespace
}  // namespace onvif_client
