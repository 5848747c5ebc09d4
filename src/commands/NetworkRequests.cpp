#include "commands/DeviceRequests.h"
#include "commands/Envelope.h"
#include "commands/EnvelopeFiller.h"
#include "transform/Conversions.h"

namespace onvif_client {

namespace {

constexpr auto kGetNetworkInterfaces = SoapEnvelope(kTds, FixedText("<tds:GetNetworkInterfaces/>"));
constexpr auto kGetDefaultGateway =
    SoapEnvelope(kTds, FixedText("<tds:GetNetworkDefaultGateway/>"));
constexpr auto kGetDns = SoapEnvelope(kTds, FixedText("<tds:GetDNS/>"));
constexpr auto kGetNetworkProtocols = SoapEnvelope(kTds, FixedText("<tds:GetNetworkProtocols/>"));

constexpr auto kSetNetworkInterfaces = SoapEnvelope(
    kTds + kTt,
    FixedText("<tds:SetNetworkInterfaces><tds:InterfaceToken/><tds:NetworkInterface><tt:IPv4>"
              "<tt:DHCP/><tt:Enabled>true</tt:Enabled></tt:IPv4></tds:NetworkInterface>"
              "</tds:SetNetworkInterfaces>"));

constexpr auto kSetDefaultGateway =
    SoapEnvelope(kTds, FixedText("<tds:SetNetworkDefaultGateway><tds:IPv4Address/>"
                                 "</tds:SetNetworkDefaultGateway>"));

constexpr auto kSetDns =
    SoapEnvelope(kTds + kTt, FixedText("<tds:SetDNS><tds:FromDHCP/></tds:SetDNS>"));

constexpr auto kSetNetworkProtocols =
    SoapEnvelope(kTds + kTt, FixedText("<tds:SetNetworkProtocols/>"));

}  // namespace

std::string BuildGetNetworkInterfaces(const CommandRequest&) {
    return std::string(kGetNetworkInterfaces);
}

std::string BuildGetDefaultGateway(const CommandRequest&) {
    return std::string(kGetDefaultGateway);
}

std::string BuildGetDns(const CommandRequest&) {
    return std::string(kGetDns);
}

std::string BuildGetNetworkProtocols(const CommandRequest&) {
    return std::string(kGetNetworkProtocols);
}

std::string BuildSetNetworkInterfaces(const CommandRequest& request) {
    CEnvelopeFiller envelope(kSetNetworkInterfaces, "tds:SetNetworkInterfaces");
    envelope.Set("tds:InterfaceToken", request.Text("token"));
    envelope.Set("tds:NetworkInterface/tt:IPv4/tt:DHCP", request.Text("dhcp"));
    if (request.Text("dhcp") == "false") {
        XMLElement* manual =
            envelope.Add(envelope.Find("tds:NetworkInterface/tt:IPv4"), "tt:Manual");
        envelope.Add(manual, "tt:Address", request.Text("ip"));
        envelope.Add(manual, "tt:PrefixLength",
                     std::to_string(NetmaskToPrefixLength(request.Text("netmask"))));
    }
    return envelope.Print();
}

std::string BuildSetDefaultGateway(const CommandRequest& request) {
    CEnvelopeFiller envelope(kSetDefaultGateway, "tds:SetNetworkDefaultGateway");
    envelope.Set("tds:IPv4Address", request.Text("gateway"));
    return envelope.Print();
}

std::string BuildSetDns(const CommandRequest& request) {
    CEnvelopeFiller envelope(kSetDns, "tds:SetDNS");
    envelope.Set("tds:FromDHCP", request.Text("dhcp"));
    XMLElement* address =
        envelope.Add(envelope.Operation(),
                     request.Text("dhcp") == "false" ? "tds:DNSManual" : "tds:DNSFromDHCP");
    envelope.Add(address, "tt:Type", "IPv4");
    envelope.Add(address, "tt:IPv4Address", request.Text("ip"));
    return envelope.Print();
}

std::string BuildSetNetworkProtocols(const CommandRequest& request) {
    constexpr struct {
        const char* parameter;
        const char* name;
    } kProtocols[] = {{"rtsp", "RTSP"}, {"http", "HTTP"}};

    CEnvelopeFiller envelope(kSetNetworkProtocols, "tds:SetNetworkProtocols");
    for (const auto& protocol : kProtocols) {
        const XMLElement* parameter = FirstChild(request.command, protocol.parameter);
        if (parameter == nullptr) {
            continue;
        }
        const auto port = static_cast<std::uint32_t>(ToInt(TextAt(parameter, "port")));
        XMLElement* entry = envelope.Add(envelope.Operation(), "tds:NetworkProtocols");
        envelope.Add(entry, "tt:Name", protocol.name);
        envelope.Add(entry, "tt:Enabled", "true");
        envelope.Add(entry, "tt:Port", std::to_string(port));
    }
    return envelope.Print();
}

}  // namespace onvif_client
