#include "commands/Envelope.h"
#include "commands/EnvelopeFiller.h"
#include "commands/StandardRequests.h"
#include "transform/Conversions.h"

namespace onvif_client {

namespace {

constexpr auto kSetNetworkInterfaces = SoapEnvelope(
    kTds + kTt,
    FixedText("<tds:SetNetworkInterfaces><tds:InterfaceToken/><tds:NetworkInterface><tt:IPv4>"
              "<tt:Enabled>true</tt:Enabled></tt:IPv4></tds:NetworkInterface>"
              "</tds:SetNetworkInterfaces>"));

constexpr auto kSetDns =
    SoapEnvelope(kTds + kTt, FixedText("<tds:SetDNS><tds:FromDHCP/></tds:SetDNS>"));

constexpr auto kSetRelayOutputSettings = SoapEnvelope(
    kDio + kTt, FixedText("<dio:SetRelayOutputSettings><dio:RelayOutput><tt:Properties>"
                          "<tt:Mode>Monostable</tt:Mode></tt:Properties></dio:RelayOutput>"
                          "</dio:SetRelayOutputSettings>"));

}  // namespace

std::string BuildStandardSetNetworkInterfaces(const CommandRequest& request) {
    CEnvelopeFiller envelope(kSetNetworkInterfaces, "tds:SetNetworkInterfaces");
    envelope.Set("tds:InterfaceToken", request.Text("token"));
    XMLElement* ipv4 = envelope.Find("tds:NetworkInterface/tt:IPv4");
    const std::string dhcp = request.Text("dhcp");
    if (dhcp == "false") {
        XMLElement* manual = envelope.Add(ipv4, "tt:Manual");
        envelope.Add(manual, "tt:Address", request.Text("ip"));
        envelope.Add(manual, "tt:PrefixLength",
                     std::to_string(NetmaskToPrefixLength(request.Text("netmask"))));
    }
    if (!dhcp.empty()) {
        envelope.Add(ipv4, "tt:DHCP", dhcp);
    }
    return envelope.Print();
}

std::string BuildStandardSetDns(const CommandRequest& request) {
    CEnvelopeFiller envelope(kSetDns, "tds:SetDNS");
    envelope.Set("tds:FromDHCP", request.Text("dhcp") == "false" ? "false" : "true");
    if (const std::string ip = request.Text("ip"); !ip.empty()) {
        XMLElement* address = envelope.Add(envelope.Operation(), "tds:DNSManual");
        envelope.Add(address, "tt:Type", "IPv4");
        envelope.Add(address, "tt:IPv4Address", ip);
    }
    return envelope.Print();
}

std::string BuildSetRelayOutputSettingsOfDeviceIo(const CommandRequest& request) {
    CEnvelopeFiller envelope(kSetRelayOutputSettings, "dio:SetRelayOutputSettings");
    XMLElement* relay = envelope.Find("dio:RelayOutput");
    relay->SetAttribute("token", request.Has("token") ? request.Text("token").c_str() : "Alarm1");
    const int delay = ToInt(request.Text("delayTime"));
    XMLElement* properties = FirstChild(relay, "tt:Properties");
    envelope.Add(properties, "tt:DelayTime", "PT" + std::to_string(delay == -1 ? 0 : delay) + "S");
    envelope.Add(properties, "tt:IdleState", request.Text("switch") == "on" ? "open" : "closed");
    return envelope.Print();
}

}  // namespace onvif_client
