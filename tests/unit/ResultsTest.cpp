#include <gtest/gtest.h>

#include <span>

#include "transform/DeviceResults.h"
#include "transform/ImagingResults.h"
#include "transform/MediaResults.h"
#include "transform/MotionResults.h"
#include "transform/PtzResults.h"
#include "transform/TimeResults.h"
#include "unit/Texts.h"

namespace onvif_client {
namespace {

using client_test::Compact;
using client_test::Envelope;
using client_test::Reply;
using client_test::Xml;

struct ResultCase {
    const ResultFrame* frame;
    const char* body;
    const char* expected;
};

void ExpectResults(std::span<const ResultCase> cases) {
    for (const ResultCase& each : cases) {
        CResultDocument result;
        BuildResult(*each.frame, Reply(each.body), {7, "T"}, result);
        EXPECT_EQ(Compact(result.Print()), Xml(each.expected));
        EXPECT_TRUE(result.Print().starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
    }
}

TEST(Results, CopyWhatTheDeviceAnswered) {
    const ResultCase cases[] = {
        {&kNetworkInterfacesResult,
         "tds:GetNetworkInterfacesResponse{tds:NetworkInterfaces(token=eth0){tt:IPv4{tt:Config{tt:"
         "Manual{tt:Address=10.0.0.5 tt:PrefixLength=20} tt:DHCP=false}}} "
         "tds:NetworkInterfaces(token=eth1){tt:IPv4{tt:Config{tt:Manual{tt:Address=1.2.3.4} "
         "tt:DHCP=true}}} tds:NetworkInterfaces}",
         "GetResponse{ipv4{status=success item(token=eth0){dhcp=false ip=10.0.0.5 "
         "netmask=255.255.240.0} item(token=eth1){dhcp=true} item}}"},
        {&kDefaultGatewayResult,
         "tds:GetNetworkDefaultGatewayResponse{tds:NetworkGateway{tt:IPv4Address=10.0.0.1 "
         "tt:IPv4Address=10.0.0.2}}",
         "GetResponse{ipv4{gatewayStatus{status=success} gateway=10.0.0.1}}"},
        {&kDateAndTimeResult,
         "GetSystemDateAndTimeResponse{SystemDateAndTime{DateTimeType=NTP DaylightSavings=true "
         "TimeZone{TZ=CET-1} UTCDateTime{Time{Hour=8 Minute=05 Second=9} Date{Year=2019 Month=3 "
         "Day=7}}}}",
         "GetResponse{dateAndTime{status=success type=NTP UTCDateTime{time{hour=8 minute=05 "
         "second=9} date{year=2019 month=3 day=7}} daylightSaving=on timeZone=CET-1}}"},
        {&kSetDefaultGatewayResult, "Fault", "SetResponse{ipv4}"},
        {&kRelayOutputsResult,
         "GetRelayOutputsResponse{RelayOutputs(token=R1){Properties{DelayTime=PT5S "
         "IdleState=closed}} RelayOutputs(token=R2){Properties{DelayTime=PT0S IdleState=open}} "
         "Other RelayOutputs{Properties{DelayTime IdleState=x}}}",
         "GetResponse{alarmout{status=success alarm{token=R1 delayTime=5 switch=off} "
         "alarm{token=R2 delayTime=-1 switch=on} alarm{delayTime=-1}}}"},
        {&kDnsResult,
         "GetDNSResponse{DNSInformation{FromDHCP=true DNSFromDHCP{Type=IPv4 IPv4Address=1.1.1.1} "
         "DNSFromDHCP{Type=IPv4 IPv4Address=2.2.2.2} DNSManual{Type=IPv4 IPv4Address=3.3.3.3}}}",
         "GetResponse{dns{status=success dhcp=true ip=1.1.1.1 ip=3.3.3.3}}"},
        {&kDnsResult,
         "GetDNSResponse{DNSInformation{FromDHCP=false DNSFromDHCP{Type=IPv4 IPv4Address=1.1.1.1} "
         "DNSManual{Type=IPv6 IPv4Address=4.4.4.4} DNSManual{Type=IPv4 IPv4Address=3.3.3.3}}}",
         "GetResponse{dns{status=success dhcp=false ip=3.3.3.3}}"},
        {&kNetworkProtocolsResult,
         "GetNetworkProtocolsResponse{NetworkProtocols{Name=HTTP Enabled=true Port=80 Port=8080} "
         "NetworkProtocols{Name=FTP} NetworkProtocols{Name=RTSP Enabled=false}}",
         "GetResponse{networkProtocols{status=success http{enable=true port=80} "
         "rtsp{enable=false}}}"},
        {&kNetworkProtocolsResult, "Fault{Code{Value=Sender Subcode{Value=InvalidArgVal}}}",
         "GetResponse{networkProtocols{status=fail{errorCode=31}}}"},
    };
    ExpectResults(cases);
}

TEST(Results, AreReadAsDevicesWriteThem) {
    const std::string soap = "http://www.w3.org/2003/05/soap-envelope";
    const std::string media = "http://www.onvif.org/ver10/media/wsdl";
    const std::string schema = "http://www.onvif.org/ver10/schema";
    const auto envelope = [&](const std::string& body) {
        return Xml("soapenv:Envelope(xmlns:soapenv=" + soap + " xmlns:m=" + media +
                   " xmlns:t=" + schema + "){soapenv:Body" + body + "}");
    };
    const std::string address = "{t:Uri='rtsp://c/1?a=1&amp;b=2' t:Timeout=PT5S}";
    const std::string answer = envelope("{m:GetStreamUriResponse{m:MediaUri" + address + "}}");
    const char* const values = "rtsp://c/1?a=1&b=2 PT5S";
    const std::pair<std::string, const char*> cases[] = {
        {answer, values},
        {answer + "\r\n\r\n", values},
        // Two prefixes for one namespace; prefixes declared below the root, and again.
        {envelope("{m:GetStreamUriResponse(xmlns:n=" + media + "){n:MediaUri" + address + "}}"),
         values},
        {envelope("{x:GetStreamUriResponse(xmlns:x=" + media + "){x:MediaUri(xmlns:x=" + media +
                  "){Uri(xmlns=" + schema + ")=u}}}"),
         "u "},
        {envelope("='<!-- a -->'{m:GetStreamUriResponse=<!--b-->{m:MediaUri='<!-- <c> -->'" +
                  address + "}}"),
         values},
        {envelope("{m:GetStreamUriResponse{m:MediaUri{t:Uri='<![CDATA[u?a=1&b=2]]>'}}}"),
         "u?a=1&b=2 "},
        {envelope("{m:GetStreamUriResponse{m:MediaUri}}"), " "},
        {"<?xml version=\"1.0\"?>\r\n<s:Envelope\r\n  xmlns:s=\"" + soap + "\"\r\n\txmlns:m=\"" +
             media +
             "\"\r\n>\r\n<s:Body\r\n>\r\n<m:GetStreamUriResponse\n><m:MediaUri\r\n><Uri\r\n>u</"
             "Uri\r\n></m:MediaUri></m:GetStreamUriResponse></s:Body></s:Envelope>",
         "u "},
    };
    for (const auto& [reply, shown] : cases) {
        CResultDocument result;
        BuildResult(kStreamUriResult, reply, {}, result);
        const CXmlDocument document(result.Print());
        const XMLElement* uri = FirstChild(document.Root(), "streamURI");
        EXPECT_EQ(std::string(TextAt(uri, "uri")) + " " + std::string(TextAt(uri, "timeout")),
                  shown)
            << reply;
    }
}

TEST(Results, OneDocumentCarriesAllAnswers) {
    CResultDocument result;
    BuildResult(kDnsResult, "unparsable", {}, result);
    BuildResult(kDigitalInputsResult, Reply("a:Fault"), {}, result);
    BuildResult(kDnsResult, Envelope(""), {}, result);
    BuildResult(kStatusOnly<"dns">, Envelope(""), {},
                result);  // a second root finds its place below
    EXPECT_EQ(
        Compact(result.Print()),
        Xml("GetResponse{dns{status=success status=success} alarmin{status=fail{errorCode=6}} "
            "SetResponse{dns{status=success}}}"));
}

TEST(Results, AreGivenAwayAsTheirTextParses) {
    for (const char* text : {"", " ", "\n", "a\r\nb\r", "&amp;<", "\x01", "a\xFF\xFEz",
                             "\xED\xA0\x80", "]]>", "\xC3\xA4", " a "}) {
        CResultDocument printed;
        CResultDocument given;
        for (CResultDocument* each : {&printed, &given}) {
            Append(each->Command("GetResponse", "c"), "a/b", text);
            Append(each->Command("GetResponse", "c"), "d", text);
        }
        const CXmlDocument parsed(printed.Print());
        const auto taken = given.TakeParsed();
        for (const char* path : {"c/a/b", "c/d"}) {
            const XMLElement* expected = parsed.Find(path);
            const XMLElement* element = taken->Find(path);
            ASSERT_NE(element, nullptr) << text;
            EXPECT_EQ(TextOf(element), TextOf(expected)) << path;
            EXPECT_EQ(element->NoChildren(), expected->NoChildren()) << path << text;
        }
        EXPECT_EQ(given.Print(), "");
    }
}

TEST(Results, DeviceTimeNeedsAllSixFields) {
    const std::string reply = Reply(
        "t:GetSystemDateAndTimeResponse{t:SystemDateAndTime{t:UTCDateTime{t:Time{t:Hour=8 "
        "t:Minute=5 t:Second=9} t:Date{t:Year=2019 t:Month=3 t:Day=7}}}}");
    std::string result;
    EXPECT_EQ(TransGetSystemDateAndTimeForAuthentication(reply, result), "2019-03-07T08:05:09Z");
    EXPECT_EQ(CreatedFromDeviceTime(result), "2019-03-07T08:05:09Z");

    std::string incomplete = reply;
    incomplete.erase(incomplete.find("<t:Second>"), Xml("t:Second=9").size());
    std::string untouched = "before";
    EXPECT_EQ(TransGetSystemDateAndTimeForAuthentication(incomplete, untouched), "");
    EXPECT_EQ(untouched, "before");
    EXPECT_EQ(CreatedFromDeviceTime(""), "-00-00T00:00:00Z");
}

TEST(Results, CopyWhatServicesAnswered) {
    const ResultCase cases[] = {
        {&kCruisesResult,
         "a:GetPresetToursResponse{a:PresetTour(token=T1){t:Name=round t:Status{t:State=Idle} "
         "t:AutoStart=false t:StartingCondition(RandomPresetOrder=true){t:RecurringTime=3 "
         "t:RecurringDuration=PT1H t:Direction=Forward} t:TourSpot{t:PresetDetail{t:PresetToken=3} "
         "t:StayTime=PT1M30S} t:TourSpot{t:PresetDetail{t:Home=true}}} a:PresetTour}",
         "GetResponse{cruises{status=success item{token=T1 name=round state=Idle autoStart=false "
         "startingCondition{randomOrder=true recurringTime=3 recurringDuration=3600 "
         "direction=Forward} presets{item{token=3 stayTime=90} item{home=true}}} item{presets}}}"},
        {&kImageSettingsResult,
         "GetImagingSettingsResponse{ImagingSettings{BacklightCompensation{Mode=ON} Brightness=50 "
         "ColorSaturation Exposure{Mode=AUTO Priority=LowNoise Window(bottom=1 top=2 right=3 "
         "left=4) MinExposureTime=10 MaxGain=100 Iris=5} Focus{AutoFocusMode=MANUAL FarLimit=9} "
         "IrCutFilter=AUTO Sharpness=3 WhiteBalance{CrGain=1.50}}}",
         "GetResponse{imageSettings{status=success backlightcompensation{mode=ON} brightness=50 "
         "saturation exposure{mode=AUTO priority=LowNoise window{bottom=1 top=2 right=3 left=4} "
         "minExposureTime=10 maxGain=100 iris=5} focus{autoFocusMode=MANUAL farLimit=9} "
         "irCutFilter=AUTO sharpness=3 whiteBalance{crGain=1.50}}}"},
        {&kImageOptionsResult,
         "GetOptionsResponse{ImagingOptions{Brightness{Min=0 Max=100} Exposure{Mode=AUTO "
         "Mode=MANUAL Gain{Min=0}} Focus{AutoFocusModes=AUTO AutoFocusModes=MANUAL} "
         "IrCutFilterModes=ON IrCutFilterModes=OFF Sharpness{Max=9} WhiteBalance{Mode=AUTO "
         "YrGain{Min=1} YbGain{Max=2}}}}",
         "GetResponse{imageOpts{status=success brightness{min=0 max=100} exposure{mode=AUTO "
         "mode=MANUAL gain{min=0}} focus{autoFocusMode=AUTO autoFocusMode=MANUAL} irCutFilter=ON "
         "irCutFilter=OFF sharpness{max=9} whiteBalance{mode=AUTO crGain{min=1} cbGain{max=2}}}}"},
        {&kOsdResult,
         "GetOSDsResponse{OSDs(token=O1){VideoSourceConfigurationToken=V Type=Text "
         "Position{Type=Custom Pos(x=-0.9 y=0.85)} TextString(IsPersistentText=true){Type=Plain "
         "FontSize=20 FontColor(Transparent=1){Color(X=1 Y=2 Z=3 Colorspace=c)} PlainText=Gate "
         "Extension{ChannelName='in text'}} Extension{ChannelName=on}} OSDs{Type=Image "
         "TextString{Extension{ChannelName='in text'}} Image{ImgPath=p}}}",
         "GetResponse{osd{status=success item{token=O1 videoSourceCfgToken=V osdType=Text "
         "pos{type=Custom x=-0.9 y=0.85} type=Plain plainText=Gate persistentText=true fontSize=20 "
         "fontColor{transparent=1 x=1 y=2 z=3 colorspace=c} extensionswitch=on} item{osdType=Image "
         "imgPath=p extensionswitch='in text'}}}"},
        {&kOsdOptionsResult,
         "GetOSDOptionsResponse{OSDOptions{MaximumNumberOfOSDs(Total=4 DateAndTime=1) Type=Text "
         "Type=Image PositionOption=UpperLeft PositionOption=Custom TextOption{Type=Plain "
         "Type=Date FontSizeRange{Min=16 Max=64} DateFormat=d1 TimeFormat=t1 "
         "FontColor{Transparent{Min=0}} BackgroundColor} ImageOption{ImagePath=i}}}",
         "GetResponse{osdoption{status=success maximumNumber{total=4 dateAndTime=1} osdType=Text "
         "osdType=Image pos{type=UpperLeft type=Custom} type=Plain type=Date dateFormat=d1 "
         "timeFormat=t1 fontSize{min=16 max=64} fontColor{transparent{min=0}} imgPath=i}}"},
    };
    ExpectResults(cases);
}

TEST(Results, ShowMotionInTwoSteps) {
    const std::string modules =
        "a:GetAnalyticsModulesResponse{a:AnalyticsModule(Name=other Type=t:LineCounter) "
        "a:AnalyticsModule(Name=m "
        "Type=x:CellMotionEngine){t:Parameters{t:SimpleItem(Name=Sensitivity Value=60) "
        "t:ElementItem(Name=Layout){t:CellLayout(Columns=10 Rows=ROWS)}}}}";
    const std::string rules =
        "a:GetRulesResponse{a:Rule(Name=r "
        "Type=CellMotionDetector){t:Parameters{t:SimpleItem(Name=MinCount Value=4) "
        "t:SimpleItem(Name=ActiveCells Value=BPg+AAAf)}}}";
    const auto result = [&](const std::string& rowCount, const std::string& second) {
        std::string first = modules;
        first.replace(first.find("ROWS"), 4, rowCount);
        CResultDocument text;
        BuildResult(kMotionModuleResult, Reply(first), {0, "A"}, text);
        BuildResult(kMotionRuleResult, Reply(second), {}, text);
        return Compact(text.Print());
    };
    const auto expected = [](const std::string& rowCount, const std::string& behind) {
        return Xml(
            "GetResponse{motion{status=success token=A name=m sensitivity=60 columns=10 rows=" +
            rowCount + " " + behind + "}}");
    };
    const std::string rule = "ruleStatus{status=success} ruleName=r minCount=4 ";
    const std::string cells = " activeCells=BPg+AAAf";
    EXPECT_EQ(
        result("4", rules),
        expected("4", rule +
                          "area{item=1111100000 item=1111100000 item=0000000000 item=0000011111}" +
                          cells));
    const std::string noArea = rule + "area" + cells;
    for (const char* rowCount : {"0", "x", "1025", "100000000"}) {
        EXPECT_EQ(result(rowCount, rules), expected(rowCount, noArea));
    }
    EXPECT_EQ(result("4", "Fault"), expected("4", "ruleStatus{status=fail{errorCode=6}}"));
    EXPECT_EQ(result("4", "GetRulesResponse"), expected("4", "ruleStatus{status=success}"));
}

}  // namespace
}  // namespace onvif_client
