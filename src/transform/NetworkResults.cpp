#include "common/LogText.h"
#include "transform/Conversions.h"
#include "transform/DeviceResults.h"

namespace onvif_client {

namespace {

void CopyNetworkInterface(const XMLElement* interface, XMLElement* command) {
    XMLElement* item = Append(command, "item");
    if (item == nullptr) {
        LogAssert(logpoint::kInterfaceWalk);
        return;
    }
    if (const char* token = AttributeOf(interface, "token")) {
        item->SetAttribute("token", token);
    }
    const XMLElement* config = FindElement(interface, "IPv4/Config");
    const XMLElement* dhcp = FirstChild(config, "DHCP");
    if (dhcp != nullptr) {
        Append(item, "dhcp", TextOf(dhcp));
    }
    if (TextOf(dhcp) != "false") {
        return;
    }
    if (const XMLElement* address = FindElement(config, "Manual/Address")) {
        Append(item, "ip", TextOf(address));
    }
    if (const XMLElement* length = FindElement(config, "Manual/PrefixLength")) {
        Append(item, "netmask", PrefixLengthToNetmask(ToInt(TextOf(length))));
    }
}

void CopyNetworkInterfaces(const ReplyValues& reply, XMLElement* command) {
    const XMLElement* response =
        FindElement(reply.envelope, "Envelope/Body/GetNetworkInterfacesResponse");
    for (const XMLElement* each : Children(response, "NetworkInterfaces")) {
        CopyNetworkInterface(each, command);
    }
}

void CopyDefaultGateway(const ReplyValues& reply, XMLElement* command) {
    constexpr CopiedValue kRows[] = {{"IPv4Address", "gateway"}};
    CopyValues(FindElement(reply.envelope,
                           "Envelope/Body/GetNetworkDefaultGatewayResponse/NetworkGateway"),
               command, kRows);
}

void CopyDns(const ReplyValues& reply, XMLElement* command) {
    constexpr std::string_view kManual = "DNSManual";
    const XMLElement* dns =
        FindElement(reply.envelope, "Envelope/Body/GetDNSResponse/DNSInformation");
    const XMLElement* fromDhcp = FirstChild(dns, "FromDHCP");
    if (fromDhcp != nullptr) {
        Append(command, "dhcp", TextOf(fromDhcp));
    }
    // Only the first address from DHCP is listed, then the manual ones that follow it.
    const XMLElement* entry =
        FirstChild(dns, TextOf(fromDhcp) == "true" ? std::string_view("DNSFromDHCP") : kManual);
    for (; entry != nullptr; entry = NextSibling(entry, kManual)) {
        const XMLElement* address = FirstChild(entry, "IPv4Address");
        if (address != nullptr && TextAt(entry, "Type") == "IPv4") {
            Append(command, "ip", TextOf(address));
        }
    }
}

void CopyNetworkProtocols(const ReplyValues& reply, XMLElement* command) {
    constexpr struct {
        std::string_view name;
        std::string_view element;
    } kNames[] = {{"HTTP", "http"}, {"HTTPS", "https"}, {"RTSP", "rtsp"}};
    constexpr CopiedValue kRows[] = {{"Enabled", "enable"}, {"Port", "port"}};

    const XMLElement* response =
        FindElement(reply.envelope, "Envelope/Body/GetNetworkProtocolsResponse");
    for (const XMLElement* each : Children(response, "NetworkProtocols")) {
        for (const auto& known : kNames) {
            if (TextAt(each, "Name") == known.name) {
                CopyValues(each, Append(command, known.element), kRows);
            }
        }
    }
}

void CopyRebootNeeded(const ReplyValues& reply, XMLElement* command) {
    constexpr CopiedValue kRows[] = {{"RebootNeeded", "rebootNeeded"}};
    CopyValues(FindElement(reply.envelope, "Envelope/Body/SetNetworkInterfacesResponse"),
               FirstChild(command, "status"), kRows);
}

}  // namespace

constinit const ResultFrame kNetworkInterfacesResult = {"GetResponse", "ipv4",
                                                        CopyNetworkInterfaces};
constinit const ResultFrame kDefaultGatewayResult = {
    .root = "GetResponse",
    .element = "ipv4",
    .copyValues = CopyDefaultGateway,
    .statusPlace = StatusPlace::kWrapper,
    .statusWrapper = "gatewayStatus",
};
constinit const ResultFrame kDnsResult = {"GetResponse", "dns", CopyDns};
constinit const ResultFrame kNetworkProtocolsResult = {
    "GetResponse", "networkProtocols", CopyNetworkProtocols, FaultReader::kWithInvalidArgument};
constinit const ResultFrame kSetNetworkInterfacesResult = {"SetResponse", "ipv4", CopyRebootNeeded};
constinit const ResultFrame kSetDefaultGatewayResult = {
    .root = "SetResponse", .element = "ipv4", .statusPlace = StatusPlace::kNowhere};

}  // namespace onvif_client
