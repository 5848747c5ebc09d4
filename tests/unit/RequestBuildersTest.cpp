#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "commands/DeviceRequests.h"
#include "commands/ServiceRequests.h"
#include "support/OwnFile.h"
#include "unit/Texts.h"

namespace onvif_client {
namespace {

using client_test::Body;

TEST(RequestBuilders, WriteTheParametersOfTheRequest) {
    const std::string schema = "xmlns=\"http://www.onvif.org/ver10/schema\"";
    const std::string device = "xmlns=\"http://www.onvif.org/ver10/device/wsdl\"";
    const struct {
        RequestBuilder build;
        const char* command;
        std::string body;
    } cases[] = {
        {BuildSetNetworkInterfaces,
         "<ipv4><token>eth0</token><dhcp>false</dhcp><ip>10.0.0.5</ip><netmask>255.255.255.0"
         "</netmask></ipv4>",
         "<tds:SetNetworkInterfaces><tds:InterfaceToken>eth0</tds:InterfaceToken>"
         "<tds:NetworkInterface><tt:IPv4><tt:DHCP>false</tt:DHCP><tt:Enabled>true</tt:Enabled>"
         "<tt:Manual><tt:Address>10.0.0.5</tt:Address><tt:PrefixLength>24</tt:PrefixLength>"
         "</tt:Manual></tt:IPv4></tds:NetworkInterface></tds:SetNetworkInterfaces>"},
        {BuildSetNetworkInterfaces, "<ipv4><dhcp>true</dhcp><ip>10.0.0.5</ip></ipv4>",
         "<tds:SetNetworkInterfaces><tds:InterfaceToken/><tds:NetworkInterface>"
         "<tt:IPv4><tt:DHCP>true</tt:DHCP><tt:Enabled>true</tt:Enabled></tt:IPv4>"
         "</tds:NetworkInterface></tds:SetNetworkInterfaces>"},
        {BuildSetDefaultGateway, "<ipv4><gateway>10.0.0.1</gateway></ipv4>",
         "<tds:SetNetworkDefaultGateway><tds:IPv4Address>10.0.0.1</tds:IPv4Address>"
         "</tds:SetNetworkDefaultGateway>"},
        {BuildSetDns, "<dns><dhcp>false</dhcp><ip>1.1.1.1</ip></dns>",
         "<tds:SetDNS><tds:FromDHCP>false</tds:FromDHCP><tds:DNSManual><tt:Type>IPv4</tt:Type>"
         "<tt:IPv4Address>1.1.1.1</tt:IPv4Address></tds:DNSManual></tds:SetDNS>"},
        {BuildSetDns, "<dns><dhcp>true</dhcp></dns>",
         "<tds:SetDNS><tds:FromDHCP>true</tds:FromDHCP><tds:DNSFromDHCP><tt:Type>IPv4</tt:Type>"
         "<tt:IPv4Address/></tds:DNSFromDHCP></tds:SetDNS>"},
        {BuildSetNetworkProtocols,
         "<networkProtocols><http><port>080</port></http><rtsp><port>554</port></rtsp>"
         "</networkProtocols>",
         "<tds:SetNetworkProtocols><tds:NetworkProtocols><tt:Name>RTSP</tt:Name><tt:Enabled>true"
         "</tt:Enabled><tt:Port>554</tt:Port></tds:NetworkProtocols><tds:NetworkProtocols>"
         "<tt:Name>HTTP</tt:Name><tt:Enabled>true</tt:Enabled><tt:Port>80</tt:Port>"
         "</tds:NetworkProtocols></tds:SetNetworkProtocols>"},
        {BuildSetSystemDateAndTime,
         "<dateAndTime><type>Manual</type><daylightSaving><switch>on</switch></daylightSaving>"
         "<timeZone><tz>CET-1</tz></timeZone><time><hour>08</hour><minute>x</minute><second>9"
         "</second></time><date><year>2019</year><month>07</month><day>1</day></date></"
         "dateAndTime>",
         "<SetSystemDateAndTime " + device +
             "><DateTimeType>Manual</DateTimeType><DaylightSavings>true</DaylightSavings><TimeZone>"
             "<TZ " +
             schema + ">CET-1</TZ></TimeZone><UTCDateTime><Time " + schema +
             "><Hour>8</Hour><Minute>0</Minute><Second>9</Second></Time><Date " + schema +
             "><Year>2019</Year><Month>7</Month><Day>1</Day></Date></UTCDateTime>"
             "</SetSystemDateAndTime>"},
        {BuildSetSystemDateAndTime, "<dateAndTime><type>NTP</type></dateAndTime>",
         "<SetSystemDateAndTime " + device +
             "><DateTimeType>NTP</DateTimeType><DaylightSavings>false</DaylightSavings><TimeZone>"
             "<TZ " +
             schema + "/></TimeZone></SetSystemDateAndTime>"},
        {BuildSetRelayOutputSettings,
         "<alarmout><token>R1</token><delayTime>5</delayTime><switch>on</switch></alarmout>",
         "<tds:SetRelayOutputSettings><tds:RelayOutputToken>R1</tds:RelayOutputToken>"
         "<tds:Properties><tt:Mode>Monostable</tt:Mode><tt:DelayTime>PT5S</tt:DelayTime>"
         "<tt:IdleState>open</tt:IdleState></tds:Properties></tds:SetRelayOutputSettings>"},
        {BuildSetRelayOutputSettings, "<alarmout><delayTime>-1</delayTime></alarmout>",
         "<tds:SetRelayOutputSettings><tds:RelayOutputToken>Alarm1</tds:RelayOutputToken>"
         "<tds:Properties><tt:Mode>Monostable</tt:Mode><tt:DelayTime>PT0S</tt:DelayTime>"
         "<tt:IdleState>closed</tt:IdleState></tds:Properties></tds:SetRelayOutputSettings>"},
        {BuildSetRelayOutputState, "<m><token>R1</token><active>1</active></m>",
         "<tds:SetRelayOutputState><tds:RelayOutputToken>R1</tds:RelayOutputToken>"
         "<tds:LogicalState>active</tds:LogicalState></tds:SetRelayOutputState>"},
        {BuildSetRelayOutputState, "<m><active>true</active></m>",
         "<tds:SetRelayOutputState><tds:RelayOutputToken/>"
         "<tds:LogicalState>inactive</tds:LogicalState></tds:SetRelayOutputState>"},
        {BuildSetRelayOutputState, "<m><token>a&lt;b&amp;c</token></m>",
         "<tds:SetRelayOutputState><tds:RelayOutputToken>a&lt;b&amp;c</tds:RelayOutputToken>"
         "<tds:LogicalState/></tds:SetRelayOutputState>"},
    };
    for (const auto& each : cases) {
        const CXmlDocument request(each.command);
        EXPECT_EQ(Body(each.build({request.Root()})), each.body) << each.command;
    }
}

TEST(RequestBuilders, LoginRequestsCarryTheirTokens) {
    EXPECT_EQ(Body(BuildGetCapabilities("Media")),
              "<GetCapabilities xmlns=\"http://www.onvif.org/ver10/device/wsdl\">"
              "<Category>Media</Category></GetCapabilities>");
    EXPECT_EQ(Body(BuildGetPtzOptions("Z")),
              "<ptzw:GetConfigurationOptions><ptzw:ConfigurationToken>Z</ptzw:ConfigurationToken>"
              "</ptzw:GetConfigurationOptions>");
    EXPECT_EQ(Body(BuildGetMoveOptions("S")),
              "<img:GetMoveOptions><img:VideoSourceToken>S</img:VideoSourceToken>"
              "</img:GetMoveOptions>");
    const std::string time =
        "<tds:UTCDateTime><tt:Time><tt:Hour>8</tt:Hour><tt:Minute>5</tt:Minute><tt:Second>9"
        "</tt:Second></tt:Time><tt:Date><tt:Year>2019</tt:Year><tt:Month>3</tt:Month><tt:Day>7"
        "</tt:Day></tt:Date></tds:UTCDateTime></tds:SetSystemDateAndTime>";
    const std::string start =
        "<tds:SetSystemDateAndTime><tds:DateTimeType>Manual</tds:DateTimeType>"
        "<tds:DaylightSavings>false</tds:DaylightSavings>";
    const CalendarTime utc{2019, 3, 7, 8, 5, 9};
    EXPECT_EQ(Body(BuildLoginClockSetting(utc, std::nullopt)), start + time);
    EXPECT_EQ(Body(BuildLoginClockSetting(utc, "CET-1")),
              start + "<tds:TimeZone><tt:TZ>CET-1</tt:TZ></tds:TimeZone>" + time);
}

TEST(RequestBuilders, TheLocalTimeZoneComesFromItsFile) {
    const std::string file = client_test::OwnFile("timeInfo.xml");
    const std::pair<const char*, std::optional<std::string>> cases[] = {
        {"<response><content><timezoneInfo><timeZone>CST-8</timeZone></timezoneInfo></content>"
         "</response>",
         "CST-8"},
        {"<response><content/></response>", std::nullopt},
        {"garbage", std::nullopt},
    };
    for (const auto& [text, zone] : cases) {
        std::ofstream(file) << text;
        EXPECT_EQ(ReadLocalTimeZone(file.c_str()), zone) << text;
    }
    std::remove(file.c_str());
    EXPECT_EQ(ReadLocalTimeZone(file.c_str()), std::nullopt);
}

}  // namespace
}  // namespace onvif_client
