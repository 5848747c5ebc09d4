#include <gtest/gtest.h>

#include "transform/DeviceResults.h"
#include "transform/MediaResults.h"
#include "transform/TimeResults.h"
#include "unit/Texts.h"

namespace onvif_client {
namespace {

using client_test::Compact;
using client_test::Envelope;

struct ResultCase {
    const ResultFrame* frame;
    const char* body;
    const char* expected;
};

TEST(Results, CopyWhatTheDeviceAnswered) {
    const ResultCase cases[] = {
        {&kDeviceInformationResult,
         "<tds:GetDeviceInformationResponse><tds:Manufacturer>M</tds:Manufacturer><tds:Model/>"
         "<tds:SerialNumber>S</tds:SerialNumber></tds:GetDeviceInformationResponse>",
         "<GetResponse><devInfo><status>success</status><manufacturer>M</manufacturer><model/>"
         "</devInfo></GetResponse>"},
        {&kNetworkInterfacesResult,
         "<tds:GetNetworkInterfacesResponse><tds:NetworkInterfaces "
         "token='eth0'><tt:IPv4><tt:Config>"
         "<tt:Manual><tt:Address>10.0.0.5</tt:Address><tt:PrefixLength>20</tt:PrefixLength>"
         "</tt:Manual><tt:DHCP>false</tt:DHCP></tt:Config></tt:IPv4></tds:NetworkInterfaces>"
         "<tds:NetworkInterfaces token='eth1'><tt:IPv4><tt:Config><tt:Manual><tt:Address>1.2.3.4"
         "</tt:Address></tt:Manual><tt:DHCP>true</tt:DHCP></tt:Config></tt:IPv4>"
         "</tds:NetworkInterfaces><tds:NetworkInterfaces/></tds:GetNetworkInterfacesResponse>",
         "<GetResponse><ipv4><status>success</status><item token=\"eth0\"><dhcp>false</dhcp>"
         "<ip>10.0.0.5</ip><netmask>255.255.240.0</netmask></item><item token=\"eth1\">"
         "<dhcp>true</dhcp></item><item/></ipv4></GetResponse>"},
        {&kDefaultGatewayResult,
         "<tds:GetNetworkDefaultGatewayResponse><tds:NetworkGateway><tt:IPv4Address>10.0.0.1"
         "</tt:IPv4Address><tt:IPv4Address>10.0.0.2</tt:IPv4Address></tds:NetworkGateway>"
         "</tds:GetNetworkDefaultGatewayResponse>",
         "<GetResponse><ipv4><gatewayStatus><status>success</status></gatewayStatus>"
         "<gateway>10.0.0.1</gateway></ipv4></GetResponse>"},
        {&kDateAndTimeResult,
         "<GetSystemDateAndTimeResponse><SystemDateAndTime><DateTimeType>NTP</DateTimeType>"
         "<DaylightSavings>true</DaylightSavings><TimeZone><TZ>CET-1</TZ></TimeZone><UTCDateTime>"
         "<Time><Hour>8</Hour><Minute>05</Minute><Second>9</Second></Time><Date><Year>2019</Year>"
         "<Month>3</Month><Day>7</Day></Date></UTCDateTime></SystemDateAndTime>"
         "</GetSystemDateAndTimeResponse>",
         "<GetResponse><dateAndTime><status>success</status><type>NTP</type><UTCDateTime><time>"
         "<hour>8</hour><minute>05</minute><second>9</second></time><date><year>2019</year>"
         "<month>3</month><day>7</day></date></UTCDateTime><daylightSaving>on</daylightSaving>"
         "<timeZone>CET-1</timeZone></dateAndTime></GetResponse>"},
        {&kSetNetworkInterfacesResult,
         "<SetNetworkInterfacesResponse><RebootNeeded>true</RebootNeeded>"
         "</SetNetworkInterfacesResponse>",
         "<SetResponse><ipv4><status>success<rebootNeeded>true</rebootNeeded></status></ipv4>"
         "</SetResponse>"},
        {&kSetDefaultGatewayResult, "<Fault/>", "<SetResponse><ipv4/></SetResponse>"},
        {&kRelayOutputsResult,
         "<GetRelayOutputsResponse><RelayOutputs token='R1'><Properties><DelayTime>PT5S</DelayTime>"
         "<IdleState>closed</IdleState></Properties></RelayOutputs><RelayOutputs token='R2'>"
         "<Properties><DelayTime>PT0S</DelayTime><IdleState>open</IdleState></Properties>"
         "</RelayOutputs><Other/><RelayOutputs><Properties><DelayTime/><IdleState>x</IdleState>"
         "</Properties></RelayOutputs></GetRelayOutputsResponse>",
         "<GetResponse><alarmout><status>success</status><alarm><token>R1</token><delayTime>5"
         "</delayTime><switch>off</switch></alarm><alarm><token>R2</token><delayTime>-1</delayTime>"
         "<switch>on</switch></alarm><alarm><delayTime>-1</delayTime></alarm></alarmout>"
         "</GetResponse>"},
        {&kDigitalInputsResult,
         "<GetDigitalInputsResponse><DigitalInputs token='I1'/><DigitalInputs token='I2'/>"
         "</GetDigitalInputsResponse>",
         "<GetResponse><alarmin><status>success</status><token>I1</token><token>I2</token>"
         "</alarmin></GetResponse>"},
        {&kDnsResult,
         "<GetDNSResponse><DNSInformation><FromDHCP>true</FromDHCP><DNSFromDHCP><Type>IPv4</Type>"
         "<IPv4Address>1.1.1.1</IPv4Address></DNSFromDHCP><DNSFromDHCP><Type>IPv4</Type>"
         "<IPv4Address>2.2.2.2</IPv4Address></DNSFromDHCP><DNSManual><Type>IPv4</Type>"
         "<IPv4Address>3.3.3.3</IPv4Address></DNSManual></DNSInformation></GetDNSResponse>",
         "<GetResponse><dns><status>success</status><dhcp>true</dhcp><ip>1.1.1.1</ip>"
         "<ip>3.3.3.3</ip></dns></GetResponse>"},
        {&kDnsResult,
         "<GetDNSResponse><DNSInformation><FromDHCP>false</FromDHCP><DNSFromDHCP><Type>IPv4</Type>"
         "<IPv4Address>1.1.1.1</IPv4Address></DNSFromDHCP><DNSManual><Type>IPv6</Type>"
         "<IPv4Address>4.4.4.4</IPv4Address></DNSManual><DNSManual><Type>IPv4</Type>"
         "<IPv4Address>3.3.3.3</IPv4Address></DNSManual></DNSInformation></GetDNSResponse>",
         "<GetResponse><dns><status>success</status><dhcp>false</dhcp><ip>3.3.3.3</ip></dns>"
         "</GetResponse>"},
        {&kNetworkProtocolsResult,
         "<GetNetworkProtocolsResponse><NetworkProtocols><Name>HTTP</Name><Enabled>true</Enabled>"
         "<Port>80</Port><Port>8080</Port></NetworkProtocols><NetworkProtocols><Name>FTP</Name>"
         "</NetworkProtocols><NetworkProtocols><Name>RTSP</Name><Enabled>false</Enabled>"
         "</NetworkProtocols></GetNetworkProtocolsResponse>",
         "<GetResponse><networkProtocols><status>success</status><http><enable>true</enable><port>"
         "80</port></http><rtsp><enable>false</enable></rtsp></networkProtocols></GetResponse>"},
        {&kNetworkProtocolsResult,
         "<Fault><Code><Value>Sender</Value><Subcode><Value>InvalidArgVal</Value></Subcode></Code>"
         "</Fault>",
         "<GetResponse><networkProtocols><status>fail<errorCode>31</errorCode></status>"
         "</networkProtocols></GetResponse>"},
        {&kStatusOnly<"dns">, "<SetDNSResponse/>",
         "<SetResponse><dns><status>success</status></dns></SetResponse>"},
    };
    for (const ResultCase& each : cases) {
        CResultDocument result;
        BuildResult(*each.frame, Envelope(each.body), {}, result);
        EXPECT_EQ(Compact(result.Print()), each.expected);
        EXPECT_TRUE(result.Print().starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
    }
}

TEST(Results, OneDocumentCarriesAllAnswers) {
    CResultDocument result;
    BuildResult(kDnsResult, "unparsable", {}, result);
    BuildResult(kDigitalInputsResult, Envelope("<a:Fault/>"), {}, result);
    BuildResult(kDnsResult, Envelope(""), {}, result);
    BuildResult(kStatusOnly<"dns">, Envelope(""), {},
                result);  // a second root finds its place below
    EXPECT_EQ(Compact(result.Print()),
              "<GetResponse><dns><status>success</status><status>success</status></dns><alarmin>"
              "<status>fail<errorCode>6</errorCode></status></alarmin><SetResponse><dns><status>"
              "success</status></dns></SetResponse></GetResponse>");
}

TEST(Results, ProfilesOfBothMediaServices) {
    const std::string encoder10 =
        "<VideoEncoderConfiguration token='E'><Name>enc</Name><UseCount>1</UseCount>"
        "<Encoding>H264</Encoding><Resolution><Width>640</Width><Height>480</Height></Resolution>"
        "<Quality>4</Quality><RateControl><FrameRateLimit>25</FrameRateLimit><EncodingInterval>1"
        "</EncodingInterval><BitrateLimit>2048</BitrateLimit></RateControl><H264><GovLength>50"
        "</GovLength><H264Profile>Main</H264Profile></H264><Multicast><Address><Type>IPv4</Type>"
        "<IPv4Address>0.0.0.0</IPv4Address></Address><Port>0</Port><TTL>1</TTL><AutoStart>false"
        "</AutoStart></Multicast><SessionTimeout>PT60S</SessionTimeout></"
        "VideoEncoderConfiguration>";
    const std::string encoder20 =
        "<VideoEncoder token='E' GovLength='50' Profile='Main'><Name>enc</Name><Encoding>H265"
        "</Encoding><RateControl ConstantBitRate='true'><FrameRateLimit>25</FrameRateLimit>"
        "</RateControl></VideoEncoder>";
    const struct {
        std::string profile;
        const char* expected;
    } cases[] = {
        {"<Profiles token='P' fixed='true'><Name>main</Name><VideoSourceConfiguration token='V'>"
         "<Name>v</Name><UseCount>2</UseCount><SourceToken>S</SourceToken><Bounds x='0' y='0'"
         " width='640' height='480'/></VideoSourceConfiguration>" +
             encoder10 + "</Profiles>",
         "<item><index>0</index><token>P</token><fixed>true</fixed><name>main</name>"
         "<videoSourceCfg><token>V</token><name>v</name><useCount>2</useCount><videoSourceToken>S"
         "</videoSourceToken><bounds><x>0</x><y>0</y><width>640</width><height>480</height>"
         "</bounds></videoSourceCfg><videoEncoderCfg><token>E</token><name>enc</name><useCount>1"
         "</useCount><encode>H264</encode><resolution><width>640</width><height>480</height>"
         "</resolution><quality>4</quality><frameRate>25</frameRate><encodingInterval>1"
         "</encodingInterval><bitrate>2048</bitrate><IFrameInterval>50</IFrameInterval><profile>"
         "Main</profile><multicast><address><type>IPv4</type><iPv4Address>0.0.0.0</iPv4Address>"
         "</address><port>0</port><tTL>1</tTL><autoStart>false</autoStart></multicast>"
         "<sessionTimeout>PT60S</sessionTimeout></videoEncoderCfg></item>"},
        {"<Profiles token='P'><Configurations>" + encoder20 +
             "<PTZ token='Z'><NodeToken>N</NodeToken></PTZ></Configurations></Profiles>",
         "<item><index>0</index><token>P</token><videoEncoderCfg><token>E</token><name>enc</name>"
         "<encode>H265</encode><frameRate>25</frameRate><constantBitRate>true</constantBitRate>"
         "<IFrameInterval>50</IFrameInterval><profile>Main</profile></videoEncoderCfg><ptzCfg>"
         "<token>Z</token><nodeToken>N</nodeToken></ptzCfg></item>"},
    };
    for (const auto& each : cases) {
        CResultDocument result;
        BuildResult(kProfilesResult,
                    Envelope("<GetProfilesResponse>" + each.profile + "</GetProfilesResponse>"), {},
                    result);
        EXPECT_EQ(Compact(result.Print()), "<GetResponse><profiles><status>success</status>" +
                                               std::string(each.expected) +
                                               "</profiles></GetResponse>");
    }
}

TEST(Results, DeviceTimeNeedsAllSixFields) {
    const std::string time =
        "<t:Time><t:Hour>8</t:Hour><t:Minute>5</t:Minute><t:Second>9</t:Second></t:Time>";
    const std::string reply =
        Envelope("<t:GetSystemDateAndTimeResponse><t:SystemDateAndTime><t:UTCDateTime>" + time +
                 "<t:Date><t:Year>2019</t:Year><t:Month>3</t:Month><t:Day>7</t:Day></t:Date>"
                 "</t:UTCDateTime></t:SystemDateAndTime></t:GetSystemDateAndTimeResponse>");
    std::string result;
    EXPECT_EQ(TransGetSystemDateAndTimeForAuthentication(reply, result), "2019-03-07T08:05:09Z");
    EXPECT_EQ(CreatedFromDeviceTime(result), "2019-03-07T08:05:09Z");

    std::string incomplete = reply;
    incomplete.erase(incomplete.find("<t:Second>"), std::string("<t:Second>9</t:Second>").size());
    std::string untouched = "before";
    EXPECT_EQ(TransGetSystemDateAndTimeForAuthentication(incomplete, untouched), "");
    EXPECT_EQ(untouched, "before");
    EXPECT_EQ(CreatedFromDeviceTime(""), "-00-00T00:00:00Z");
}

}  // namespace
}  // namespace onvif_client
