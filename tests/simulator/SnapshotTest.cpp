// The pictures of the simulated camera: who gets them, and what they show.
#include <gtest/gtest.h>
#include <turbojpeg.h>

#include <string>
#include <vector>

#include "Exchange.h"
#include "camera_sim/CameraSim.h"
#include "camera_sim/picture/Snapshot.h"
#include "platform/Digests.h"

namespace {

using camera_sim::HttpScheme;

std::string Sha256(const std::string& text) {
    return onvif_client::LowerHex(onvif_client::Sha256(onvif_client::Bytes(text)).value());
}
std::string Md5(const std::string& text) {
    return onvif_client::LowerHex(onvif_client::Md5(onvif_client::Bytes(text)).value());
}

/// What stands between the quotes after @p name.
std::string Quoted(const std::string& text, const std::string& name) {
    return Between(text, name + "=\"", "\"");
}

/// What a client answers to a Digest challenge, with room for mistakes.
struct Digest {
    std::string user = "admin";
    std::string password = "camera-1";
    std::string realm = "Hall, north";
    std::string uri = "/snapshot/Profile_1?size=full";
    std::string qop = "auth";
    std::string nc = "00000001";
    std::string cnonce = "0a4f113b";
    std::string nonce{};  // empty: the challenge's
    std::string extra{};  // further fields, with a comma in front
    std::string scheme = "Digest ";
    std::string method = "GET";
    std::string body{};
    std::string (*hash)(const std::string&) = Md5;

    std::string Response(const std::string& usedNonce) const {
        const std::string bodyHash = qop == "auth-int" ? ":" + hash(body) : "";
        const std::string middle = qop.empty() ? ":" : ":" + nc + ":" + cnonce + ":" + qop + ":";
        return hash(hash(user + ":" + realm + ":" + password) + ":" + usedNonce + middle +
                    hash(method + ":" + uri + bodyHash));
    }

    std::string Header(const std::string& challengeNonce) const {
        const std::string used = nonce.empty() ? challengeNonce : nonce;
        std::string text = scheme + "username=\"" + user + "\", realm=\"" + realm + "\",nonce=\"" +
                           used + "\", uri=\"" + uri + "\", response=\"" + Response(used) + "\"";
        if (!qop.empty()) text += ", qop=" + qop + ", nc=" + nc + ", cnonce=\"" + cnonce + "\"";
        return text + extra;
    }
};

std::string Get(const camera_sim::CCamera& camera, const std::string& authorization = "",
                const std::string& target = "/snapshot/Profile_1?size=full") {
    const std::string field =
        authorization.empty() ? "" : "Authorization: " + authorization + "\r\n";
    return Exchange(camera.Port(), "GET " + target + " HTTP/1.1\r\nHost: c\r\n" + field + "\r\n");
}

bool HasPicture(const std::string& reply) {
    return reply.starts_with("HTTP/1.1 200 OK\r\n") &&
           Contains(reply, "\r\nContent-Type: image/jpeg\r\n");
}

TEST(Snapshot, ChecksDigestCredentials) {
    struct Case {
        const char* name;
        Digest digest;
        const char* refusal;  // null: accepted
        bool stale = false;
        const char* offered = "auth, auth-int";
        HttpScheme scheme = HttpScheme::kDigest;
        const char* algorithms = "MD5 ";  // of the challenges
    };
    const std::string sha = ", algorithm=SHA-256";
    const auto kSha = HttpScheme::kDigestSha256;
    const std::vector<Case> cases = {
        {"right", {}, nullptr},
        {"right with protected body", {.qop = "auth-int"}, nullptr},
        {"right without any qop", {.qop = ""}, nullptr, false, "", HttpScheme::kDigest, ""},
        {"right in other words", {.extra = " , Algorithm=\"md5\"", .scheme = "dIGEST  "}, nullptr},
        {"other password", {.password = "camera-2"}, "wrong response"},
        {"other password and nonce", {.password = "x", .nonce = "0"}, "wrong response"},
        {"nonce of another camera", {.nonce = "0"}, "unknown nonce", true},
        {"other user", {.user = "root"}, "unknown user"},
        {"realm cut at its comma", {.realm = "Hall"}, "another realm"},
        {"uri without its query", {.uri = "/snapshot/Profile_1"}, "another uri"},
        {"other opaque", {.extra = ", opaque=\"0\""}, "another opaque"},
        {"SHA-256", {.extra = sha, .hash = Sha256}, nullptr, false, "auth", kSha, "SHA-256 "},
        {"one of two", {}, nullptr, false, "auth", HttpScheme::kDigestEither, "SHA-256 MD5 "},
        {"MD5 for SHA-256", {}, "another algorithm", false, "auth", kSha, "SHA-256 "},
        {"other algorithm", {.extra = sha}, "another algorithm"},
        {"qop that was not offered", {.qop = "auth-int"}, "qop not offered", false, "auth"},
        {"qop left out", {.qop = ""}, "qop not offered"},
        {"no cnonce", {.cnonce = ""}, "no cnonce"},
        {"short nonce count", {.nc = "1"}, "no readable nonce count"},
        {"field twice", {.extra = ", realm=\"Hall, north\""}, "unreadable credentials"},
        {"open quote", {.extra = ", opaque=\"0"}, "unreadable credentials"},
        {"no fields", {.scheme = "Digest"}, "another scheme"},
        {"other scheme", {.scheme = "Basic "}, "another scheme"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        camera_sim::CCameraHost host;
        camera_sim::CCamera& camera = host.Add({.snapshotAuthentication = test.scheme,
                                                .snapshotRealm = "Hall, north",
                                                .snapshotQop = test.offered});
        const std::string challenge = Get(camera);
        EXPECT_TRUE(challenge.starts_with("HTTP/1.1 401 Unauthorized\r\n"));
        EXPECT_EQ(Quoted(challenge, "realm"), "Hall, north");
        EXPECT_EQ(Quoted(challenge, "qop"), test.offered);
        std::string algorithms;
        for (auto at = challenge.find("algorithm="); at != std::string::npos;
             at = challenge.find("algorithm=", at + 1))
            algorithms += Between(challenge.substr(at), "=", ",") + " ";
        EXPECT_EQ(algorithms, test.algorithms);
        const std::string reply = Get(camera, test.digest.Header(Quoted(challenge, " nonce")));
        EXPECT_EQ(HasPicture(reply), test.refusal == nullptr);
        EXPECT_EQ(Contains(reply, "stale=true"), test.stale);
        const auto requests = camera.Requests();
        ASSERT_EQ(requests.size(), 2U);
        EXPECT_EQ(requests[0].refusal, "");
        EXPECT_EQ(requests[1].refusal, test.refusal == nullptr ? "" : test.refusal);
        EXPECT_EQ(requests[1].authenticated, test.refusal == nullptr);
    }
}

// What the table above says of pictures holds for services: the check is the same.
TEST(Services, AskForHttpCredentialsInPlaceOfTokens) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add({.httpAuthentication = HttpScheme::kDigestSha256,
                                            .httpRealm = "Hall, north",
                                            .httpQop = "auth,auth-int"});
    const auto post = [&](const std::string& operation, const std::string& password,
                          const std::string& authorized = "GetDeviceInformation") {
        const std::string path = "/onvif/device_service";
        const std::string body = Envelope(kDeviceNamespace, operation);
        const std::string challenge =
            Exchange(camera.Port(), Http("POST", path, Envelope(kDeviceNamespace, "GetUsers")));
        EXPECT_TRUE(challenge.starts_with("HTTP/1.1 401 ") && challenge.ends_with("\r\n\r\n"));
        const Digest digest = {.password = password,
                               .uri = path,
                               .qop = "auth-int",
                               .extra = ", algorithm=SHA-256",
                               .method = "POST",
                               .body = Envelope(kDeviceNamespace, authorized),
                               .hash = Sha256};
        const std::string credentials = digest.Header(Quoted(challenge, " nonce"));
        const std::string reply = Exchange(
            camera.Port(), Http("POST", path, body, "Authorization: " + credentials + "\r\n"));
        return Contains(reply, operation + "Response");
    };
    EXPECT_TRUE(post("GetDeviceInformation", "camera-1"));
    EXPECT_FALSE(post("GetDeviceInformation", "camera-2"));
    EXPECT_FALSE(post("GetDNS", "camera-1")) << "the body is another one";
    EXPECT_TRUE(post("GetSystemDateAndTime", "camera-2")) << "whoever asks";
}

TEST(Snapshot, WearsNoncesOut) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& twice = host.Add({.snapshotRealm = "Hall, north", .snapshotNonceUses = 2});
    const std::string nonce = Quoted(Get(twice), " nonce");
    EXPECT_TRUE(HasPicture(Get(twice, Digest{}.Header(nonce))));
    EXPECT_TRUE(Contains(Get(twice, Digest{}.Header(nonce)), "stale=true"));
    EXPECT_EQ(twice.Requests().back().refusal, "nonce count used before");
    EXPECT_TRUE(HasPicture(Get(twice, Digest{.nc = "0000000A"}.Header(nonce))));
    const std::string worn = Get(twice, Digest{.nc = "0000000b"}.Header(nonce));
    EXPECT_EQ(twice.Requests().back().refusal, "outdated nonce");
    const std::string fresh = Quoted(worn, " nonce");
    EXPECT_NE(fresh, nonce);
    EXPECT_TRUE(HasPicture(Get(twice, Digest{}.Header(fresh))));

    camera_sim::CCamera& brief = host.Add(
        {.snapshotRealm = "Hall, north", .snapshotNonceLifetime = std::chrono::seconds(0)});
    EXPECT_TRUE(Contains(Get(brief, Digest{}.Header(Quoted(Get(brief), " nonce"))), "stale=true"));
}

TEST(Snapshot, ChecksBasicCredentialsOrNone) {
    struct Case {
        const char* name;
        camera_sim::CameraOptions options;
        const char* authorization;
        const char* refusal;  // null: accepted
    };
    const std::string digest = Digest{}.Header("0");
    const std::vector<Case> cases = {
        {"open", {.snapshotAuthentication = HttpScheme::kNone}, "", nullptr},
        {"no user", {.user = ""}, "", nullptr},
        {"right", {.model = "fixed"}, "Basic YWRtaW46Y2FtZXJhLTE=", nullptr},
        {"none", {.model = "fixed"}, "", ""},
        {"other password", {.model = "fixed"}, "Basic YWRtaW46Y2FtZXJhLTI=", "wrong password"},
        {"other user", {.model = "fixed"}, "Basic cm9vdDpjYW1lcmEtMQ==", "unknown user"},
        {"not Base64", {.model = "fixed"}, "Basic ???", "unreadable credentials"},
        {"no colon", {.model = "fixed"}, "Basic YWRtaW4=", "unreadable credentials"},
        {"Digest", {.model = "fixed"}, digest.c_str(), "another scheme"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        camera_sim::CCameraHost host;
        camera_sim::CCamera& camera = host.Add(test.options);
        const std::string reply = Get(camera, test.authorization);
        EXPECT_EQ(HasPicture(reply), test.refusal == nullptr);
        EXPECT_EQ(Contains(reply, "\r\nWWW-Authenticate: Basic realm=\"onvif-camera-sim\"\r\n"),
                  test.refusal != nullptr);
        EXPECT_EQ(camera.Requests().back().refusal, test.refusal == nullptr ? "" : test.refusal);
    }
}

TEST(Snapshot, MeetsFaultsAndUnknownPictures) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add({.user = ""});
    using Kind = camera_sim::Fault::Kind;
    camera.Inject("http:snapshot", {.kind = Kind::kUnauthorized, .remaining = 1});
    camera.Inject("snapshot", {.kind = Kind::kTruncate, .remaining = 1, .bytes = 12});
    const std::string bare = Get(camera);
    EXPECT_TRUE(bare.starts_with("HTTP/1.1 401 Unauthorized\r\n"));
    EXPECT_FALSE(Contains(bare, "WWW-Authenticate"));
    EXPECT_EQ(Get(camera), "HTTP/1.1 200");
    EXPECT_TRUE(Get(camera, "", "/snapshot/Profile_9").starts_with("HTTP/1.1 404 Not Found\r\n"));
    EXPECT_TRUE(Get(camera, "", "/snapshot/").starts_with("HTTP/1.1 404 Not Found\r\n"));
    camera.Change([](auto& state) { state.media.profiles[0].videoEncoder.clear(); });
    EXPECT_TRUE(Get(camera).starts_with("HTTP/1.1 404 Not Found\r\n"));
    EXPECT_EQ(camera.Count("http:snapshot"), 5U);
}

struct Pixel {
    int red, green, blue;
};

/// A picture as a viewer sees it; empty when the file is damaged.
struct Decoded {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> pixels;

    Pixel At(int x, int y) const {
        const auto at = static_cast<std::size_t>(y * width + x) * 3;
        return {pixels[at], pixels[at + 1], pixels[at + 2]};
    }
};

Decoded Decode(const std::string& file) {
    const tjhandle codec = tjInitDecompress();
    const auto* start = reinterpret_cast<const unsigned char*>(file.data());
    const auto size = static_cast<unsigned long>(file.size());
    Decoded picture;
    int sampling = 0;
    int colours = 0;
    bool whole = tjDecompressHeader3(codec, start, size, &picture.width, &picture.height, &sampling,
                                     &colours) == 0;
    picture.pixels.resize(static_cast<std::size_t>(picture.width * picture.height) * 3);
    whole = whole && tjDecompress2(codec, start, size, picture.pixels.data(), picture.width, 0,
                                   picture.height, TJPF_RGB, TJFLAG_STOPONWARNING) == 0;
    tjDestroy(codec);
    return whole ? picture : Decoded{};
}

bool IsAim(Pixel pixel) {
    return pixel.red > 180 && pixel.green < 130 && pixel.blue < 110;
}

TEST(Snapshot, ShowsTheEncodersPictureAndWhereTheDomeLooks) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add({.user = ""});
    const auto take = [&camera](const std::string& profile) {
        const std::string reply = Get(camera, "", "/snapshot/" + profile);
        const auto head = reply.find("\r\n\r\n");
        EXPECT_TRUE(
            Contains(reply, "\r\nContent-Length: " + std::to_string(reply.size() - head - 4)));
        return Decode(reply.substr(head + 4));
    };
    // 2560 by 1440 is shown at a quarter, 352 by 288 as it is.
    const Decoded ahead = take("Profile_1");
    ASSERT_EQ(std::pair(ahead.width, ahead.height), std::pair(640, 360));
    const Decoded small = take("Profile_3");
    EXPECT_EQ(std::pair(small.width, small.height), std::pair(352, 288));

    camera.Change([](auto& state) { state.ptz.start = {-0.5, 0.5, 1}; });
    const Decoded aside = take("Profile_1");
    ASSERT_EQ(aside.width, 640);
    EXPECT_TRUE(IsAim(ahead.At(320, 179)));
    EXPECT_FALSE(IsAim(aside.At(320, 179)));
    EXPECT_TRUE(IsAim(aside.At(160, 90)));
    EXPECT_FALSE(IsAim(ahead.At(160, 90)));
    // Zoomed in, the ring is a quarter of the height away.
    EXPECT_TRUE(IsAim(aside.At(160 + 64, 90 + 64)));
}

TEST(Snapshot, NothingACardSaysLiesOutsideItsPicture) {
    camera_sim::TestCard odd{.size = {1, 1}, .brightness = 1e9, .cameraName = "\xC3\xA4\xFF"};
    odd.texts = {{std::string(1000, 'x'), 9, -9}};
    odd.position = camera_sim::PtzPosition{1e300, -7, 50};
    odd.motion = camera_sim::MotionCells{100000, -1, {}};
    EXPECT_EQ(camera_sim::Draw(odd).pixels.size(), 3U);
    const camera_sim::Resolution narrow = camera_sim::CardSize({100000, 0});
    EXPECT_EQ(std::pair(narrow.width, narrow.height), std::pair(640, 1));
}

TEST(Snapshot, ReportsPicturesThatCannotBeCompressed) {
    EXPECT_FALSE(camera_sim::CompressJpeg(camera_sim::Picture({70000, 1}), 80));
    EXPECT_TRUE(camera_sim::CompressJpeg(camera_sim::Picture({1, 1}), 100));
}

}  // namespace
