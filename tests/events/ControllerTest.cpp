#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

#include "api/HttpClientManager.h"
#include "events/OnvifEvent.h"
#include "platform/Wirelink.h"
#include "support/MovedClock.h"
#include "support/System.h"
#include "system/AlarmObserver.h"

namespace onvif_client {
namespace {

using camera_sim::CCamera;
using camera_sim::CCameraHost;
using camera_sim::Fault;
using client_test::Await;
using client_test::CAlarmObserver;
using client_test::SetInput;
using client_test::SetMotion;

/// Begins with the time of the cameras. What sleeps is the event thread between two passes.
class CEventClock final : public client_test::CMovedClock {
 public:
    CEventClock() {
        using namespace std::chrono;
        calendar = floor<seconds>(system_clock::now()).time_since_epoch().count();
    }
    void Sleep(std::uint32_t milliseconds) const override {
        EXPECT_EQ(milliseconds, 10U);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    void MoveCalendar(int seconds) { calendar += seconds; }
    void Move(int seconds) {
        MoveCalendar(seconds);
        ticks += static_cast<std::uint32_t>(seconds) * 1000;
    }
};

/// The alarm side below the exports, with a clock of the test's.
class Controller : public testing::Test {
 protected:
    Controller() {
        WIRELINK_Initial(1, 1, nullptr, 0);
        controller_->Start();
    }

    unsigned int LoggedIn(const CCamera& camera) {
        std::uint32_t error = 0;
        const std::uint32_t id =
            sessions_.Login(kNoLoginId, "127.0.0.1", camera.Port(), "admin", "camera-1", error);
        EXPECT_EQ(error, 0U);
        return id;
    }
    unsigned int Observed(const CCamera& camera) {
        const unsigned int id = LoggedIn(camera);
        controller_->AddDevice(id, &observer_, "127.0.0.1");
        return id;
    }

    CEventClock clock_;
    const CScopedClock scoped_{clock_};
    CCameraHost host_;
    CAlarmObserver observer_;
    CHttpClientManager sessions_;
    std::unique_ptr<COnvifEventCtrol> controller_ = std::make_unique<COnvifEventCtrol>(sessions_);
};

TEST_F(Controller, OnlyChangesAreTold) {
    CCamera& camera = host_.Add({.model = "fixed"});
    const unsigned int id = Observed(camera);
    SetInput(camera, true);
    EXPECT_TRUE(observer_.Hears(id, "I+"));
    for (std::uint64_t subscription = 2; subscription <= 4; ++subscription) {
        // A new subscription tells every state again.
        const bool ends = subscription < 4;  // else the camera ends neither it nor its pull
        if (!ends) {
            camera.Inject("Unsubscribe", {.kind = Fault::Kind::kClose});
        }
        clock_.MoveCalendar(100);
        ASSERT_TRUE(Await([&] {
            const auto all = camera.Subscriptions();
            return all.size() == (ends ? 1 : 2) && all.back().id == subscription &&
                   all.back().waitingPulls == 1 && all.back().delivered == 2;
        })) << subscription;
    }
    SetInput(camera, false);
    EXPECT_TRUE(observer_.Hears(id, "I+I-"));
    EXPECT_EQ(observer_.calls, 2);
}

TEST_F(Controller, ALostReplyIsAskedForAgainAfterAMinute) {
    const auto raw = [](const std::string& reply) {
        return Fault{
            .kind = Fault::Kind::kRawReply, .remaining = 1, .reply = "HTTP/1.1 200 OK\r\n" + reply};
    };
    const Fault faults[] = {
        {.kind = Fault::Kind::kSilence, .remaining = 1},
        {.kind = Fault::Kind::kClose, .remaining = 1},
        {.kind = Fault::Kind::kGarbage, .remaining = 1, .bytes = 70000},
        raw("Content-Length: 40000\r\n\r\n" + std::string(40000, ' ')),
        raw("Content-Length: 4000\r\n\r\n<?xml"),
        raw("Content-Length: -5\r\n\r\n<a/>"),
        raw("\r\n<a/>"),
    };
    CCamera& sound = host_.Add({});
    const unsigned int soundId = Observed(sound);
    std::vector<std::pair<CCamera*, unsigned int>> odd;
    for (const Fault& fault : faults) {
        odd.emplace_back(&host_.Add({}), 0);
        odd.back().first->Inject("PullMessages", fault);
        odd.back().second = Observed(*odd.back().first);
        SetInput(*odd.back().first, true);
    }
    SetMotion(sound, true);
    EXPECT_TRUE(observer_.Hears(soundId, "M+"));
    SetMotion(sound, false);
    EXPECT_TRUE(observer_.Hears(soundId, "M+M-"));
    for (const auto& [camera, id] : odd) {
        EXPECT_TRUE(Await([&, pulled = camera] { return pulled->Count("PullMessages") > 0; }));
        EXPECT_EQ(camera->Count("PullMessages"), 1U) << id;
        EXPECT_EQ(observer_.Heard(id), "") << id;
    }
    clock_.Move(61);
    for (const auto& [camera, id] : odd) {
        // The second input has not changed.
        EXPECT_TRUE(Await([&, heard = id] { return observer_.Heard(heard).starts_with("I+"); }))
            << id;
    }
}

TEST_F(Controller, ARebootedCameraIsSubscribedToAgain) {
    CCamera& camera = host_.Add({.model = "fixed"});
    CCamera& sound = host_.Add({});
    const unsigned int id = Observed(camera);
    const unsigned int soundId = Observed(sound);
    ASSERT_TRUE(Await([&] { return camera.Subscriptions()[0].waitingPulls == 1; }));
    const std::uint64_t pulls = camera.Count("PullMessages");
    camera.Reboot();
    SetInput(camera, true);
    clock_.Move(61);
    // The camera refuses every pull, as it knows no subscription.
    EXPECT_TRUE(Await([&] { return camera.Count("PullMessages") > pulls + 3; }));
    EXPECT_EQ(observer_.Heard(id), "");
    SetMotion(sound, true);
    EXPECT_TRUE(observer_.Hears(soundId, "M+"));
    clock_.Move(40);
    EXPECT_TRUE(observer_.Hears(id, "I+"));
}

TEST_F(Controller, ASiteOfSilentCamerasDelaysNoOther) {
    CCamera& sound = host_.Add({});
    const unsigned int soundId = Observed(sound);
    std::vector<CCamera*> silent;
    for (int i = 0; i < 15; ++i) {
        silent.push_back(&host_.Add({}));
        Observed(*silent.back());
        silent.back()->Inject("*", {.kind = Fault::Kind::kSilence});
    }
    clock_.Move(101);
    const auto askedFor = [&](const char* operation, std::uint64_t times) {
        return std::count_if(silent.begin(), silent.end(),
                             [&](const CCamera* each) { return each->Count(operation) >= times; });
    };
    ASSERT_TRUE(Await([&] { return askedFor("Unsubscribe", 1) >= 5; }));
    std::string changes;
    for (int i = 0; i < 10; ++i) {
        SetMotion(sound, i % 2 == 0);
        changes += i % 2 == 0 ? "M+" : "M-";
        EXPECT_TRUE(observer_.Hears(soundId, changes));
    }
    // However slow this was: another one is asked only when one has been given up.
    const auto asked = askedFor("Unsubscribe", 1);
    EXPECT_LE(asked, 5 + askedFor("CreatePullPointSubscription", 2));
}

TEST_F(Controller, InTheBackgroundNobodyWaitsForSilentCameras) {
    sessions_.UseExtensions({Extension::kBackgroundSubscription});
    CCamera& sound = host_.Add({});
    CCamera& silent = host_.Add({});
    const unsigned int soundId = Observed(sound);
    std::vector<unsigned int> ids(50);
    std::generate(ids.begin(), ids.end(), [&] { return LoggedIn(silent); });
    silent.Inject("CreatePullPointSubscription", {.kind = Fault::Kind::kSilence});
    for (const unsigned int id : ids) {
        controller_->AddDevice(id, &observer_, "127.0.0.1");
        // Whoever waited would have been told nothing by each before the next one is added.
        ASSERT_LE(silent.Count("CreatePullPointSubscription"), 4U);
    }
    SetMotion(sound, true);
    EXPECT_TRUE(observer_.Hears(soundId, "M+"));
    EXPECT_EQ(sound.Count("Unsubscribe") + silent.Count("Unsubscribe"), 0U);
}

/// Sessions of another source, without memory at first.
class CLateMemory final : public ISessionSource {
 public:
    explicit CLateMemory(ISessionSource& sessions) : sessions_(sessions) {}
    CHttpClient* Acquire(std::uint32_t loginId) override {
        if (!there) {
            throw std::bad_alloc();
        }
        return sessions_.Acquire(loginId);
    }
    bool Release(std::uint32_t loginId) override { return sessions_.Release(loginId); }

    std::atomic<bool> there = false;

 private:
    ISessionSource& sessions_;
};

TEST_F(Controller, AnObserverAddedWithoutMemoryIsServedLater) {
    CCamera& camera = host_.Add({});
    const unsigned int id = Observed(camera);
    controller_->Stop();
    CLateMemory memory(sessions_);
    CAlarmObserver observer;
    COnvifEventCtrol later(memory);
    later.Start();
    EXPECT_THROW(later.AddDevice(id, &observer, "127.0.0.1"), std::bad_alloc);
    memory.there = true;
    SetMotion(camera, true);
    EXPECT_TRUE(observer.Hears(id, "M+"));
}

TEST_F(Controller, ItsEndBreaksOffWhatASilentCameraIsAsked) {
    CCamera& camera = host_.Add({});
    Observed(camera);
    camera.Inject("Unsubscribe", {.kind = Fault::Kind::kSilence});
    clock_.MoveCalendar(100);
    EXPECT_TRUE(Await([&] { return camera.Count("Unsubscribe") == 1; }));
    controller_.reset();
    EXPECT_EQ(camera.Count("CreatePullPointSubscription"), 1U) << "it was not waited for";
}

TEST_F(Controller, DevicesAreToldWhereTheListenerIs) {
    controller_->Stop();
    client_test::SetVariable("ONVIF_CLIENT_LISTEN_ADDRESS", "127.0.0.2");
    controller_->Start();
    client_test::SetVariable("ONVIF_CLIENT_LISTEN_ADDRESS", "127.0.0.1");
    CCamera& camera = host_.Add({});
    Observed(camera);
    const auto requests = camera.Requests();
    EXPECT_TRUE(std::ranges::any_of(requests, [](const auto& request) {
        return request.body.find("http://127.0.0.2:6699/subscription_") != std::string::npos;
    }));
}

}  // namespace
}  // namespace onvif_client
