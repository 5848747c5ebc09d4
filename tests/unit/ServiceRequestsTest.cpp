#include <gtest/gtest.h>

#include <span>

#include "commands/ServiceRequests.h"
#include "unit/Texts.h"

namespace onvif_client {
namespace {

using client_test::Body;

const MediaProfile kProfile = {"P", "S", "V", "E", "enc", "Z", "A"};

struct RequestCase {
    RequestBuilder build;
    const char* command;
    std::string body;
};

void ExpectBodies(std::span<const RequestCase> cases) {
    for (const RequestCase& each : cases) {
        const CXmlDocument request(each.command);
        EXPECT_EQ(Body(each.build({request.Root(), &kProfile})), each.body) << each.command;
    }
}

TEST(ServiceRequests, MoveTheDome) {
    const std::string panTilt =
        " space=\"http://www.onvif.org/ver10/tptz/PanTiltSpaces/VelocityGenericSpace\"/>";
    const std::string zoom =
        " space=\"http://www.onvif.org/ver10/tptz/ZoomSpaces/VelocityGenericSpace\"/>";
    const auto move = [&](const char* x, const char* y, const char* z) {
        return "<ptzw:ContinuousMove><ptzw:ProfileToken/><ptzw:Velocity><tt:PanTilt x=\"" +
               std::string(x) + "\" y=\"" + y + "\"" + panTilt + "<tt:Zoom x=\"" + z + "\"" + zoom +
               "</ptzw:Velocity></ptzw:ContinuousMove>";
    };
    const struct {
        PtzRanges ranges;
        const char* velocity;
        std::string body;
    } cases[] = {
        {{}, "<x>-50</x><y>100</y>", move("-0.50000000", "1.00000000", "0.00000000")},
        {{}, "<x>33</x><zoom>0</zoom>", move("0.33000001", "0.00000000", "0.00000000")},
        {{{-4, 2}, {-1, 5}, {0, 3}},
         "<x>-50</x><y>10</y><zoom>-10</zoom>",
         move("-2.00000000", "0.50000000", "-0.00000000")},
        {{{-180, 90}, {-2147483647 - 1, 1}, {0, 3}},
         "<x>x</x><y>-100</y><zoom>50</zoom>",
         move("0.00000000", "-2147483648.00000000", "1.50000000")},
    };
    for (const auto& each : cases) {
        const CXmlDocument request("<m><ptz><velocity>" + std::string(each.velocity) +
                                   "</velocity></ptz></m>");
        EXPECT_EQ(Body(BuildContinuousMove({request.Root(), &kProfile, nullptr, each.ranges})),
                  each.body);
    }
}

TEST(ServiceRequests, CarryPtzTokens) {
    const RequestCase cases[] = {
        {BuildPtzStop, "<c><profileToken>P</profileToken><zoom>false</zoom></c>",
         "<ptzw:Stop><ptzw:ProfileToken>P</ptzw:ProfileToken><ptzw:PanTilt>true</ptzw:PanTilt>"
         "<ptzw:Zoom>false</ptzw:Zoom></ptzw:Stop>"},
        {BuildAddPreset, "<c><presetToken>1</presetToken><presetName>gate</presetName></c>",
         "<ptzw:SetPreset><ptzw:ProfileToken/><ptzw:PresetName>gate</ptzw:PresetName>"
         "</ptzw:SetPreset>"},
        {BuildModifyPresetName, "<c><presetToken>1</presetToken><presetName>gate</presetName></c>",
         "<ptzw:SetPreset><ptzw:ProfileToken/><ptzw:PresetName>gate</ptzw:PresetName>"
         "<ptzw:PresetToken>1</ptzw:PresetToken></ptzw:SetPreset>"},
        {BuildModifyCruise,
         "<c><token>T</token><name>N</name><presets><item><token>1</token><stayTime>10</stayTime>"
         "</item><item><token>2</token></item></presets></c>",
         "<ptzw:ModifyPresetTour><ptzw:ProfileToken/><ptzw:PresetTour token=\"T\"><tt:Name>N"
         "</tt:Name><tt:TourSpot><tt:PresetDetail><tt:PresetToken>1</tt:PresetToken><tt:Home>false"
         "</tt:Home></tt:PresetDetail><tt:StayTime>PT10S</tt:StayTime></tt:TourSpot><tt:TourSpot>"
         "<tt:PresetDetail><tt:PresetToken>2</tt:PresetToken><tt:Home>false</tt:Home>"
         "</tt:PresetDetail><tt:StayTime>PT1S</tt:StayTime></tt:TourSpot></ptzw:PresetTour>"
         "</ptzw:ModifyPresetTour>"},
        {BuildDelCruise, "<c><profileToken>P</profileToken><token>T</token></c>",
         "<ptzw:RemovePresetTour><ptzw:ProfileToken/><ptzw:PresetTourToken/>"
         "</ptzw:RemovePresetTour>"},
        {BuildPauseCruise, "<c><token>T</token></c>",
         "<ptzw:OperatePresetTour><ptzw:ProfileToken/><ptzw:PresetTourToken>T"
         "</ptzw:PresetTourToken><ptzw:Operation>Pause</ptzw:Operation></ptzw:OperatePresetTour>"},
        {BuildPtz3dControl, "<c><startPosX>1</startPosX><centerPosY>6</centerPosY></c>",
         "<ptzw:3DControl><ptzw:StartPositionX>1</ptzw:StartPositionX><ptzw:StartPositionY/>"
         "<ptzw:EndPositionX/><ptzw:EndPositionY/><ptzw:CenterPositionX/><ptzw:CenterPositionY>6"
         "</ptzw:CenterPositionY></ptzw:3DControl>"},
    };
    ExpectBodies(cases);
}

TEST(ServiceRequests, WriteImagingAndStreamRequests) {
    const std::string imaging = " xmlns=\"http://www.onvif.org/ver20/imaging/wsdl\"";
    const std::string schema = " xmlns=\"http://www.onvif.org/ver10/schema\"";
    const RequestCase cases[] = {
        {BuildGetStreamUri,
         "<c><multicast>true</multicast><transport>udp</transport><profiletoken>Q</profiletoken>"
         "</c>",
         "<mdw:GetStreamUri><mdw:StreamSetup><tt:Stream>RTP-Unicast</tt:Stream><tt:Transport>"
         "<tt:Protocol>RTSP</tt:Protocol></tt:Transport></mdw:StreamSetup><mdw:ProfileToken>Q"
         "</mdw:ProfileToken></mdw:GetStreamUri>"},
        {BuildGetImageSettings, "<c><videoSourceToken>S</videoSourceToken></c>",
         "<GetImagingSettings" + imaging +
             "><VideoSourceToken>S</VideoSourceToken></GetImagingSettings>"},
        {BuildSetImageSettings,
         "<c><whiteBalance><cbGain>3</cbGain></whiteBalance><sharpness>7</"
         "sharpness><exposure><iris>"
         "1</iris><exposureTime>4</exposureTime><minExposureTime>9</minExposureTime></exposure>"
         "<backlightcompensation/><videoSourceToken>S</videoSourceToken></c>",
         "<SetImagingSettings" + imaging +
             "><VideoSourceToken>S</VideoSourceToken><ImagingSettings" + schema +
             "><BacklightCompensation/><Exposure><ExposureTime>4</ExposureTime><Iris>1</Iris>"
             "</Exposure><Sharpness>7</Sharpness><WhiteBalance><CbGain>3</CbGain></WhiteBalance>"
             "</ImagingSettings><ForcePersistence>true</ForcePersistence></SetImagingSettings>"},
        {BuildImageStop, "<c/>",
         "<img:Stop><img:VideoSourceToken>S</img:VideoSourceToken></img:Stop>"},
        {BuildContinuousFocus, "<c><speed>-0.25</speed><videoSourcetoken>S</videoSourcetoken></c>",
         "<img:Move><img:VideoSourceToken>S</img:VideoSourceToken><img:Focus><tt:Continuous>"
         "<tt:Speed>-0.250000</tt:Speed></tt:Continuous></img:Focus></img:Move>"},
    };
    ExpectBodies(cases);
}

TEST(ServiceRequests, WriteOsdsAndMotionAreas) {
    const auto osd = [](const std::string& operation, const std::string& inside) {
        return "<trt:" + operation +
               "><trt:OSD token=\"T\"><tt:VideoSourceConfigurationToken>V"
               "</tt:VideoSourceConfigurationToken><tt:Type>Text</tt:Type>" +
               inside + "</trt:OSD></trt:" + operation + ">";
    };
    const auto rules = [](const std::string& name, const std::string& parameters) {
        return "<ana:ModifyRules><ana:ConfigurationToken>A</ana:ConfigurationToken><ana:Rule "
               "Name=\"" +
               name + "\" Type=\"tt:CellMotionDetector\">" + parameters +
               "</ana:Rule></ana:ModifyRules>";
    };
    const auto cells = [](const std::string& value) {
        return "<tt:Parameters><tt:SimpleItem Name=\"ActiveCells\" Value=\"" + value +
               "\"/></tt:Parameters>";
    };
    const RequestCase cases[] = {
        {BuildGetOsds, "<c/>",
         "<trt:GetOSDs><trt:ConfigurationToken>V</trt:ConfigurationToken></trt:GetOSDs>"},
        {BuildCreateOsd,
         "<c><token>T</token><pos><type>Custom</type><x>-0.5</x><y>1</y></pos><type>Plain</type>"
         "<plainText>a&lt;b</plainText><dateFormat>d</dateFormat><extensionswitch>on"
         "</extensionswitch></c>",
         osd("CreateOSD",
             "<tt:Position><tt:Type>Custom</tt:Type><tt:Pos x=\"-0.5\" y=\"1\"/></tt:Position>"
             "<tt:TextString><tt:Type>Plain</tt:Type><tt:PlainText>a&lt;b</tt:PlainText>"
             "</tt:TextString>")},
        {BuildSetOsd,
         "<c><token>T</token><pos><type>UpperLeft</type><x>1</x></pos><type>DateAndTime</type>"
         "<dateFormat>d</dateFormat><timeFormat>t</timeFormat><plainText>p</plainText>"
         "<extensionswitch>on</extensionswitch></c>",
         osd("SetOSD",
             "<tt:Position><tt:Type>UpperLeft</tt:Type></tt:Position><tt:TextString><tt:Type>"
             "DateAndTime</tt:Type><tt:DateFormat>d</tt:DateFormat><tt:TimeFormat>t</tt:TimeFormat>"
             "</tt:TextString><tt:Extension><tt:ChannelName>on</tt:ChannelName></tt:Extension>")},
        {BuildDeleteOsd, "<c><token>T</token></c>",
         "<trt:DeleteOSD><trt:OSDToken>T</trt:OSDToken></trt:DeleteOSD>"},
        {BuildModifyAnalyticsModules,
         "<c><token>B</token><name>m</name><sensitivity>60</sensitivity><columns>10</columns><rows>"
         "4</rows></c>",
         "<ana:ModifyAnalyticsModules><ana:ConfigurationToken>B</ana:ConfigurationToken>"
         "<ana:AnalyticsModule Name=\"m\" Type=\"tt:CellMotionEngine\"><tt:Parameters>"
         "<tt:SimpleItem Name=\"Sensitivity\" Value=\"60\"/><tt:ElementItem Name=\"Layout\">"
         "<tt:CellLayout Columns=\"10\" Rows=\"4\"/></tt:ElementItem></tt:Parameters>"
         "</ana:AnalyticsModule></ana:ModifyAnalyticsModules>"},
        {BuildModifyRules,
         "<c><name>m</name><ruleName>r</ruleName><columns>10</columns><rows>4</rows><area><item>"
         "1111100000</item><item>11111</item><item/><item>0, 0 0 0 0 1 1 1 1 1 1</item></area></c>",
         rules("r", cells("BPg+AAAf"))},
        {BuildModifyRules, "<c><name>m</name><columns>-1</columns><rows>4</rows><area/></c>",
         rules("m", cells(""))},
        {BuildModifyRules,
         "<c><name>m</name><columns>99999999</columns><rows>9999</rows><area/></c>",
         rules("m", cells(""))},
        {BuildModifyRules, "<c><name>m</name><columns>10</columns><rows>4</rows></c>",
         rules("m", "<tt:Parameters/>")},
    };
    ExpectBodies(cases);
    // Without a profile the configuration stays unnamed.
    const CXmlDocument request("<c/>");
    EXPECT_EQ(Body(BuildGetOsdOptions({request.Root()})),
              "<trt:GetOSDOptions><trt:ConfigurationToken/></trt:GetOSDOptions>");
    EXPECT_EQ(BuildCreateOsd({request.Root()}).find("SourceConfigurationToken"), std::string::npos);
}

TEST(ServiceRequests, WriteEncodersForBothMediaServices) {
    const CXmlDocument request(
        "<c><item><index>0</index><encode>H264</encode><resolution><width>640</width><height>480"
        "</height></resolution><quality>4</quality><frameRate>25</frameRate><bitrate>2048</bitrate>"
        "<IFrameInterval>50</IFrameInterval><profile>Main</profile><sessionTimeout>PT60S"
        "</sessionTimeout><encodeToken>E</encodeToken></item><item><encode>H265</encode>"
        "<IFrameInterval>30</IFrameInterval><encodeToken>F</encodeToken></item><multicast><address>"
        "<type>IPv4</type><iPv4Address>239.0.0.1</iPv4Address></address><port>1</port><tTL>2</tTL>"
        "<autoStart>false</autoStart></multicast></c>");
    const XMLElement* first = FirstChild(request.Root(), "item");
    const XMLElement* second = NextSibling(first, "item");
    const auto strip = [](std::string text) {
        const std::string schema = " xmlns=\"http://www.onvif.org/ver10/schema\"";
        for (auto at = text.find(schema); at != std::string::npos; at = text.find(schema)) {
            text.erase(at, schema.size());
        }
        return text;
    };
    const std::string start = "<SetVideoEncoderConfiguration xmlns=\"http://www.onvif.org/ver";
    const std::string multicast =
        "<Multicast><Address><Type>IPv4</Type><IPv4Address>239.0.0.1</IPv4Address></Address><Port>1"
        "</Port><TTL>2</TTL><AutoStart>false</AutoStart></Multicast>";
    const std::string session = "<SessionTimeout>PT60S</SessionTimeout></Configuration>";
    const std::string picture =
        "<Resolution><Width>640</Width><Height>480</Height></Resolution><Quality>4</Quality>"
        "<RateControl><FrameRateLimit>25</FrameRateLimit>";
    const auto head = [](const char* encoding) {
        return "<Name>enc</Name><UseCount>1</UseCount><Encoding>" + std::string(encoding) +
               "</Encoding>";
    };
    const struct {
        RequestBuilder build;
        const XMLElement* item;
        std::string body;
    } cases[] = {
        {BuildSetVideoEncoder10, first,
         start + "10/media/wsdl\"><Configuration token=\"E\">" + head("H264") + picture +
             "<EncodingInterval>1</EncodingInterval><BitrateLimit>2048</BitrateLimit></RateControl>"
             "<H264><GovLength>50</GovLength><H264Profile>Main</H264Profile></H264>" +
             multicast + session +
             "<ForcePersistence>true</ForcePersistence></SetVideoEncoderConfiguration>"},
        {BuildSetVideoEncoder20, first,
         start + "20/media/wsdl\"><Configuration token=\"E\" GovLength=\"50\" Profile=\"Main\">" +
             head("H264") + picture + "<BitrateLimit>2048</BitrateLimit></RateControl>" +
             multicast + session + "</SetVideoEncoderConfiguration>"},
        {BuildSetVideoEncoder10, second,
         start + "10/media/wsdl\"><Configuration token=\"F\">" + head("H265") +
             "<RateControl><EncodingInterval>1</EncodingInterval></RateControl>" + multicast +
             "</Configuration><ForcePersistence>true</ForcePersistence>"
             "</SetVideoEncoderConfiguration>"},
        {BuildSetVideoEncoder20, second,
         start + "20/media/wsdl\"><Configuration token=\"F\" GovLength=\"30\">" + head("H265") +
             multicast + "</Configuration></SetVideoEncoderConfiguration>"},
    };
    for (const auto& each : cases) {
        const std::string envelope = each.build({request.Root(), &kProfile, each.item});
        EXPECT_EQ(strip(Body(envelope)), each.body);
        for (const char* blank : {"<Name  xmlns=\"http://www.onvif.org/ver10/schema\">enc</Name >",
                                  "<Encoding  xmlns=\"http://www.onvif.org/ver10/schema\">"}) {
            EXPECT_NE(envelope.find(blank), std::string::npos) << envelope;
        }
    }
}

}  // namespace
}  // namespace onvif_client
