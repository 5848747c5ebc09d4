// The times of the alarm side on the real clock. All parts run side by side, each against a camera
// of its own, for two minutes.
#include <camera_sim/CameraSim.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <exception>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "simulator/Exchange.h"
#include "system/AlarmObserver.h"
#include "system/Client.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using camera_sim::CCamera;
using client_test::SetMotion;

constexpr std::uint16_t kListenPort = 6699;
constexpr auto kLateness = 1500ms;  // of the library, on a busy machine

/// Keeps when motion was told, from its own registration on.
class CEar final : public CONVIFAlarmStateObserver {
 public:
    struct Told {
        Clock::time_point time;
        bool state;
    };

    explicit CEar(const CCamera& camera) : id_(client_test::Login(camera)) {
        ONVIF_CLIENT_AddAlarmStateObserver(id_, this);
    }
    ~CEar() override { ONVIF_CLIENT_DelAlarmStateObserver(id_); }
    CEar(const CEar&) = delete;
    CEar& operator=(const CEar&) = delete;

    void OnMotionAlarmState(unsigned int, bool state) override {
        const std::lock_guard guard(lock_);
        told_.push_back({Clock::now(), state});
    }
    void OnAlarmInState(unsigned int, unsigned int, bool) override { FAIL() << "no input changed"; }

    std::vector<Told> All() const {
        const std::lock_guard guard(lock_);
        return told_;
    }

 private:
    const unsigned int id_;
    mutable std::mutex lock_;  // guards told_; leaf
    std::vector<Told> told_;
};

/// How long it takes until that is so; 120 s when it does not come about.
Clock::duration TimeUntil(Clock::time_point start, const std::function<bool()>& condition) {
    while (!condition()) {
        if (Clock::now() > start + 120s) {
            return 120s;
        }
        std::this_thread::sleep_for(20ms);
    }
    return Clock::now() - start;
}

void ExpectTime(const char* what, Clock::duration measured, Clock::duration rule) {
    const std::chrono::duration<double> passed = measured;
    GTEST_LOG_(INFO) << what << " after " << passed.count() << " s";
    EXPECT_GE(measured, rule) << what;
    EXPECT_LE(measured, rule + kLateness) << what;
}

void LastingMotionIsRepeatedAndCleared(CCamera& camera) {
    const CEar ear(camera);
    const auto start = Clock::now();
    SetMotion(camera, true);
    TimeUntil(start, [&] { return !ear.All().empty() && !ear.All().back().state; });
    const auto told = ear.All();
    ASSERT_GE(told.size(), 3U);
    EXPECT_LE(told[0].time - start, kLateness);
    ExpectTime("motion repeated", told[1].time - start, 5s);
    ExpectTime("motion cleared", told.back().time - start, 60s);
    for (std::size_t i = 0; i + 1 < told.size(); ++i) {
        EXPECT_TRUE(told[i].state) << i;
    }
}

void UnansweredPullIsReplaced(CCamera& camera) {
    camera.Inject("PullMessages", {.kind = camera_sim::Fault::Kind::kSilence, .remaining = 1});
    const auto start = Clock::now();
    const CEar ear(camera);
    SetMotion(camera, true);
    ExpectTime("pull replaced", TimeUntil(start, [&] { return camera.Count("PullMessages") > 1; }),
               60s);
    ExpectTime("motion heard by it", TimeUntil(start, [&] { return !ear.All().empty(); }), 60s);
    EXPECT_EQ(camera.Count("CreatePullPointSubscription"), 1U);
}

void SilentExchangeIsGivenUp(CCamera& camera) {
    const unsigned int id = client_test::Login(camera);
    camera.Inject("GetDeviceInformation", {.kind = camera_sim::Fault::Kind::kSilence});
    const auto start = Clock::now();
    EXPECT_FALSE(client_test::Get(id, "<devInfo/>").has_value());
    ExpectTime("exchange given up", Clock::now() - start, 8s);
}

void ChangesOutliveTheSubscription(CCamera& camera) {
    constexpr int kChanges = 480;
    const CEar ear(camera);
    const auto start = Clock::now();
    Clock::duration replaced = 0s;
    for (int i = 0; i < kChanges; ++i) {
        std::this_thread::sleep_until(start + i * 250ms);
        SetMotion(camera, i % 2 == 0);
        if (replaced == 0s && camera.Count("Unsubscribe") > 0) {
            replaced = Clock::now() - start;
        }
    }
    std::this_thread::sleep_for(kLateness);
    // The rule counts whole seconds of the calendar.
    ExpectTime("subscription replaced", replaced, 99s);
    EXPECT_EQ(camera.Count("CreatePullPointSubscription"), 2U);
    EXPECT_EQ(camera.Count("Unsubscribe"), 1U);
    EXPECT_EQ(camera.Subscriptions().size(), 1U);
    const auto told = ear.All();
    EXPECT_EQ(told.size(), static_cast<std::size_t>(kChanges));
    for (std::size_t i = 0; i < told.size(); ++i) {
        EXPECT_EQ(told[i].state, i % 2 == 0) << i;
    }
}

void PostsAreAnswered() try {
    const std::string post = "POST /subscription_0 HTTP/1.1\r\nContent-Length: 5\r\n\r\nhello";
    for (int i = 0; i < 120; ++i) {
        EXPECT_TRUE(Exchange(kListenPort, post).starts_with("HTTP/1.1 200 OK\r\n")) << i;
        std::this_thread::sleep_for(1s);
    }
} catch (const std::exception& failure) {
    ADD_FAILURE() << "port " << kListenPort << ": " << failure.what();
}

TEST(RealTimes, AreKept) {
    setenv("ONVIF_CLIENT_LISTEN_ADDRESS", "127.0.0.1", 1);
    camera_sim::CCameraHost host;
    const client_test::CStartedLibrary library;
    std::vector<std::jthread> parts;
    parts.emplace_back([&camera = host.Add({})] { LastingMotionIsRepeatedAndCleared(camera); });
    parts.emplace_back([&camera = host.Add({})] { UnansweredPullIsReplaced(camera); });
    parts.emplace_back([&camera = host.Add({})] { SilentExchangeIsGivenUp(camera); });
    parts.emplace_back([&camera = host.Add({})] { ChangesOutliveTheSubscription(camera); });
    parts.emplace_back(PostsAreAnswered);
}

}  // namespace
