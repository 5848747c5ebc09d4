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
