#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>
#include <vector>

#include "system/Client.h"

namespace client_test {
namespace {

using camera_sim::CCamera;

class Concurrency : public CCameraTest {};

/// How much each thread does; ONVIF_CLIENT_STRESS multiplies it for a long run by hand.
int Rounds(int rounds) {
    const char* factor = std::getenv("ONVIF_CLIENT_STRESS");
    return rounds * (factor == nullptr ? 1 : std::max(1, std::atoi(factor)));
}

template <typename Work>
void OnThreads(int count, const Work& work) {
    std::vector<std::jthread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back([&work, i] { work(i); });
    }
}

TEST_F(Concurrency, SessionsAreSharedAndComeAndGo) {
    std::vector<CCamera*> cameras;
    std::vector<unsigned int> ids;
    for (int i = 0; i < 20; ++i) {
        cameras.push_back(&host_.Add({.model = i % 2 == 0 ? "dome" : "fixed"}));
    }
    for (int i = 0; i < 100; ++i) {
        ids.push_back(Login(*cameras[static_cast<std::size_t>(i) % cameras.size()]));
    }
    const char* const requests[] = {"<devInfo/>", "<ipv4/><dns/>", "<profiles/>",
                                    "<serviceUrl/><streamCount/>"};
    std::atomic<int> lost = 0;
    OnThreads(32, [&](int thread) {
        for (int round = 0; round < Rounds(6); ++round) {
            const auto shared = Get(ids[0], requests[(thread + round) % 4]);
            lost += !shared || shared->find("fail") != std::string::npos;
            const auto index = static_cast<std::size_t>(thread * 7 + round * 13) % ids.size();
            lost += !Get(ids[index], "<devInfo/>").has_value();
            const unsigned int own = Login(*cameras[index % cameras.size()]);
            const auto answer = Get(own, "<devInfo/>");
            lost += own == ONVIF_CLIENT_NO_LOGIN_ID || !answer || answer->empty();
            ONVIF_CLIENT_Logout(own);
            // The id is gone with its session: nothing is produced for it.
            lost += Get(own, "<devInfo/>") != std::string();
        }
    });
    EXPECT_EQ(lost, 0);
}

TEST_F(Concurrency, ALogoutLetsRunningRequestsFinish) {
    CCamera& camera = host_.Add({});
    const unsigned int id = Login(camera);
    camera.ClearEvidence();
    camera.Inject("GetDeviceInformation", {.delay = std::chrono::milliseconds(300)});
    std::atomic<int> answered = 0;
    {
        std::vector<std::jthread> requests;
        for (int i = 0; i < 4; ++i) {
            requests.emplace_back([&] { answered += !Get(id, "<devInfo/>").value_or("").empty(); });
        }
        while (camera.Count("GetDeviceInformation") < 4) {
            std::this_thread::yield();
        }
        EXPECT_TRUE(ONVIF_CLIENT_Logout(id));
        EXPECT_TRUE(ONVIF_CLIENT_Logout(id));
    }
    EXPECT_EQ(answered, 4);
    unsigned int error = 0;
    EXPECT_EQ(ONVIF_CLIENT_Login(id, "x", 1, "x", "x", &error), ONVIF_CLIENT_NO_LOGIN_ID);
}

}  // namespace
}  // namespace client_test
