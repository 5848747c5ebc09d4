// What troublesome cameras do, and the extensions that help with each.
#include <gtest/gtest.h>

#include <cstdlib>

#include "system/AlarmObserver.h"
#include "system/Client.h"

namespace client_test {
namespace {

using camera_sim::CameraOptions;
using camera_sim::HttpScheme;

/// The library as it is with these extensions, and one camera.
class CUsedCamera {
 public:
    CUsedCamera(const CameraOptions& options, const char* extensions)
        : extensionsSet_(setenv("ONVIF_CLIENT_EXTENSIONS", extensions, 1)),
          camera_(host_.Add(options)) {}
    ~CUsedCamera() { unsetenv("ONVIF_CLIENT_EXTENSIONS"); }
    CUsedCamera(const CUsedCamera&) = delete;
    CUsedCamera& operator=(const CUsedCamera&) = delete;

    /// How many requests a login takes.
    std::uint64_t LogIn(const char* user) {
        unsigned int error = 0;
        id_ = ONVIF_CLIENT_Login(ONVIF_CLIENT_NO_LOGIN_ID, "127.0.0.1", camera_.Port(), user,
                                 "camera-1", &error);
        return camera_.Count("*");
    }
    /// L: it is logged in, D: tells of itself, S: gives a stream, P: a picture, A: an alarm.
    std::string Works(bool alarms) {
        const std::string first = "<index>0</index>";
        if (id_ == ONVIF_CLIENT_NO_LOGIN_ID) {
            return "";
        }
        std::string works = "L";
        const auto device = Get(id_, "<devInfo/>");
        works += device && At(*device, "devInfo/status") == "success" ? "D" : "-";
        const auto stream = Get(id_, "<streamURI>" + first + "</streamURI>");
        works += stream && At(*stream, "streamURI/uri").starts_with("rtsp://") ? "S" : "-";
        const auto picture = Get(id_, "<snapshotURI>" + first + "</snapshotURI>");
        works += picture && picture->starts_with("\xFF\xD8") ? "P" : "-";
        return alarms ? works + (Alarms() ? "A" : "-") : works;
    }

 private:
    bool Alarms() {
        CAlarmObserver observer;
        const bool added = ONVIF_CLIENT_AddAlarmStateObserver(id_, &observer);
        SetMotion(camera_, true);
        const bool heard = added && observer.Hears(id_, "M+");
        ONVIF_CLIENT_DelAlarmStateObserver(id_);
        return heard;
    }

    const int extensionsSet_;  // before the library reads it
    CStartedLibrary library_;
    camera_sim::CCameraHost host_;
    camera_sim::CCamera& camera_;
    unsigned int id_ = ONVIF_CLIENT_NO_LOGIN_ID;
};

TEST(RealCameras, NeedTheirExtensions) {
    CameraOptions once = {.httpAuthentication = HttpScheme::kDigest, .httpNonceUses = 1};
    const struct {
        CameraOptions camera;
        const char* extension;
        const char* literally;
        const char* extended = "LDSPA";
        const char* user = "admin";
    } cases[] = {
        {{.clockOffset = std::chrono::hours(30), .clockRefusal = "prohibited"},
         "keep-clock",
         "L-S-"},
        {{.openOperations = {}, .clockOffset = std::chrono::hours(-30), .httpDate = true},
         "keep-clock",
         ""},
        {{.accounts = {{"op", "camera-1", camera_sim::Role::kOperator}}},
         "keep-clock",
         "",
         "LDSPA",
         "op"},
        {once, "http-digest", ""},
        {{.httpAuthentication = HttpScheme::kDigestSha256,
          .snapshotAuthentication = HttpScheme::kDigestSha256},
         "http-digest",
         ""},
        {{.httpAuthentication = HttpScheme::kDigestEither, .httpQop = ""}, "http-digest", ""},
        {{.httpAuthentication = HttpScheme::kBasic}, "http-digest", "", ""},
        {{.brokenMedia2 = true}, "media-fallback", "LD--"},
        {{.media = false}, "media-fallback", "LD--"},
        {{.media = false,
          .openOperations = {},
          .httpAuthentication = HttpScheme::kDigestSha256,
          .clockOffset = std::chrono::hours(30)},
         "all",
         ""},
        {{.snapshotAuthentication = HttpScheme::kBasic}, "no-basic", "LDSP", "LDS-A"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        CUsedCamera literal(each.camera, "");
        literal.LogIn(each.user);
        EXPECT_EQ(literal.Works(false), each.literally);
    }
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        CUsedCamera extended(each.camera, each.extension);
        extended.LogIn(each.user);
        EXPECT_EQ(extended.Works(true), each.extended);
    }
}

TEST(RealCameras, TakeFewerExchangesWhereTheirClockIsKept) {
    EXPECT_EQ(CUsedCamera({}, "").LogIn("admin"), 9U);
    EXPECT_EQ(CUsedCamera({}, "keep-clock").LogIn("admin"), 6U);
}

}  // namespace
}  // namespace client_test
