#include <gtest/gtest.h>

#include "system/Client.h"

namespace client_test {
namespace {

using camera_sim::CameraOptions;
using camera_sim::CCamera;
using camera_sim::Fault;
using camera_sim::HttpScheme;

class Snapshots : public CCameraTest {
 protected:
    /// The bytes of a Get request's answer; "(failed)" when it failed.
    static std::string Fetch(unsigned int id, const std::string& commands) {
        char* response = nullptr;
        int length = -1;
        const bool success =
            ONVIF_CLIENT_GetCfg(id, ("<Get>" + commands + "</Get>").c_str(), response, &length);
        std::string bytes = success ? std::string(response == nullptr ? "" : response,
                                                  static_cast<std::size_t>(length))
                                    : "(failed)";
        ONVIF_CLIENT_DelResponseBuff(response);
        return bytes;
    }
    static bool IsJpeg(const std::string& bytes) {
        return bytes.starts_with("\xFF\xD8") && bytes.ends_with("\xFF\xD9");
    }

    static constexpr const char* kFirst = "<snapshotURI><index>0</index></snapshotURI>";
};

TEST_F(Snapshots, ComeWhateverTheCameraAsksFor) {
    CameraOptions options[] = {
        {.snapshotAuthentication = HttpScheme::kNone},
        {.snapshotAuthentication = HttpScheme::kBasic},
        {.snapshotAuthentication = HttpScheme::kDigest},
        {.snapshotAuthentication = HttpScheme::kDigest},
        {.model = "fixed"},
    };
    options[3].snapshotRealm = "hall, \"north\"";
    options[3].snapshotQop = "auth,auth-int";
    for (CameraOptions& each : options) {
        CCamera& camera = host_.Add(each);
        const unsigned int id = Login(camera);
        const bool open = each.snapshotAuthentication == HttpScheme::kNone;
        EXPECT_TRUE(IsJpeg(Fetch(id, kFirst)));
        EXPECT_EQ(camera.Count("http:snapshot"), open ? 1U : 2U);
    }
}

TEST_F(Snapshots, EndTheRequestAndChooseAProfile) {
    CCamera& camera = host_.Add({});
    const unsigned int id = Login(camera);
    const std::string first = Fetch(id, kFirst);
    const std::string third =
        Fetch(id, "<devInfo/><snapshotURI><index>2</index></snapshotURI><dns/>");
    EXPECT_TRUE(IsJpeg(third));
    EXPECT_LT(third.size(), first.size());  // of a smaller stream
    EXPECT_EQ(camera.Count("GetDNS"), 0U);
    EXPECT_EQ(Fetch(id, "<snapshotURI><index>3</index></snapshotURI>"), "(failed)");
    EXPECT_EQ(Fetch(id, "<snapshotURI/>"), "(failed)");

    camera.Inject("GetSnapshotUri", {.kind = Fault::Kind::kClose, .remaining = 1});
    EXPECT_EQ(Fetch(id, kFirst), "(failed)");
    camera.Inject("GetSnapshotUri",
                  {.kind = Fault::Kind::kRawReply,
                   .remaining = 1,
                   .reply = "HTTP/1.1 200 OK\r\n\r\n<?xml?><s:Envelope><s:Body><s:Fault/></s:Body>"
                            "</s:Envelope>"});
    EXPECT_EQ(Fetch(id, kFirst), "(failed)");  // no address
    camera.Inject("http:snapshot", {.kind = Fault::Kind::kUnauthorized});
    EXPECT_EQ(Fetch(id, kFirst), "");  // tried without success
}

}  // namespace
}  // namespace client_test
