#include <gtest/gtest.h>

#include <atomic>

#include "client/HttpClient.h"
#include "platform/Wirelink.h"
#include "support/MovedClock.h"
#include "support/ScriptedPeer.h"
#include "transform/MediaProfile.h"
#include "transform/ServiceAddresses.h"
#include "unit/Texts.h"

namespace onvif_client {
namespace {

using client_test::Reply;

std::string Service(const std::string& ns, const std::string& address) {
    return " d:Service{d:Namespace=" + ns + " d:XAddr='" + address + "'}";
}

TEST(ServiceAddresses, PathsOfAddresses) {
    const std::pair<const char*, const char*> cases[] = {
        {"http://192.168.1.10:80/onvif/media_service", "onvif/media_service"},
        {"http://[fe80::1]/onvif/x", "onvif/x"},
        {"http://192.168.1.10", ""},
        {"http://192.168.1.10/", ""},
        {"https://192.168.1.10/onvif/x", "https://192.168.1.10/onvif/x"},
        {" http://h/a/b\r\n", "a/b"},
        {"\tonvif/x ", "onvif/x"},
        {"", ""},
    };
    for (const auto& [address, path] : cases) {
        EXPECT_EQ(PathOfAddress(address), path) << address;
    }
}

TEST(ServiceAddresses, ServicesAreKnownByTheirNamespaces) {
    ServiceTable services;
    ReadServices(Reply("d:GetServicesResponse{" +
                       Service("http://www.onvif.org/ver10/device/wsdl", "http://h/dev") +
                       Service("http://www.onvif.org/ver10/media/wsdl", "http://h/m1") +
                       Service("http://www.onvif.org/ver20/media/wsdl", "http://h/m2") +
                       Service("http://www.onvif.org/ver10/events/wsdl", "http://h/ev") +
                       Service("http://www.onvif.org/ver20/ptz/wsdl", "http://h/ptz") +
                       Service("http://www.onvif.org/ver20/ptz/wsdl", "http://h/second") +
                       Service("http://www.onvif.org/ver10/deviceIO/wsdl", "http://h") +
                       Service("urn:unknown", "http://h/x") +
                       " d:Service{d:Namespace=http://x/replay/wsdl}}"),
                 services);
    EXPECT_EQ(services, (ServiceTable{{"device", "dev"},
                                      {"media", "m1"},
                                      {"media2", "m2"},
                                      {"ptz", "ptz"},
                                      {"deviceIO", ""}}));
}

TEST(ServiceAddresses, CapabilitiesTellServicesAndEventFlags) {
    const std::string capabilities =
        "d:GetCapabilitiesResponse{d:Capabilities{t:Media{t:XAddr=http://h/m} "
        "t:Events{t:XAddr=http://h/e t:WSSubscriptionPolicySupport=false t:WSPullPointSupport=1} "
        "t:PTZ t:Extension{t:DeviceIO{t:XAddr=http://h/io}}}}";
    ServiceTable services = {{"media", "kept"}};
    EventCapabilities events;
    ReadCapabilities(Reply(capabilities), services, events);
    EXPECT_EQ(services, (ServiceTable{{"media", "kept"}, {"events", "e"}, {"deviceIO", "io"}}));
    EXPECT_FALSE(events.subscriptionPolicySupport);
    EXPECT_TRUE(events.pullPointSupport);

    ServiceTable none;
    EventCapabilities defaults;
    ReadCapabilities(Reply("s:Fault " + capabilities), none, defaults);
    ReadCapabilities("garbage", none, defaults);
    EXPECT_TRUE(none.empty());
    EXPECT_TRUE(defaults.subscriptionPolicySupport);

    const auto categories = CapabilityCategories();
    ASSERT_EQ(categories.size(), 12U);
    EXPECT_EQ(ReadCapability(Reply(capabilities), categories[0]), "m");
    EXPECT_EQ(ReadCapability(Reply(capabilities), categories[1]), std::nullopt);
}

TEST(ServiceAddresses, AListWithCapabilitiesTellsOfEvents) {
    const std::string events =
        "d:GetServicesResponse{d:Service{d:Namespace=/ver10/media/wsdl} "
        "d:Service{d:Namespace=http://www.onvif.org/ver10/events/wsdl ";
    const std::string address = "d:XAddr=http://h/e ";
    const auto flags = [](const std::string& attributes) {
        return "d:Capabilities{v:Capabilities(" + attributes + ")}}}";
    };
    const std::pair<std::string, std::string> cases[] = {
        {address + flags("WSSubscriptionPolicySupport=true"), "e true true"},
        {address + flags("WSSubscriptionPolicySupport=0 WSPullPointSupport=false"),
         "e false false"},
        {flags("WSSubscriptionPolicySupport=true"), ""},
        {address + flags("MaxPullPoints=2"), ""},
        {address + "}}", ""},
    };
    for (const auto& [told, expected] : cases) {
        const auto read = ReadEventService(Reply(events + told));
        const auto word = [](bool flag) { return flag ? " true" : " false"; };
        EXPECT_EQ(read ? read->path + word(read->capabilities.subscriptionPolicySupport) +
                             word(read->capabilities.pullPointSupport)
                       : "",
                  expected)
            << told;
    }
    EXPECT_FALSE(ReadEventService("garbage"));
}

TEST(LoginRecords, ProfilesOfBothMediaServices) {
    ProfileList profiles(1);
    ASSERT_TRUE(ReadProfiles(
        Reply("m:GetProfilesResponse{m:Profiles(token=P0){t:VideoSourceConfiguration(token=V0){"
              "t:SourceToken=S0} t:VideoEncoderConfiguration(token=E0){t:Name=enc} "
              "t:PTZConfiguration(token=Z0) t:VideoAnalyticsConfiguration(token=A0)} "
              "m:Profiles(token=P1){m:Configurations{m:VideoSource(token=V1){t:SourceToken=S1} "
              "m:VideoEncoder(token=E1){t:Name=two} m:PTZ(token=Z1) m:Analytics(token=A1)}} "
              "m:Profiles}"),
        profiles));
    ASSERT_EQ(profiles.size(), 3U);
    const auto all = [](const MediaProfile& p) {
        return p.token + p.videoSourceToken + p.videoSourceConfigurationToken +
               p.videoEncoderConfigurationToken + p.videoEncoderConfigurationName +
               p.ptzConfigurationToken + p.videoAnalyticsConfigurationToken;
    };
    EXPECT_EQ(all(profiles[0]), "P0S0V0E0encZ0A0");
    EXPECT_EQ(all(profiles[1]), "P1S1V1E1twoZ1A1");
    EXPECT_EQ(all(profiles[2]), "");

    EXPECT_FALSE(ReadProfiles(Reply("s:Fault"), profiles));
    EXPECT_EQ(profiles.size(), 3U);
    EXPECT_TRUE(ReadProfiles("cut off", profiles));
    EXPECT_TRUE(profiles.empty());
}

TEST(LoginRecords, OptionsKeepTheirDefaultsWhereADeviceSaysNothing) {
    PtzRanges ranges;
    ReadPtzRanges(Reply("p:GetConfigurationOptionsResponse{p:PTZConfigurationOptions{t:Spaces{t:"
                        "ContinuousPanTiltVelocitySpace{t:XRange{t:Min=-5 t:Max=5.9}} "
                        "t:ContinuousZoomVelocitySpace{t:XRange{t:Min=0.5}}}}}"),
                  ranges);
    EXPECT_EQ(ranges.pan.minimum, -5);
    EXPECT_EQ(ranges.pan.maximum, 5);
    EXPECT_EQ(ranges.tilt.minimum, -1);
    EXPECT_EQ(ranges.tilt.maximum, 1);
    EXPECT_EQ(ranges.zoom.minimum, 0);
    EXPECT_EQ(ranges.zoom.exactMinimum, 0.5);
    EXPECT_EQ(ranges.pan.exactMaximum, 5.9);

    FocusSpeedRange focus;
    ReadFocusSpeedRange(
        Reply(
            "i:GetMoveOptionsResponse{i:MoveOptions{t:Continuous{t:Speed{t:Min=-7.5 t:Max=7.5}}}}"),
        focus);
    EXPECT_EQ(focus.minimum + focus.maximum, "-7.57.5");
}

TEST(Login, EndsWithoutAReplyOnceItsExchangesHaveTakenFortySeconds) {
    // An answer to all of the eight. Without a reply to the 2nd, 6th or 8th, a login goes on.
    const std::string reply = Reply(
        "GetServicesResponse{" + Service("/ver10/media/wsdl", "") + Service("/imaging/wsdl", "") +
        "} GetProfilesResponse{Profiles(token=P){VideoSourceConfiguration{SourceToken=S}}}");
    // How long the first takes, which is silent, the status, how many come, how long the list of
    // services is.
    const unsigned int cases[][5] = {
        {39999, 2, 0, 8, 0}, {40000, 2, 5, 2, 0}, {40000, 6, 5, 6, 0},  {39999, 8, 0, 8, 0},
        {40000, 8, 5, 8, 0}, {90000, 9, 0, 8, 0}, {0, 99, 0, 8, 30720}, {0, 99, 0, 19, 30721}};
    for (const auto& each : cases) {
        client_test::CMovedClock clock;
        const CScopedClock replaced(clock);
        std::atomic<unsigned int> exchanges = 0;
        client_test::CScriptedPeer peer([&](client_test::CPeerConnection& connection) {
            connection.Read(1);
            clock.ticks += ++exchanges == 1 ? each[0] : 0;
            std::string sent = exchanges == each[1] ? "" : reply;
            if (exchanges == 4 && sent.size() < each[4]) {
                sent.insert(sent.rfind("</"), each[4] - sent.size(), ' ');
            }
            connection.Send(sent);
        });
        WIRELINK_Initial(1, 1, nullptr, 0);
        EXPECT_EQ(CHttpClient("u", "p", "127.0.0.1", peer.Port()).Login(), each[2]) << each[1];
        EXPECT_EQ(exchanges, each[3]) << each[0] << " " << each[1];
        WIRELINK_Quit();
    }
}

}  // namespace
}  // namespace onvif_client
