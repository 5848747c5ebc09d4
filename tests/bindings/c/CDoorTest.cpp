#include <camera_sim/CameraSim.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "onvif_client/Version.h"
#include "onvif_client/onvif_client_c.h"
#include "support/Await.h"
#include "support/ClosedPort.h"

using Function = void (*)(void);
extern "C" const Function* LinkedFunctions(size_t* count);

namespace client_test {
namespace {

using camera_sim::CCamera;
using camera_sim::Fault;

constexpr const char* kDevInfo = "<Get><devInfo/></Get>";

void SetMotion(CCamera& camera, bool active) {
    camera.Change([active](auto& state) { state.media.videoSources.front().motion = active; });
}

/// What a callback does, and how often it was called.
struct Ear {
    std::function<void(onvif_client_id, int, unsigned int, int)> action;
    std::atomic<int> calls = 0;

    static void Hear(void* context, onvif_client_id id, int alarm, unsigned int input, int active) {
        auto& ear = *static_cast<Ear*>(context);
        if (ear.action) {
            ear.action(id, alarm, input, active);
        }
        ++ear.calls;
    }
};

class CDoor : public testing::Test {
 protected:
    void Start(const char* extensions) {
        ASSERT_EQ(onvif_client_set_extensions(extensions), onvif_client_success);
        ASSERT_EQ(onvif_client_start(), onvif_client_success);
    }
    void SetUp() override { Start("all"); }
    void TearDown() override {
        onvif_client_stop();
        onvif_client_set_extensions(nullptr);
    }
    CCamera& Camera() {
        camera_sim::CameraOptions options;
        options.maxSubscriptions = 100000;
        return host_.Add(options);
    }
    static onvif_client_id Login(const CCamera& camera) {
        onvif_client_id id = 0;
        EXPECT_EQ(onvif_client_login("127.0.0.1", camera.Port(), "admin", "camera-1", &id),
                  onvif_client_success);
        return id;
    }

    camera_sim::CCameraHost host_;
    std::string text_;
    int Run(int (*run)(onvif_client_id, const char*, char**, size_t*), onvif_client_id id,
            const char* request) {
        char* result = nullptr;
        size_t size = 7;
        const int error = run(id, request, &result, &size);
        EXPECT_TRUE(result != nullptr || size == 0);
        text_ = result == nullptr ? "" : std::string(result, size);
        onvif_client_free(result);
        return error;
    }
};

TEST_F(CDoor, RequestsBringDocumentsAndPicturesWithTheirSizes) {
    const onvif_client_id id = Login(Camera());
    EXPECT_EQ(Run(onvif_client_get, id, kDevInfo), onvif_client_success);
    EXPECT_TRUE(text_.starts_with("<?xml") && text_.find("<devInfo>") != std::string::npos);
    EXPECT_EQ(text_.find('\0'), std::string::npos);
    EXPECT_EQ(Run(onvif_client_get, id, "<Get><snapshotURI><index>0</index></snapshotURI></Get>"),
              onvif_client_success);
    EXPECT_TRUE(text_.starts_with("\xFF\xD8") && text_.ends_with("\xFF\xD9"));
    EXPECT_EQ(Run(onvif_client_set, id,
                  "<Set><manualAlarmout><token>Relay_1</token><active>1</active></manualAlarmout>"
                  "</Set>"),
              onvif_client_success);
    EXPECT_NE(text_.find("<SetResponse>"), std::string::npos);
    EXPECT_EQ(text_.find('\0'), std::string::npos);
    char* result = nullptr;
    EXPECT_EQ(onvif_client_get(id, kDevInfo, &result, nullptr), onvif_client_success);
    onvif_client_free(result);
}

TEST_F(CDoor, EveryFailureHasItsCode) {
    CCamera& camera = Camera();
    const onvif_client_id id = Login(camera);
    const CClosedPort closed;
    onvif_client_id none = 7;
    char* result = nullptr;
    const struct {
        int found;
        int wanted;
    } rows[] = {
        {onvif_client_login("127.0.0.1", camera.Port(), "admin", "wrong", &none), 401},
        {onvif_client_login("127.0.0.1", closed.Port(), "admin", "camera-1", &none), 5},
        {onvif_client_login(nullptr, 80, "", "", &none), onvif_client_bad_argument},
        {onvif_client_login("127.0.0.1", 80, nullptr, "", &none), onvif_client_bad_argument},
        {onvif_client_login("127.0.0.1", 80, "", "", nullptr), onvif_client_bad_argument},
        {Run(onvif_client_get, id + 1, kDevInfo), onvif_client_unknown_id},
        {Run(onvif_client_get, 0xFFFFFFFF, kDevInfo), onvif_client_unknown_id},
        {Run(onvif_client_set, 0, "<Set/>"), onvif_client_unknown_id},
        {Run(onvif_client_get, id, "<Get><noSuchCommand/></Get>"), onvif_client_failed},
        {Run(onvif_client_set, id, "no document"), onvif_client_failed},
        {Run(onvif_client_get, id, nullptr), onvif_client_bad_argument},
        {Run(onvif_client_set, id, nullptr), onvif_client_bad_argument},
        {onvif_client_get(id, kDevInfo, nullptr, nullptr), onvif_client_bad_argument},
        {onvif_client_set(id, "<Set/>", nullptr, nullptr), onvif_client_bad_argument},
        {onvif_client_observe(id, nullptr, nullptr), onvif_client_bad_argument},
        {onvif_client_observe(id + 1, Ear::Hear, nullptr), onvif_client_unknown_id},
    };
    std::size_t row = 0;
    for (const auto& each : rows) {
        EXPECT_EQ(each.found, each.wanted) << "row " << row;
        ++row;
    }
    EXPECT_EQ(none, 0U);
    camera.Inject("GetSnapshotUri", {.kind = Fault::Kind::kClose});
    EXPECT_EQ(onvif_client_get(id, "<Get><snapshotURI><index>0</index></snapshotURI></Get>",
                               &result, nullptr),
              onvif_client_failed);
    onvif_client_forget(77);
    onvif_client_logout(77);
    onvif_client_free(nullptr);
    onvif_client_logout(id);
    EXPECT_EQ(Run(onvif_client_get, id, kDevInfo), onvif_client_unknown_id);

    std::set<std::string> texts;
    const int codes[] = {0, 1, 4, 5, 7, 401, -1, -2, -3, -4, 99};
    for (const int code : codes) {
        texts.insert(onvif_client_error_text(code));
    }
    EXPECT_EQ(texts.size(), std::size(codes));
    EXPECT_STREQ(onvif_client_version(), ONVIF_CLIENT_VERSION);
    std::size_t count = 0;
    const Function* functions = LinkedFunctions(&count);
    EXPECT_EQ(std::set<Function>(functions, functions + count).size(), 14U);
}

TEST_F(CDoor, ExtensionsAreThoseOfTheLastStart) {
    CCamera& camera = Camera();
    Login(camera);
    EXPECT_EQ(camera.Count("SetSystemDateAndTime"), 0U);
    onvif_client_stop();
    Start(nullptr);
    Login(camera);
    EXPECT_EQ(camera.Count("SetSystemDateAndTime"), 1U);
}

TEST_F(CDoor, AnObserverIsToldUntilItIsRemovedOrReplaced) {
    CCamera& camera = Camera();
    const onvif_client_id id = Login(camera);
    std::atomic<int> last = -1;
    Ear first;
    first.action = [&](onvif_client_id of, int alarm, unsigned int input, int active) {
        last = of == id && alarm == onvif_client_motion && input == 0 ? active : -2;
    };
    ASSERT_EQ(onvif_client_observe(id, Ear::Hear, &first), onvif_client_success);
    SetMotion(camera, true);
    WaitUntil([&] { return last == 1; });
    SetMotion(camera, false);
    WaitUntil([&] { return last == 0; });

    std::atomic<unsigned int> input = 0;
    Ear second;
    second.action = [&](onvif_client_id, int alarm, unsigned int number, int) {
        input = alarm == onvif_client_alarm_input ? number : 99;
    };
    ASSERT_EQ(onvif_client_observe(id, Ear::Hear, &second), onvif_client_success);
    const int calls = first.calls;
    camera.Change([](auto& state) { state.inputs.at(1).active = true; });
    WaitUntil([&] { return input == 2; });
    EXPECT_EQ(first.calls, calls);

    onvif_client_logout(id);
    const int told = second.calls;
    SetMotion(camera, true);
    EXPECT_EQ(second.calls, told);
}

TEST_F(CDoor, ARemovalWaitsForTheCallbackThatRuns) {
    CCamera& camera = Camera();
    for (void (*remove)(onvif_client_id) : {onvif_client_forget, onvif_client_logout}) {
        const onvif_client_id id = Login(camera);
        std::atomic<bool> inside = false;
        std::atomic<bool> removing = false;
        std::atomic<bool> done = false;
        Ear ear;
        ear.action = [&](auto...) {
            inside = true;
            WaitUntil([&] { return removing.load(); });
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            done = true;
        };
        ASSERT_EQ(onvif_client_observe(id, Ear::Hear, &ear), onvif_client_success);
        SetMotion(camera, true);
        WaitUntil([&] { return inside.load(); });
        removing = true;
        remove(id);
        EXPECT_TRUE(done);
        SetMotion(camera, false);
        onvif_client_logout(id);
    }
}

TEST_F(CDoor, ACallbackMayRemoveItsObserverAndEverythingElse) {
    CCamera& camera = Camera();
    Ear other;
    const std::function<void(onvif_client_id)> actions[] = {
        onvif_client_forget, onvif_client_logout, [](onvif_client_id) { onvif_client_stop(); },
        [&](onvif_client_id id) { onvif_client_observe(id, Ear::Hear, &other); },
        [&](onvif_client_id id) {
            onvif_client_forget(id);
            EXPECT_EQ(Run(onvif_client_get, id, kDevInfo), onvif_client_success);
            onvif_client_logout(Login(camera));
        }};
    for (const auto& action : actions) {
        const onvif_client_id id = Login(camera);
        Ear ear;
        ear.action = [&](onvif_client_id of, auto...) { action(of); };
        ASSERT_EQ(onvif_client_observe(id, Ear::Hear, &ear), onvif_client_success);
        SetMotion(camera, true);
        WaitUntil([&] { return ear.calls > 0; });
        SetMotion(camera, false);
        onvif_client_start();
        onvif_client_logout(id);
        EXPECT_EQ(ear.calls, 1);
    }
}

TEST_F(CDoor, ObserversOfOneSessionComeAndGoOnManyThreads) {
    CCamera& camera = Camera();
    std::atomic<bool> ends = false;
    std::thread moving([&] {
        for (bool active = true; !ends; active = !active) {
            SetMotion(camera, active);
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    });
    Ear ears[4];
    for (int round = 0; round < 5; ++round) {
        const onvif_client_id id = Login(camera);
        ears[round % 4].action = [&](onvif_client_id of, auto...) { onvif_client_forget(of); };
        std::vector<std::thread> threads;
        for (Ear& ear : ears) {
            threads.emplace_back([&ear, id] {
                for (int times = 0; times < 10; ++times) {
                    onvif_client_observe(id, Ear::Hear, &ear);
                    onvif_client_forget(id);
                }
                onvif_client_observe(id, Ear::Hear, &ear);
                onvif_client_logout(id);
            });
        }
        for (std::thread& each : threads) {
            each.join();
        }
        // A request of the alarm side may still keep it.
        WaitUntil([&] { return Run(onvif_client_get, id, kDevInfo) == onvif_client_unknown_id; });
        for (Ear& ear : ears) {
            ear.action = nullptr;
        }
    }
    ends = true;
    moving.join();
    EXPECT_EQ(Run(onvif_client_get, Login(camera), kDevInfo), onvif_client_success);
}

}  // namespace
}  // namespace client_test
