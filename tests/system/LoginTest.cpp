#include <gtest/gtest.h>

#include "support/ClosedPort.h"
#include "support/System.h"
#include "system/Client.h"

namespace client_test {
namespace {

using camera_sim::CameraOptions;
using camera_sim::CCamera;
using camera_sim::Fault;
using camera_sim::HttpScheme;

class Login : public CCameraTest {};

/// "key=path key=path ..." as the session knows the services.
std::string Services(unsigned int id) {
    tinyxml2::XMLDocument document;
    document.Parse(Get(id, "<serviceUrl/>").value_or("").c_str());
    std::string services;
    const auto* list = document.RootElement()->FirstChildElement("serviceUrl");
    for (const auto* item = list->FirstChildElement(); item != nullptr;
         item = item->NextSiblingElement()) {
        const char* path = item->GetText();
        services += std::string(services.empty() ? "" : " ") + item->Attribute("service") + "=" +
                    (path == nullptr ? "" : path);
    }
    return services;
}

TEST_F(Login, FindsTheServicesOfEveryKindOfDevice) {
    const Fault refusal = {.kind = Fault::Kind::kSoapFault,
                           .soapFault = {.code = "Receiver", .subcode = "ActionNotSupported"}};
    const Fault slow = {
        .kind = Fault::Kind::kSegments, .bytes = 1, .pause = std::chrono::milliseconds(100)};
    const std::string analytics = "analytics=onvif/analytics_service ";
    const std::string device = "device=onvif/device_service deviceIO=onvif/deviceio_service ";
    const std::string events = "events=onvif/event_service ";
    const std::string imaging = "imaging=onvif/imaging_service ";
    const std::string media = "media=onvif/media_service";
    const std::string media2 = " media2=onvif/media2_service";
    const std::string ptz = " ptz=onvif/ptz_service";
    const struct {
        const char* what;
        std::string services;
        std::uint64_t capabilityRequests;
        CameraOptions options = {};
        const char* faulty = "";  // an operation that the device fails at
        Fault fault = {};
    } cases[] = {
        {"dome", analytics + device + imaging + media + media2 + ptz, 1},
        {"no later media service",
         analytics + device + imaging + media + ptz,
         1,
         {.media2 = false}},
        {"no earlier one",
         analytics + device + imaging + media2.substr(1) + ptz,
         2,
         {.media = false}},
        {"no imaging service", analytics + device + media, 2, {.model = "fixed", .imaging = false}},
        {"capabilities only",
         analytics + device + events + imaging + media,
         1,
         {.model = "fixed", .getServices = false}},
        {"single categories only",
         device + events + imaging + media,
         13,
         {.model = "fixed", .analytics = false, .getServices = false, .capabilitiesAll = false}},
        {"tells nothing",
         "device=onvif/device_service media=onvif/Media",
         13,
         {.model = "fixed", .getServices = false, .strictPaths = false},
         "GetCapabilities",
         refusal},
        {"a list that takes too long is given up",
         analytics + device + events + imaging + media,
         1,
         {.model = "fixed"},
         "GetServices",
         slow},
        {"addresses without a path",
         "analytics= device= deviceIO= imaging= media=",
         1,
         {.model = "fixed", .addressShape = "http://{host}:{port}"}},
    };
    for (const auto& each : cases) {
        CCamera& camera = host_.Add(each.options);
        camera.Inject(each.faulty, each.fault);
        const unsigned int id = client_test::Login(camera);
        ASSERT_NE(id, ONVIF_CLIENT_NO_LOGIN_ID) << each.what;
        EXPECT_EQ(Services(id), each.services) << each.what;
        EXPECT_EQ(camera.Count("GetCapabilities"), each.capabilityRequests) << each.what;
        EXPECT_EQ(camera.Count("tr2:GetProfiles"),
                  each.services.find("media2") != std::string::npos)
            << each.what;
        EXPECT_EQ(At(*Get(id, "<devInfo/>"), "devInfo/status"), "success") << each.what;
    }
}

TEST_F(Login, TellsWhyItFailed) {
    const Fault close = {.kind = Fault::Kind::kClose};
    const Fault garbage = {.kind = Fault::Kind::kGarbage, .bytes = 300};
    const Fault noXml = {.kind = Fault::Kind::kNoProlog};
    const Fault unauthorized = {.kind = Fault::Kind::kUnauthorized};
    // As devices do, the camera answers a fault of the sender with HTTP 400, one of its own with
    // 500.
    const Fault fault = {.kind = Fault::Kind::kSoapFault, .soapFault = {.code = "Receiver"}};
    const Fault senderFault = {.kind = Fault::Kind::kSoapFault};
    const struct {
        const char* operation;
        Fault fault;
        unsigned int error;
    } cases[] = {
        {"*", close, 5},
        {"GetSystemDateAndTime", garbage, 5},
        {"SetSystemDateAndTime", unauthorized, 401},
        {"SetSystemDateAndTime", close, 5},
        {"SetSystemDateAndTime", fault, 0},
        {"SetSystemDateAndTime", garbage, 0},
        {"SetSystemDateAndTime", noXml, 0},
        {"GetServices", close, 5},
        {"GetServices", garbage, 0},
        {"GetServices", unauthorized, 0},
        {"GetCapabilities", close, 5},
        {"GetCapabilities", garbage, 0},
        {"GetProfiles", close, 5},
        {"GetProfiles", garbage, 7},
        {"GetProfiles", noXml, 4},
        {"GetProfiles", unauthorized, 401},
        {"GetProfiles", fault, 0},
        {"GetProfiles", senderFault, 7},
        {"GetConfigurationOptions", close, 5},
        {"GetConfigurationOptions", garbage, 0},
        {"GetMoveOptions", close, 0},
    };
    for (const auto& each : cases) {
        CCamera& camera = host_.Add({});
        camera.Inject(each.operation, each.fault);
        unsigned int error = 99;
        const unsigned int id = LoginAt(camera.Port(), "camera-1", error);
        EXPECT_EQ(error, each.error) << each.operation << static_cast<int>(each.fault.kind);
        EXPECT_EQ(id == ONVIF_CLIENT_NO_LOGIN_ID, each.error != 0) << each.operation;
    }
}

/// What a login and the session afterwards come to: the status; of each command its result, and of
/// the requests that it sent the place and what stands in their bodies.
std::string Traits(const CameraOptions& options, const std::string& extensions,
                   const char* password = "camera-1", const char* faulty = "",
                   const Fault& fault = {}, std::uint64_t* capabilityRequests = nullptr) {
    SetVariable("ONVIF_CLIENT_EXTENSIONS", extensions.c_str());
    const CStartedLibrary library;
    SetVariable("ONVIF_CLIENT_EXTENSIONS", nullptr);
    camera_sim::CCameraHost host;
    CCamera& camera = host.Add(options);
    camera.Inject(faulty, fault);
    unsigned int error = 0;
    const unsigned int id = LoginAt(camera.Port(), password, error);
    std::string traits = std::to_string(error);
    if (capabilityRequests != nullptr) {
        *capabilityRequests = camera.Count("GetCapabilities");
    }
    camera.ClearEvidence();
    for (const char* command :
         {"<serviceUrl/>", "<profiles/>", "<devInfo/>", "<alarmin/>", "<eventProperties/>",
          "<streamURI><index>0</index></streamURI>",
          "<imageSettings><index>0</index></imageSettings>", "<osd><index>0</index></osd>"}) {
        traits += "\n" + Get(id, command).value_or("none");
    }
    Set(id, "<createPullPointSubscription/>");  // its result shows times
    for (const char* command : {"<focusMove><index>0</index><speed>3</speed></focusMove>",
                                "<continuousMove><index>0</index><pan>9</pan><tilt>-9</tilt>"
                                "<zoom>9</zoom></continuousMove>"}) {
        traits += "\n" + Set(id, command).value_or("none");
    }
    for (const auto& request : camera.Requests()) {
        const std::size_t body = request.body.find("<s:Body");
        traits += "\n" + request.path + " " + std::to_string(request.status) + " " +
                  (body == std::string::npos ? "" : request.body.substr(body));
    }
    const std::string port = ":" + std::to_string(camera.Port());
    for (std::size_t at = traits.find(port); at != std::string::npos; at = traits.find(port)) {
        traits.replace(at, port.size(), ":port");
    }
    return traits;
}

TEST(QuickLogin, LeavesTheSessionThatALoginLeaves) {
    const auto polite = camera_sim::KeepAlive::kPolite;
    const Fault close = {.kind = Fault::Kind::kClose};
    const Fault garbage = {.kind = Fault::Kind::kGarbage, .bytes = 300};
    const Fault unauthorized = {.kind = Fault::Kind::kUnauthorized};
    const Fault fault = {.kind = Fault::Kind::kSoapFault, .soapFault = {.code = "Receiver"}};
    const struct {
        CameraOptions camera;
        const char* password = "camera-1";
        const char* faulty = "";
        Fault fault = {};
        std::uint64_t capabilityRequests = 0;  // with it
    } cases[] = {
        {{.model = "dome"}},
        {{.model = "fixed"}},
        {{.model = "recorder", .channels = 3}},
        {{.model = "dome", .keepAlive = polite}},
        {{.model = "recorder", .keepAlive = camera_sim::KeepAlive::kAlways, .chunkBytes = 700}},
        {{.imaging = false, .keepAlive = polite}, "camera-1", "", {}, 1},
        {{.events = false, .keepAlive = polite}, "camera-1", "", {}, 1},
        {{.media = false}, "camera-1", "", {}, 1},
        {{.getServices = false}, "camera-1", "", {}, 1},
        {{.openOperations = {}}, "camera-1", "", {}, 1},
        {{.brokenMedia2 = true}},
        {{.strictClock = true}},
        {{.httpAuthentication = HttpScheme::kDigest, .keepAlive = polite}},
        {{.addressShape = "http://{host}:{port}"}},
        {{}, "wrong"},
        {{.openOperations = {}}, "wrong"},
        {{.strictClock = true, .keepAlive = polite}, "wrong"},
        {{.httpAuthentication = HttpScheme::kDigest}, "wrong"},
        {{}, "camera-1", "*", close},
        {{}, "camera-1", "GetSystemDateAndTime", garbage},
        {{}, "camera-1", "GetServices", close},
        {{}, "camera-1", "GetServices", garbage, 1},
        {{}, "camera-1", "GetServices", fault, 1},
        {{.events = false}, "camera-1", "GetCapabilities", close, 2},
        {{.events = false}, "camera-1", "GetCapabilities", garbage, 1},
        {{}, "camera-1", "GetProfiles", close},
        {{}, "camera-1", "GetProfiles", unauthorized},
        {{.events = false}, "camera-1", "GetProfiles", fault, 1},
        {{}, "camera-1", "GetConfigurationOptions", close},
        {{}, "camera-1", "GetConfigurationOptions", garbage},
        {{}, "camera-1", "GetMoveOptions", close},
        {{.clockOffset = std::chrono::hours(30), .clockRefusal = "failed"}},
    };
    const std::string bases[] = {
        "http-framing",
        "http-framing,large-messages,open-faults,keep-clock,http-digest,media-fallback,"
        "standard-requests,keep-alive"};
    for (const auto& each : cases) {
        for (const std::string& base : bases) {
            const auto traits = [&](const std::string& extensions, std::uint64_t* capabilities) {
                return Traits(each.camera, extensions, each.password, each.faulty, each.fault,
                              capabilities);
            };
            std::uint64_t capabilityRequests = 0;
            const std::string plain = traits(base, nullptr);
            EXPECT_EQ(traits(base + ",quick-login", &capabilityRequests), plain)
                << &each - cases << " " << base;
            if (plain.starts_with("0")) {
                EXPECT_EQ(capabilityRequests, each.capabilityRequests) << &each - cases;
            }
        }
    }
}

TEST_F(Login, ChecksCredentials) {
    CCamera& camera = host_.Add({});
    CCamera& open = host_.Add({.model = "fixed", .user = ""});
    CCamera& shy = host_.Add({.model = "fixed", .openOperations = {}});
    unsigned int error = 0;
    EXPECT_EQ(LoginAt(camera.Port(), "wrong", error), ONVIF_CLIENT_NO_LOGIN_ID);
    EXPECT_EQ(error, 401U);
    EXPECT_EQ(camera.Count("GetServices"), 0U);

    // A device that tells its clock only to those who can log in is asked again with credentials.
    EXPECT_EQ(LoginAt(shy.Port(), "camera-1", error), ONVIF_CLIENT_NO_LOGIN_ID);
    EXPECT_EQ(error, 401U);
    EXPECT_TRUE(shy.Requests().at(1).authenticated);

    // Without user and password nothing is signed.
    EXPECT_NE(
        ONVIF_CLIENT_Login(ONVIF_CLIENT_NO_LOGIN_ID, "127.0.0.1", open.Port(), "", "", &error),
        ONVIF_CLIENT_NO_LOGIN_ID);
    for (const auto& request : open.Requests()) {
        EXPECT_EQ(request.body.find("UsernameToken"), std::string::npos) << request.operation;
    }

    EXPECT_EQ(LoginAt(CClosedPort().Port(), "camera-1", error), ONVIF_CLIENT_NO_LOGIN_ID);
    EXPECT_EQ(error, 5U);
}

TEST_F(Login, SetsTheCamerasClockAndSignsByTheDevicesWhereItMust) {
    CCamera& late = host_.Add({.clockOffset = std::chrono::hours(-30)});
    ASSERT_NE(client_test::Login(late), ONVIF_CLIENT_NO_LOGIN_ID);
    EXPECT_LE(std::abs(late.State().clock.offset.count()), 60);
    EXPECT_EQ(late.State().clock.type, "Manual");

    // A clock that cannot be set: requests by the device's clock work, those by ours do not.
    CCamera& stubborn = host_.Add({.clockOffset = std::chrono::hours(30)});
    stubborn.Inject("SetSystemDateAndTime",
                    {.kind = Fault::Kind::kSoapFault, .soapFault = {.subcode = "InvalidDateTime"}});
    const unsigned int id = client_test::Login(stubborn);
    ASSERT_NE(id, ONVIF_CLIENT_NO_LOGIN_ID);
    EXPECT_TRUE(Get(id, "<profiles/>").has_value());
    EXPECT_FALSE(Get(id, "<devInfo/>").has_value());
}

TEST_F(Login, IdsCountSuccessfulLogins) {
    CCamera& camera = host_.Add({.model = "fixed"});
    const unsigned int first = client_test::Login(camera);
    unsigned int error = 77;
    LoginAt(camera.Port(), "wrong", error);
    const unsigned int second = client_test::Login(camera);
    EXPECT_EQ(second, first + 1);

    const auto known = [&](unsigned int id) {
        return ONVIF_CLIENT_Login(id, "x", 1, "x", "x", &error) == id;
    };
    camera.ClearEvidence();
    error = 77;
    EXPECT_TRUE(known(first));
    EXPECT_TRUE(ONVIF_CLIENT_Logout(first));
    EXPECT_TRUE(ONVIF_CLIENT_Logout(first));
    EXPECT_FALSE(known(first));
    EXPECT_TRUE(known(second));
    EXPECT_FALSE(known(second + 1));
    EXPECT_EQ(error, 77U);
    EXPECT_EQ(camera.Count("*"), 0U);
}

TEST_F(Login, NullAndUnknownArgumentsDoNoHarm) {
    CCamera& camera = host_.Add({.model = "fixed"});
    const unsigned int none = ONVIF_CLIENT_NO_LOGIN_ID;
    unsigned int error = 77;
    EXPECT_EQ(ONVIF_CLIENT_Login(none, nullptr, 80, "u", "p", &error), none);
    EXPECT_EQ(ONVIF_CLIENT_Login(none, "127.0.0.1", 80, nullptr, "p", &error), none);
    EXPECT_EQ(ONVIF_CLIENT_Login(none, "127.0.0.1", 80, "u", nullptr, &error), none);
    EXPECT_EQ(error, 77U);
    EXPECT_EQ(ONVIF_CLIENT_Login(none, "not an address", 80, "u", "p", nullptr), none);
    const unsigned int id =
        ONVIF_CLIENT_Login(none, "127.0.0.1", camera.Port(), "admin", "camera-1", nullptr);
    ASSERT_NE(id, none);

    char marker[] = "untouched";
    char* response = marker;
    int length = 5;
    EXPECT_TRUE(ONVIF_CLIENT_GetCfg(id + 1000, "<Get><devInfo/></Get>", response, &length));
    EXPECT_EQ(response, marker);
    EXPECT_EQ(length, 5);
    EXPECT_FALSE(ONVIF_CLIENT_SetCfg(id + 1000, "<Set><dns/></Set>", response));
    EXPECT_EQ(response, nullptr);

    for (const char* request : {static_cast<const char*>(nullptr), "", "<Get>", "garbage"}) {
        response = marker;
        EXPECT_FALSE(ONVIF_CLIENT_GetCfg(id, request, response, &length));
        EXPECT_EQ(response, nullptr);
        EXPECT_EQ(length, 0);
        EXPECT_FALSE(ONVIF_CLIENT_SetCfg(id, request, response));
    }
    EXPECT_TRUE(ONVIF_CLIENT_GetCfg(id, "<Get><devInfo/></Get>", response, nullptr));
    ONVIF_CLIENT_DelResponseBuff(response);
    EXPECT_EQ(response, nullptr);
    ONVIF_CLIENT_DelResponseBuff(response);

    EXPECT_TRUE(ONVIF_CLIENT_AddAlarmStateObserver(none, nullptr));
    ONVIF_CLIENT_DelAlarmStateObserver(none);
    EXPECT_TRUE(ONVIF_SEARCH_Initial(nullptr, nullptr, 0));
    EXPECT_TRUE(ONVIF_SEARCH_Set_Config(nullptr, nullptr));
    EXPECT_TRUE(ONVIF_SEARCH_StartManual());
}

}  // namespace
}  // namespace client_test
