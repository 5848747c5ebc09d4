// What clients of all kinds ask a camera for, and that what one operation sets another one shows.
#include <gtest/gtest.h>

#include <regex>
#include <sstream>
#include <string>

#include "Exchange.h"
#include "camera_sim/CameraSim.h"

namespace {

constexpr const char* kOsd =
    "<VideoSourceConfigurationToken>VideoSourceConfig_1</VideoSourceConfigurationToken>"
    "<Type>Text</Type><Position><Type>UpperLeft</Type></Position><TextString><Type>Plain</Type>";

/// Each line is an exchange: "VERSION/NAMESPACE/SERVICE OPERATION | CONTENT | PART OF THE ANSWER".
void Check(const camera_sim::CCamera& camera, const std::string& table) {
    static const std::regex kRow(R"( *(\S+)/(\S+) (\S+) \| (.*) ?\| (.*))");
    std::istringstream lines(table);
    for (std::string line; std::getline(lines, line);) {
        SCOPED_TRACE(line);
        line =
            std::regex_replace(line, std::regex("<P/>"), "<ProfileToken>Profile_1</ProfileToken>");
        line = std::regex_replace(line, std::regex("<O/>"), kOsd);
        std::smatch row;
        ASSERT_TRUE(std::regex_match(line, row, kRow));
        const std::string body =
            Envelope("http://www.onvif.org/" + row.str(1) + "/wsdl", row.str(3), row.str(4));
        const std::string reply =
            Exchange(camera.Port(), Http("POST", "/onvif/" + row.str(2) + "_service", body));
        EXPECT_TRUE(Contains(reply, row.str(5))) << reply;
    }
}

TEST(CameraOperations, ShowWhatOthersSet) {
    camera_sim::CCameraHost host;
    const camera_sim::CCamera& dome = host.Add({.user = ""});
    Check(dome, R"(ver10/device/device GetServiceCapabilities | | <tds:Network 
        ver10/events/event GetServiceCapabilities | | <tev:Capabilities 
        ver20/media/media2 GetServiceCapabilities | | OSD="true"
        ver10/device/device SetNTP | <FromDHCP>1</FromDHCP><NTPManual><Type>DNS</Type></NTPManual> | ter:InvalidDnsName
        ver10/device/device GetNTP | | <tt:NTPManual><tt:Type>IPv4</tt:Type><tt:IPv4Address>192.0.2.5<
        ver10/device/device SetHostname | <Name>a b</Name> | ter:InvalidHostname
        ver10/device/device SetHostname | <Name>yard</Name> | SetHostnameResponse
        ver10/device/device GetScopes | | onvif://www.onvif.org/name/yard<
        ver10/device/device GetUsers | | GetUsersResponse
        ver10/deviceIO/deviceio SetDigitalInputConfigurations | <DigitalInputs token='Input_2' IdleState='closed'/> | Response
        ver10/deviceIO/deviceio GetDigitalInputs | | token="Input_2" IdleState="closed"
        ver10/deviceIO/deviceio GetVideoSources | | <tmd:Token>VideoSource_1<
        ver10/media/media GetVideoSources | | <trt:VideoSources token="VideoSource_1"><tt:Framerate>30<
        ver10/media/media GetAudioSources | | <trt:AudioSources token="AudioSource_1">
        ver10/media/media GetVideoEncoderConfigurations | | <trt:Configurations token="VideoEncoder_3"
        ver10/media/media GetVideoEncoderConfigurationOptions | <P/> | <tt:Width>2560<
        ver20/media/media2 GetVideoEncoderConfigurationOptions | <ProfileToken>no</ProfileToken> | ter:NoProfile
        ver20/media/media2 GetVideoEncoderConfigurations | <P/> | Response><tr2:Configurations token="VideoEncoder_1"
        ver20/media/media2 GetStreamUri | <Protocol>RtspUnicast</Protocol><P/> | <tr2:Uri>rtsp://127.0.0.1:554/stream/Profile_1<
        ver20/media/media2 CreateOSD | <OSD token=''><O/><PlainText>one</PlainText></TextString></OSD> | <tr2:OSDToken>OSD_2<
        ver10/media/media SetOSD | <OSD token='OSD_2'><O/><PlainText>two</PlainText></TextString></OSD> | SetOSDResponse
        ver20/media/media2 GetOSDs | <OSDToken>OSD_2</OSDToken> | <tr2:GetOSDsResponse><tr2:OSDs token="OSD_2"
        ver20/media/media2 GetOSDs | | <tt:PlainText>two<
        ver20/media/media2 DeleteOSD | <OSDToken>OSD_2</OSDToken> | DeleteOSDResponse
        ver10/media/media GetOSD | <OSDToken>OSD_2</OSDToken> | ter:NoConfig
        ver20/analytics/analytics GetSupportedRules | <ConfigurationToken>Analytics_1</ConfigurationToken> | Name="tt:CellMotionDetector"
        ver20/ptz/ptz GetNode | <NodeToken>PtzNode_1</NodeToken> | <tt:HomeSupported>true<
        ver20/ptz/ptz GetConfigurations | | <tptz:PTZConfiguration token="PtzConfig_1">
        ver20/ptz/ptz AbsoluteMove | <P/><Position><PanTilt x='2' y='0'/></Position> | ter:InvalidPosition
        ver20/ptz/ptz AbsoluteMove | <P/><Position><Zoom x='0' space='mm'/></Position> | ter:SpaceNotSupported
        ver20/ptz/ptz AbsoluteMove | <P/><Position><PanTilt x='0.5' y='-0.5'/><Zoom x='1'/></Position> | Response
        ver20/ptz/ptz GetStatus | <P/> | <tt:PanTilt x="0.5" y="-0.5"
        ver20/ptz/ptz SetHomePosition | <P/> | SetHomePositionResponse
        ver20/ptz/ptz RelativeMove | <P/><Translation><PanTilt x='-0.25' y='-1'/></Translation> | Response
        ver20/ptz/ptz GetStatus | <P/> | <tt:PanTilt x="0.25" y="-1"
        ver20/ptz/ptz ContinuousMove | <P/><Velocity><Zoom x='-0.0001'/></Velocity> | Response
        ver20/ptz/ptz GetStatus | <P/> | <tt:PanTilt>IDLE</tt:PanTilt><tt:Zoom>MOVING<
        ver20/ptz/ptz ContinuousMove | <P/><Velocity><PanTilt x='1' y='1'/></Velocity><Timeout>PT0S</Timeout> | Response
        ver20/ptz/ptz GetStatus | <P/> | <tt:PanTilt>IDLE</tt:PanTilt><tt:Zoom>IDLE<
        ver20/ptz/ptz GotoHomePosition | <P/> | GotoHomePositionResponse)");
    const auto head = dome.State().ptz;  // what the picture shows
    EXPECT_EQ(head.Position(head.since), (camera_sim::PtzPosition{0.5, -0.5, 1}));
    Check(host.Add({.model = "fixed", .user = "", .analytics = false}),
          R"(ver20/ptz/ptz GetServiceCapabilities | | ter:ActionNotSupported
        ver20/ptz/ptz GetNodes | | ter:ActionNotSupported
        ver20/media/media2 GetOSDs | | ter:ActionNotSupported
        ver10/media/media GetVideoAnalyticsConfigurations | | ter:ActionNotSupported
        ver10/media/media GetAudioSources | | <trt:GetAudioSourcesResponse/>
        ver10/deviceIO/deviceio GetRelayOutputOptions | <RelayOutputToken>Relay_2</RelayOutputToken> | ter:RelayToken)");
    const std::string receiver = "Receiver</SOAP-ENV:Value><SOAP-ENV:Subcode><SOAP-ENV:Value>";
    const std::pair<const char*, std::string> refusals[] = {
        {"not-authorized", "ter:NotAuthorized"},
        {"prohibited", "ter:OperationProhibited"},
        {"failed", receiver + "ter:Action<"}};
    for (const auto& [refusal, subcode] : refusals) {
        Check(host.Add({.user = "", .clockRefusal = refusal}),
              "ver10/device/device SetSystemDateAndTime | | " + subcode);
    }
}

TEST(CameraOperations, RebootsOnRequest) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add({.user = ""});
    const client_test::CRawClient waiting(camera.Port());
    waiting.Send("POST ");
    Check(camera, "ver10/events/event CreatePullPointSubscription | | Address");
    EXPECT_EQ(camera.Subscriptions().size(), 1U);
    Check(camera, "ver10/device/device SystemReboot | | <tds:Message>");
    EXPECT_TRUE(camera.Subscriptions().empty());
    EXPECT_EQ(waiting.ReadToEnd(), "");
}

}  // namespace
