#include <gtest/gtest.h>

#include "commands/GetCmd.h"
#include "unit/Texts.h"

namespace onvif_client {
namespace {

/// A device that answers its first request with @p answer, and the others with nothing of use.
class CStandardSession final : public ICommandSession {
 public:
    CStandardSession(std::string answer, bool media2, bool profiles)
        : answer_(std::move(answer)), media2_(media2), profiles_(profiles) {}
    CExtensions Extensions() const override { return {Extension::kStandardRequests}; }
    std::shared_ptr<const ProfileList> Profiles() const override {
        return std::make_shared<ProfileList>(
            profiles_ ? ProfileList{{"P", "S", "V", "E", "enc", "Z", "A"}} : ProfileList{});
    }
    void ReplaceProfiles(ProfileList) override {}
    ServiceTable Services() const override { return {{"deviceIO", "io"}}; }
    bool HasMedia2() const override { return media2_; }
    PtzRanges SpeedRanges() const override {
        return {{0, 0, -0.5, 0.5}, {-1, 1, -1, 1}, {0, 0, 0, 0.25}};
    }
    int DownloadPicture(const std::string&, ResponseBuffer&) override { return status::kSuccess; }
    Reply Exchange(const SignedRequest& request) override {
        sent += std::string(request.serviceKey) + " ";
        last = client_test::Body(request.envelope);
        const std::string reply = client_test::Reply(std::exchange(answer_, "RelayOutputs{x}"));
        return {status::kSuccess, reply};
    }
    std::string sent;
    std::string last;

 private:
    std::string answer_;
    const bool media2_;
    const bool profiles_;
};

struct StandardCase {
    const char* root;
    const char* command;
    std::string answer;    // what the first exchange brings
    const char* services;  // what was asked, in order
    std::string last;      // the last request
    bool media2 = false;
    bool profiles = true;
};

const std::string kMulticast =
    "tt:Multicast{tt:Address{tt:Type=IPv4 tt:IPv4Address=239.0.0.1} tt:Port=1 tt:TTL=2 "
    "tt:AutoStart=true} ";
const std::string kEncoder =
    "(token=E GovLength=50 Profile=High){tt:Name=its tt:UseCount=2 tt:Encoding=H264 "
    "tt:Resolution{tt:Width=640 tt:Height=480} tt:Quality=4 tt:RateControl(ConstantBitRate=true){"
    "tt:FrameRateLimit=25 tt:EncodingInterval=3 tt:BitrateLimit=512} tt:H264{tt:GovLength=50 "
    "tt:H264Profile=High} " +
    kMulticast + "tt:SessionTimeout=PT9S v:Odd=1}";
const std::string kFault = "x:Fault{x:Reason{x:Text=no}}";
const std::string kTourStart =
    "tt:Status{tt:State=Paused} tt:AutoStart=true tt:StartingCondition(RandomPresetOrder=true){"
    "tt:RecurringTime=3} ";
const std::string kTour =
    "t:GetPresetToursResponse{t:PresetTour(token=U) t:PresetTour(token=T){tt:Name=old " +
    kTourStart +
    "tt:TourSpot{tt:PresetDetail{tt:PresetToken=1 tt:Home=false} "
    "tt:Speed{tt:Zoom(x=1)} tt:StayTime=PT7S} tt:TourSpot{tt:PresetDetail{tt:Home=true}}}}";

std::string Tour(const std::string& inside) {
    return "ptzw:ModifyPresetTour{ptzw:ProfileToken=P ptzw:PresetTour(token=T){" + inside + "}}";
}

TEST(StandardRequests, AreSentWholeInTheOrderOfTheSchemas) {
    const StandardCase cases[] = {
        {"Set", "ipv4{token=e dhcp=false ip=10.0.0.5 netmask=255.0.0.0}", "x", "device ",
         "tds:SetNetworkInterfaces{tds:InterfaceToken=e tds:NetworkInterface{tt:IPv4{"
         "tt:Enabled=true tt:Manual{tt:Address=10.0.0.5 tt:PrefixLength=8} tt:DHCP=false}}}"},
        {"Set", "dns{dhcp=true}", "x", "device ", "tds:SetDNS{tds:FromDHCP=true}"},
        {"Set", "videoEncodeCfg{item{index=0 frameRate=5} multicast{tTL=9}}",
         "m:GetVideoEncoderConfigurationResponse{m:Configuration" + kEncoder + "}", "media media ",
         "mdw:SetVideoEncoderConfiguration{mdw:Configuration(token=E){tt:Name=its tt:UseCount=2 "
         "tt:Encoding=H264 tt:Resolution{tt:Width=640 tt:Height=480} tt:Quality=4 tt:RateControl{"
         "tt:FrameRateLimit=5 tt:EncodingInterval=3 tt:BitrateLimit=512} tt:H264{tt:GovLength=50 "
         "tt:H264Profile=High} tt:Multicast{tt:Address{tt:Type=IPv4 tt:IPv4Address=239.0.0.1} "
         "tt:Port=1 tt:TTL=9 tt:AutoStart=true} tt:SessionTimeout=PT9S} "
         "mdw:ForcePersistence=true}"},
        {"Set", "videoEncodeCfg{item{index=0 encode=H265 quality=1 sessionTimeout=PT1S}}",
         "m:GetVideoEncoderConfigurationsResponse{m:Configurations(token=D GovLength=1) "
         "m:Configurations" +
             kEncoder + "}",
         "media2 media2 ",
         "trt2:SetVideoEncoderConfiguration{trt2:Configuration(GovLength=50 token=E){tt:Name=its "
         "tt:UseCount=2 tt:Encoding=H265 tt:Resolution{tt:Width=640 tt:Height=480} "
         "tt:RateControl(ConstantBitRate=true){tt:FrameRateLimit=25 tt:BitrateLimit=512} " +
             kMulticast + "tt:Quality=1}}",
         true},
        {"Set", "imageSettings{whiteBalance{cbGain=3} exposure{gain=4} contrast=5 focus}",
         "i:GetImagingSettingsResponse{i:ImagingSettings{tt:Contrast=9 tt:Exposure{tt:Mode=AUTO "
         "tt:Window(bottom=0 top=1) tt:Gain=1} tt:WhiteBalance{tt:Mode=MANUAL} tt:Extension{x}}}",
         "imaging imaging ",
         "img:SetImagingSettings{img:VideoSourceToken=S img:ImagingSettings{tt:Contrast=5 "
         "tt:Exposure{tt:Mode=AUTO tt:Window(bottom=0 top=1) tt:Gain=4} tt:WhiteBalance{"
         "tt:Mode=MANUAL tt:CbGain=3}} img:ForcePersistence=true}"},
        {"Set", "setOsd{token=O pos{type=Custom x=1} extensionswitch=on}",
         "m:GetOSDResponse{m:OSD(token=O){tt:VideoSourceConfigurationToken=W tt:Type=Text "
         "tt:Position{tt:Type=UpperLeft tt:Pos(x=0 y=-1)} tt:TextString{tt:Type=Plain "
         "tt:FontSize=9 tt:FontColor(Transparent=1){tt:Color(X=1 Y=2 Z=3)} tt:PlainText=a}}}",
         "media media ",
         "trt:SetOSD{trt:OSD(token=O){tt:VideoSourceConfigurationToken=W tt:Type=Text "
         "tt:Position{tt:Type=Custom tt:Pos(x=1 y=-1)} tt:TextString{tt:Type=Plain tt:FontSize=9 "
         "tt:FontColor(Transparent=1){tt:Color(X=1 Y=2 Z=3)} tt:PlainText=a}}}"},
        {"Set", "setOsd{token=O pos{type=LowerLeft x=1} type=DateAndTime dateFormat=d}", kFault,
         "media media ",
         "trt:SetOSD{trt:OSD(token=O){tt:VideoSourceConfigurationToken=V tt:Type=Text "
         "tt:Position{tt:Type=LowerLeft} tt:TextString{tt:Type=DateAndTime tt:DateFormat=d}}}"},
        {"Set", "modifyCruise{token=T name=new}", kTour, "ptz ptz ",
         Tour("tt:Name=new " + kTourStart +
              "tt:TourSpot{tt:PresetDetail{tt:PresetToken=1} tt:Speed{tt:Zoom(x=1)} "
              "tt:StayTime=PT7S} tt:TourSpot{tt:PresetDetail{tt:Home=true}}")},
        {"Set", "modifyCruise{token=T presets{item{home=true token=9} item{token=1 stayTime=2}}}",
         kTour, "ptz ptz ",
         Tour("tt:Name=old " + kTourStart +
              "tt:TourSpot{tt:PresetDetail{tt:Home=true} tt:StayTime=PT1S} tt:TourSpot{"
              "tt:PresetDetail{tt:PresetToken=1} tt:Speed{tt:Zoom(x=1)} tt:StayTime=PT2S}")},
        {"Set", "modifyCruise{token=T}", "x", "ptz ptz ",
         Tour("tt:Status{tt:State=Idle} tt:AutoStart=false tt:StartingCondition")},
        {"Set", "delCruise{token=T}", "x", "ptz ",
         "ptzw:RemovePresetTour{ptzw:ProfileToken=P ptzw:PresetTourToken=T}"},
        {"Set", "manualAlarmout{token=R active=1}", "x", "device ",
         "tds:SetRelayOutputState{tds:RelayOutputToken=R tds:LogicalState=active}"},
        {"Set", "manualAlarmout{token=R active=1}", kFault, "device deviceIO ",
         "tds:SetRelayOutputState{tds:RelayOutputToken=R tds:LogicalState=active}"},
        {"Set", "alarmout{token=R delayTime=5}", kFault, "device deviceIO ",
         "dio:SetRelayOutputSettings{dio:RelayOutput(token=R){tt:Properties{tt:Mode=Monostable "
         "tt:DelayTime=PT5S tt:IdleState=closed}}}"},
        {"Get", "alarmout", "t:GetRelayOutputsResponse{t:RelayOutputs(token=R)}", "device ",
         "tds:GetRelayOutputs"},
        {"Get", "alarmout", "t:GetRelayOutputsResponse", "device deviceIO ", "tds:GetRelayOutputs"},
        {"Get", "osd osdoption motion", "x", "media ", "trt:GetOSDs", false, false},
    };
    for (const StandardCase& each : cases) {
        CStandardSession session(each.answer, each.media2, each.profiles);
        const std::string request =
            client_test::Xml(std::string(each.root) + "{" + each.command + "}");
        std::string result;
        if (each.root == std::string("Get")) {
            RunGet(session, request);
        } else {
            RunSet(session, request, result);
        }
        EXPECT_EQ(session.sent, each.services) << each.command;
        EXPECT_EQ(session.last, client_test::Xml(each.last)) << each.command;
    }
    CStandardSession session("x", false, true);
    std::string result;
    RunSet(session, client_test::Xml("Set{continuousMove{ptz{velocity{x=-50 y=10 zoom=100}}}}"),
           result);
    for (const char* part : {"x=\"-0.25000000\" y=\"0.10000000\"", "Zoom x=\"0.25000000\""}) {
        EXPECT_NE(session.last.find(part), std::string::npos) << session.last;
    }
}

}  // namespace
}  // namespace onvif_client
