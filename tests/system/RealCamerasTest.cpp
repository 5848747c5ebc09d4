// What troublesome cameras do, and the extensions that help with each.
#include <gtest/gtest.h>

#include <cstdlib>

#include "support/System.h"
#include "system/AlarmObserver.h"
#include "system/Client.h"

namespace client_test {
namespace {

using camera_sim::CameraOptions;
using camera_sim::HttpScheme;

/// What works with these extensions. L: a login, D: what the camera tells of itself, S: a stream,
/// P: a picture, A: an alarm.
std::string Works(const CameraOptions& options, const char* extensions, const char* user,
                  std::uint64_t* exchangesOfLogin = nullptr) {
    SetVariable("ONVIF_CLIENT_EXTENSIONS", extensions);
    CAlarmObserver observer;
    const CStartedLibrary library;
    SetVariable("ONVIF_CLIENT_EXTENSIONS", nullptr);
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add(options);
    const unsigned int id = ONVIF_CLIENT_Login(ONVIF_CLIENT_NO_LOGIN_ID, "127.0.0.1", camera.Port(),
                                               user, "camera-1", nullptr);
    if (exchangesOfLogin != nullptr) {
        *exchangesOfLogin = camera.Count("*");
    }
    if (id == ONVIF_CLIENT_NO_LOGIN_ID) {
        return "";
    }
    const auto device = Get(id, "<devInfo/>");
    const auto stream = Get(id, "<streamURI><index>0</index></streamURI>");
    const auto picture = Get(id, "<snapshotURI><index>0</index></snapshotURI>");
    const bool observed = ONVIF_CLIENT_AddAlarmStateObserver(id, &observer);
    SetMotion(camera, true);
    // Nobody waits for what a refused subscription does not tell.
    const bool heard = observed && *extensions != '\0' && observer.Hears(id, "M+");
    ONVIF_CLIENT_DelAlarmStateObserver(id);
    return std::string("L") + (device && At(*device, "devInfo/status") == "success" ? "D" : "") +
           (stream && At(*stream, "streamURI/uri").starts_with("rtsp://") ? "S" : "") +
           (picture && picture->starts_with("\xFF\xD8") ? "P" : "") + (heard ? "A" : "");
}

TEST(RealCameras, NeedTheirExtensions) {
    const std::chrono::hours far(30);
    const struct {
        const char* extension;
        const char* literally;
        CameraOptions camera;
        const char* extended = "LDSPA";
        const char* user = "admin";
    } cases[] = {
        {"http-framing", "", {.chunkBytes = 7}},
        {"open-faults", "", {.xmlProlog = false}},
        {"keep-clock", "LS", {.clockOffset = far, .clockRefusal = "prohibited"}},
        {"keep-clock", "", {.openOperations = {}, .clockOffset = -far, .httpDate = true}},
        {"keep-clock",
         "",
         {.accounts = {{"op", "camera-1", camera_sim::Role::kOperator}}},
         "LDSPA",
         "op"},
        {"http-digest", "", {.httpAuthentication = HttpScheme::kDigest, .httpNonceUses = 1}},
        {"http-digest",
         "",
         {.httpAuthentication = HttpScheme::kDigestSha256,
          .snapshotAuthentication = HttpScheme::kDigestSha256}},
        {"http-digest", "", {.httpAuthentication = HttpScheme::kDigestEither, .httpQop = ""}},
        {"http-digest", "", {.httpAuthentication = HttpScheme::kBasic}, ""},
        {"media-fallback", "LD", {.brokenMedia2 = true}},
        {"media-fallback", "LD", {.media = false}},
        {"all",
         "",
         {.media = false,
          .openOperations = {},
          .httpAuthentication = HttpScheme::kDigestSha256,
          .clockOffset = far}},
        {"no-basic", "LDSP", {.snapshotAuthentication = HttpScheme::kBasic}, "LDSA"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        EXPECT_EQ(Works(each.camera, "", each.user), each.literally);
        EXPECT_EQ(Works(each.camera, each.extension, each.user), each.extended);
    }
    std::uint64_t literal = 0;
    std::uint64_t kept = 0;
    Works({}, "", "admin", &literal);
    Works({}, "keep-clock", "admin", &kept);
    EXPECT_EQ(literal, 9U);
    EXPECT_EQ(kept, 6U);
}

TEST(RealCameras, AreAskedWhatEachCommandOfADocumentNames) {
    for (const char* extensions : {"", "own-parameters"}) {
        SetVariable("ONVIF_CLIENT_EXTENSIONS", extensions);
        const CStartedLibrary library;
        SetVariable("ONVIF_CLIENT_EXTENSIONS", nullptr);
        camera_sim::CCameraHost host;
        const auto streams = Get(Login(host.Add({})),
                                 "<streamURI><index>0</index></streamURI>"
                                 "<streamURI><index>1</index></streamURI>");
        ASSERT_TRUE(streams);
        EXPECT_EQ(streams->find("/Profile_2") != std::string::npos, *extensions != '\0');
    }
}

TEST(RealCameras, OfManyChannelsHaveAllOfThem) {
    const std::pair<const char*, int> cases[] = {{"", 0}, {"large-messages,per-source-alarms", 36}};
    for (const auto& [extensions, profiles] : cases) {
        SetVariable("ONVIF_CLIENT_EXTENSIONS", extensions);
        CAlarmObserver observer;
        const CStartedLibrary library;
        SetVariable("ONVIF_CLIENT_EXTENSIONS", nullptr);
        camera_sim::CCameraHost host;
        camera_sim::CCamera& recorder = host.Add({.model = "recorder", .channels = 18});
        const unsigned int id = Login(recorder);
        int streams = 0;
        int pictures = 0;
        for (int i = 0; i < 36; ++i) {
            const std::string index = "<index>" + std::to_string(i) + "</index>";
            const auto stream = Get(id, "<streamURI>" + index + "</streamURI>");
            const auto picture = Get(id, "<snapshotURI>" + index + "</snapshotURI>");
            streams += stream && At(*stream, "streamURI/uri").starts_with("rtsp://") ? 1 : 0;
            pictures += picture && picture->starts_with("\xFF\xD8") ? 1 : 0;
        }
        EXPECT_EQ(streams, profiles);
        EXPECT_EQ(pictures, profiles);
        ONVIF_CLIENT_AddAlarmStateObserver(id, &observer);
        for (const bool active : {true, false}) {
            recorder.Change([=](auto& state) { state.media.videoSources[6].motion = active; });
        }
        EXPECT_TRUE(observer.Hears(id, "M+M-")) << observer.Heard(id);
        ONVIF_CLIENT_DelAlarmStateObserver(id);
    }
}

}  // namespace
}  // namespace client_test
