#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <span>

#include "commands/DeviceRequests.h"
#include "commands/ServiceRequests.h"
#include "support/OwnFile.h"
#include "unit/Texts.h"

namespace onvif_client {
namespace {

using client_test::Body;
using client_test::Xml;

const std::string kSchema = "xmlns=http://www.onvif.org/ver10/schema";
const MediaProfile kProfile = {"P", "S", "V", "E", "enc", "Z", "A"};

struct RequestCase {
    RequestBuilder build;
    const char* command;
    std::string body;
    PtzRanges ranges = {};
};

void ExpectBodies(std::span<const RequestCase> cases) {
    for (const RequestCase& each : cases) {
        const CXmlDocument request(Xml(each.command));
        EXPECT_EQ(Body(each.build({request.Root(), &kProfile, nullptr, each.ranges})),
                  Xml(each.body))
            << each.command;
    }
}

TEST(RequestBuilders, WriteTheParametersOfTheRequest) {
    const std::string device = "SetSystemDateAndTime(xmlns=http://www.onvif.org/ver10/device/wsdl)";
    const RequestCase cases[] = {
        {BuildSetNetworkInterfaces, "ipv4{token=eth0 dhcp=false ip=10.0.0.5 netmask=255.255.255.0}",
         "tds:SetNetworkInterfaces{tds:InterfaceToken=eth0 "
         "tds:NetworkInterface{tt:IPv4{tt:DHCP=false tt:Enabled=true tt:Manual{tt:Address=10.0.0.5 "
         "tt:PrefixLength=24}}}}"},
        {BuildSetNetworkInterfaces, "ipv4{dhcp=true ip=10.0.0.5}",
         "tds:SetNetworkInterfaces{tds:InterfaceToken tds:NetworkInterface{tt:IPv4{tt:DHCP=true "
         "tt:Enabled=true}}}"},
        {BuildSetDefaultGateway, "ipv4{gateway=10.0.0.1}",
         "tds:SetNetworkDefaultGateway{tds:IPv4Address=10.0.0.1}"},
        {BuildSetDns, "dns{dhcp=false ip=1.1.1.1}",
         "tds:SetDNS{tds:FromDHCP=false tds:DNSManual{tt:Type=IPv4 tt:IPv4Address=1.1.1.1}}"},
        {BuildSetDns, "dns{dhcp=true}",
         "tds:SetDNS{tds:FromDHCP=true tds:DNSFromDHCP{tt:Type=IPv4 tt:IPv4Address}}"},
        {BuildSetNetworkProtocols, "networkProtocols{http{port=080} rtsp{port=554}}",
         "tds:SetNetworkProtocols{tds:NetworkProtocols{tt:Name=RTSP tt:Enabled=true tt:Port=554} "
         "tds:NetworkProtocols{tt:Name=HTTP tt:Enabled=true tt:Port=80}}"},
        {BuildSetSystemDateAndTime,
         "dateAndTime{type=Manual daylightSaving{switch=on} timeZone{tz=CET-1} time{hour=08 "
         "minute=x second=9} date{year=2019 month=07 day=1}}",
         device + "{DateTimeType=Manual DaylightSavings=true TimeZone{TZ(" + kSchema +
             ")=CET-1} UTCDateTime{Time(" + kSchema + "){Hour=8 Minute=0 Second=9} Date(" +
             kSchema + "){Year=2019 Month=7 Day=1}}}"},
        {BuildSetSystemDateAndTime, "dateAndTime{type=NTP}",
         device + "{DateTimeType=NTP DaylightSavings=false TimeZone{TZ(" + kSchema + ")}}"},
        {BuildSetRelayOutputSettings, "alarmout{token=R1 delayTime=5 switch=on}",
         "tds:SetRelayOutputSettings{tds:RelayOutputToken=R1 tds:Properties{tt:Mode=Monostable "
         "tt:DelayTime=PT5S tt:IdleState=open}}"},
        {BuildSetRelayOutputSettings, "alarmout{delayTime=-1}",
         "tds:SetRelayOutputSettings{tds:RelayOutputToken=Alarm1 tds:Properties{tt:Mode=Monostable "
         "tt:DelayTime=PT0S tt:IdleState=closed}}"},
        {BuildSetRelayOutputState, "m{token=R1 active=1}",
         "tds:SetRelayOutputState{tds:RelayOutputToken=R1 tds:LogicalState=active}"},
        {BuildSetRelayOutputState, "m{active=true}",
         "tds:SetRelayOutputState{tds:RelayOutputToken tds:LogicalState=inactive}"},
        {BuildSetRelayOutputState, "m{token=a&lt;b&amp;c}",
         "tds:SetRelayOutputState{tds:RelayOutputToken=a&lt;b&amp;c tds:LogicalState}"},
    };
    ExpectBodies(cases);
}

TEST(RequestBuilders, LoginRequestsCarryTheirTokens) {
    EXPECT_EQ(Body(BuildGetCapabilities("Media")),
              Xml("GetCapabilities(xmlns=http://www.onvif.org/ver10/device/wsdl){Category=Media}"));
    EXPECT_EQ(Body(BuildGetPtzOptions("Z")),
              Xml("ptzw:GetConfigurationOptions{ptzw:ConfigurationToken=Z}"));
    EXPECT_EQ(Body(BuildGetMoveOptions("S")), Xml("img:GetMoveOptions{img:VideoSourceToken=S}"));
    const auto setting = [](const std::string& zone) {
        return Xml("tds:SetSystemDateAndTime{tds:DateTimeType=Manual tds:DaylightSavings=false " +
                   zone +
                   "tds:UTCDateTime{tt:Time{tt:Hour=8 tt:Minute=5 tt:Second=9} "
                   "tt:Date{tt:Year=2019 tt:Month=3 tt:Day=7}}}");
    };
    const CalendarTime utc{2019, 3, 7, 8, 5, 9};
    EXPECT_EQ(Body(BuildLoginClockSetting(utc, std::nullopt)), setting(""));
    EXPECT_EQ(Body(BuildLoginClockSetting(utc, "CET-1")), setting("tds:TimeZone{tt:TZ=CET-1} "));
}

TEST(RequestBuilders, TheLocalTimeZoneComesFromItsFile) {
    const std::string file = client_test::OwnFile("timeInfo.xml");
    const std::pair<const char*, std::optional<std::string>> cases[] = {
        {"response{content{timezoneInfo{timeZone=CST-8}}}", "CST-8"},
        {"response{content}", std::nullopt},
        {"garbage", std::nullopt},
    };
    for (const auto& [text, zone] : cases) {
        std::ofstream(file) << Xml(text);
        EXPECT_EQ(ReadLocalTimeZone(file.c_str()), zone) << text;
    }
    std::remove(file.c_str());
    EXPECT_EQ(ReadLocalTimeZone(file.c_str()), std::nullopt);
}

TEST(ServiceRequests, MoveTheDome) {
    const std::string spaces = "http://www.onvif.org/ver10/tptz/";
    const auto move = [&](const char* x, const char* y, const char* z) {
        return "ptzw:ContinuousMove{ptzw:ProfileToken ptzw:Velocity{tt:PanTilt(x=" +
               std::string(x) + " y=" + y + " space=" + spaces +
               "PanTiltSpaces/VelocityGenericSpace) tt:Zoom(x=" + z + " space=" + spaces +
               "ZoomSpaces/VelocityGenericSpace)}}";
    };
    const RequestCase cases[] = {
        {BuildContinuousMove, "m{ptz{velocity{x=-50 y=100}}}",
         move("-0.50000000", "1.00000000", "0.00000000")},
        {BuildContinuousMove, "m{ptz{velocity{x=33 zoom=0}}}",
         move("0.33000001", "0.00000000", "0.00000000")},
        {BuildContinuousMove,
         "m{ptz{velocity{x=-50 y=10 zoom=-10}}}",
         move("-2.00000000", "0.50000000", "-0.00000000"),
         {{-4, 2}, {-1, 5}, {0, 3}}},
        {BuildContinuousMove,
         "m{ptz{velocity{x=x y=-100 zoom=50}}}",
         move("0.00000000", "-2147483648.00000000", "1.50000000"),
         {{-180, 90}, {-2147483647 - 1, 1}, {0, 3}}},
    };
    ExpectBodies(cases);
}

TEST(ServiceRequests, CarryPtzTokens) {
    const RequestCase cases[] = {
        {BuildPtzStop, "c{profileToken=P zoom=false}",
         "ptzw:Stop{ptzw:ProfileToken=P ptzw:PanTilt=true ptzw:Zoom=false}"},
        {BuildAddPreset, "c{presetToken=1 presetName=gate}",
         "ptzw:SetPreset{ptzw:ProfileToken ptzw:PresetName=gate}"},
        {BuildModifyPresetName, "c{presetToken=1 presetName=gate}",
         "ptzw:SetPreset{ptzw:ProfileToken ptzw:PresetName=gate ptzw:PresetToken=1}"},
        {BuildModifyCruise, "c{token=T name=N presets{item{token=1 stayTime=10} item{token=2}}}",
         "ptzw:ModifyPresetTour{ptzw:ProfileToken ptzw:PresetTour(token=T){tt:Name=N "
         "tt:TourSpot{tt:PresetDetail{tt:PresetToken=1 tt:Home=false} tt:StayTime=PT10S} "
         "tt:TourSpot{tt:PresetDetail{tt:PresetToken=2 tt:Home=false} tt:StayTime=PT1S}}}"},
        {BuildDelCruise, "c{profileToken=P token=T}",
         "ptzw:RemovePresetTour{ptzw:ProfileToken ptzw:PresetTourToken}"},
        {BuildPauseCruise, "c{token=T}",
         "ptzw:OperatePresetTour{ptzw:ProfileToken ptzw:PresetTourToken=T ptzw:Operation=Pause}"},
        {BuildPtz3dControl, "c{startPosX=1 centerPosY=6}",
         "ptzw:3DControl{ptzw:StartPositionX=1 ptzw:StartPositionY ptzw:EndPositionX "
         "ptzw:EndPositionY ptzw:CenterPositionX ptzw:CenterPositionY=6}"},
    };
    ExpectBodies(cases);
}

TEST(ServiceRequests, WriteImagingAndStreamRequests) {
    const std::string imaging = "ImagingSettings(xmlns=http://www.onvif.org/ver20/imaging/wsdl)";
    const RequestCase cases[] = {
        {BuildGetStreamUri, "c{multicast=true transport=udp profiletoken=Q}",
         "mdw:GetStreamUri{mdw:StreamSetup{tt:Stream=RTP-Unicast tt:Transport{tt:Protocol=RTSP}} "
         "mdw:ProfileToken=Q}"},
        {BuildGetImageSettings, "c{videoSourceToken=S}", "Get" + imaging + "{VideoSourceToken=S}"},
        {BuildSetImageSettings,
         "c{whiteBalance{cbGain=3} sharpness=7 exposure{iris=1 exposureTime=4 minExposureTime=9} "
         "backlightcompensation videoSourceToken=S}",
         "Set" + imaging + "{VideoSourceToken=S ImagingSettings(" + kSchema +
             "){BacklightCompensation Exposure{ExposureTime=4 Iris=1} Sharpness=7 "
             "WhiteBalance{CbGain=3}} ForcePersistence=true}"},
        {BuildImageStop, "c", "img:Stop{img:VideoSourceToken=S}"},
        {BuildContinuousFocus, "c{speed=-0.25 videoSourcetoken=S}",
         "img:Move{img:VideoSourceToken=S img:Focus{tt:Continuous{tt:Speed=-0.250000}}}"},
    };
    ExpectBodies(cases);
}

TEST(ServiceRequests, WriteOsdsAndMotionAreas) {
    const auto osd = [](const std::string& operation, const std::string& inside) {
        return "trt:" + operation +
               "{trt:OSD(token=T){tt:VideoSourceConfigurationToken=V tt:Type=Text " + inside + "}}";
    };
    const auto rules = [](const std::string& name, const std::string& parameters) {
        return "ana:ModifyRules{ana:ConfigurationToken=A ana:Rule(Name=" + name +
               " Type=tt:CellMotionDetector){" + parameters + "}}";
    };
    const auto cells = [](const std::string& value) {
        return "tt:Parameters{tt:SimpleItem(Name=ActiveCells Value='" + value + "')}";
    };
    const RequestCase cases[] = {
        {BuildGetOsds, "c", "trt:GetOSDs{trt:ConfigurationToken=V}"},
        {BuildCreateOsd,
         "c{token=T pos{type=Custom x=-0.5 y=1} type=Plain plainText=a&lt;b dateFormat=d "
         "extensionswitch=on}",
         osd("CreateOSD",
             "tt:Position{tt:Type=Custom tt:Pos(x=-0.5 y=1)} tt:TextString{tt:Type=Plain "
             "tt:PlainText=a&lt;b}")},
        {BuildSetOsd,
         "c{token=T pos{type=UpperLeft x=1} type=DateAndTime dateFormat=d timeFormat=t plainText=p "
         "extensionswitch=on}",
         osd("SetOSD",
             "tt:Position{tt:Type=UpperLeft} tt:TextString{tt:Type=DateAndTime tt:DateFormat=d "
             "tt:TimeFormat=t} tt:Extension{tt:ChannelName=on}")},
        {BuildDeleteOsd, "c{token=T}", "trt:DeleteOSD{trt:OSDToken=T}"},
        {BuildModifyAnalyticsModules, "c{token=B name=m sensitivity=60 columns=10 rows=4}",
         "ana:ModifyAnalyticsModules{ana:ConfigurationToken=B ana:AnalyticsModule(Name=m "
         "Type=tt:CellMotionEngine){tt:Parameters{tt:SimpleItem(Name=Sensitivity Value=60) "
         "tt:ElementItem(Name=Layout){tt:CellLayout(Columns=10 Rows=4)}}}}"},
        {BuildModifyRules,
         "c{name=m ruleName=r columns=10 rows=4 area{item=1111100000 item=11111 item item='0, 0 0 "
         "0 0 1 1 1 1 1 1'}}",
         rules("r", cells("BPg+AAAf"))},
        {BuildModifyRules, "c{name=m columns=-1 rows=4 area}", rules("m", cells(""))},
        {BuildModifyRules, "c{name=m columns=99999999 rows=9999 area}", rules("m", cells(""))},
        {BuildModifyRules, "c{name=m columns=10 rows=4}", rules("m", "tt:Parameters")},
    };
    ExpectBodies(cases);
    // Without a profile the configuration stays unnamed.
    const CXmlDocument request("<c/>");
    EXPECT_EQ(Body(BuildGetOsdOptions({request.Root()})),
              Xml("trt:GetOSDOptions{trt:ConfigurationToken}"));
    EXPECT_EQ(BuildCreateOsd({request.Root()}).find("SourceConfigurationToken"), std::string::npos);
}

TEST(ServiceRequests, WriteEncodersForBothMediaServices) {
    const CXmlDocument request(
        Xml("c{item{index=0 encode=H264 resolution{width=640 height=480} quality=4 frameRate=25 "
            "bitrate=2048 IFrameInterval=50 profile=Main sessionTimeout=PT60S encodeToken=E} "
            "item{encode=H265 IFrameInterval=30 encodeToken=F} multicast{address{type=IPv4 "
            "iPv4Address=239.0.0.1} port=1 tTL=2 autoStart=false}}"));
    const XMLElement* first = FirstChild(request.Root(), "item");
    const XMLElement* second = NextSibling(first, "item");
    const auto strip = [](std::string text) {
        const std::string schema = " xmlns=\"http://www.onvif.org/ver10/schema\"";
        for (auto at = text.find(schema); at != std::string::npos; at = text.find(schema)) {
            text.erase(at, schema.size());
        }
        return text;
    };
    const auto set = [](const std::string& version, const std::string& attributes,
                        const std::string& inside) {
        return "SetVideoEncoderConfiguration(xmlns=http://www.onvif.org/ver" + version +
               "/media/wsdl){Configuration(" + attributes + "){Name=enc UseCount=1 " + inside + "}";
    };
    const std::string multicast =
        " Multicast{Address{Type=IPv4 IPv4Address=239.0.0.1} Port=1 TTL=2 AutoStart=false}";
    const std::string picture =
        "Encoding=H264 Resolution{Width=640 Height=480} Quality=4 RateControl{FrameRateLimit=25 ";
    const std::string session = " SessionTimeout=PT60S";
    const struct {
        RequestBuilder build;
        const XMLElement* item;
        std::string body;
    } cases[] = {
        {BuildSetVideoEncoder10, first,
         set("10", "token=E",
             picture + "EncodingInterval=1 BitrateLimit=2048} H264{GovLength=50 H264Profile=Main}" +
                 multicast + session) +
             " ForcePersistence=true}"},
        {BuildSetVideoEncoder20, first,
         set("20", "token=E GovLength=50 Profile=Main",
             picture + "BitrateLimit=2048}" + multicast + session) +
             "}"},
        {BuildSetVideoEncoder10, second,
         set("10", "token=F", "Encoding=H265 RateControl{EncodingInterval=1}" + multicast) +
             " ForcePersistence=true}"},
        {BuildSetVideoEncoder20, second,
         set("20", "token=F GovLength=30", "Encoding=H265" + multicast) + "}"},
    };
    for (const auto& each : cases) {
        const std::string envelope = each.build({request.Root(), &kProfile, each.item});
        EXPECT_EQ(strip(Body(envelope)), Xml(each.body));
        for (const char* blank : {"<Name  xmlns=\"http://www.onvif.org/ver10/schema\">enc</Name >",
                                  "<Encoding  xmlns=\"http://www.onvif.org/ver10/schema\">"}) {
            EXPECT_NE(envelope.find(blank), std::string::npos) << envelope;
        }
    }
}

}  // namespace
}  // namespace onvif_client
