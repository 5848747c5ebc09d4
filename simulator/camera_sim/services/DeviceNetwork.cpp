// Device service: interfaces, gateway and ports.
#include <algorithm>
#include <array>
#include <utility>

#include "camera_sim/services/Services.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

constexpr std::size_t kLongestList = 16;
constexpr int kSmallestMtu = 576;
constexpr int kLargestMtu = 9000;
constexpr int kLargestPort = 65535;

SoapFault BadIpv4() {
    return InvalidArgument("InvalidIPv4Address", "Not an IPv4 address");
}
SoapFault TooMany() {
    return InvalidArgument({}, "Too many entries");
}

void WritePrefixed(CXmlWriter& out, std::string_view name, const PrefixedAddress& address) {
    const Scope element(out, Ns::kSchema, name);
    out.Element(Ns::kSchema, "Address", address.address);
    out.Element(Ns::kSchema, "PrefixLength", address.prefixLength);
}

void WriteLinkSettings(CXmlWriter& out, std::string_view name, const NetworkInterface& interface) {
    const Scope element(out, Ns::kSchema, name);
    out.Element(Ns::kSchema, "AutoNegotiation", interface.autoNegotiation);
    out.Element(Ns::kSchema, "Speed", interface.speed);
    out.Element(Ns::kSchema, "Duplex", interface.duplex);
}

Answer GetNetworkInterfaces(Call& call) {
    constexpr int kEthernet = 6;  // IANA interface type
    CXmlWriter& out = call.out;
    for (const NetworkInterface& interface : call.state.network.interfaces) {
        const Scope element(out, Ns::kDevice, "NetworkInterfaces");
        out.Attribute("token", interface.token);
        out.Element(Ns::kSchema, "Enabled", interface.enabled);
        {
            const Scope info(out, Ns::kSchema, "Info");
            out.Element(Ns::kSchema, "Name", interface.name);
            out.Element(Ns::kSchema, "HwAddress", interface.hwAddress);
            out.Element(Ns::kSchema, "MTU", interface.mtu);
        }
        {
            const Scope link(out, Ns::kSchema, "Link");
            WriteLinkSettings(out, "AdminSettings", interface);
            WriteLinkSettings(out, "OperSettings", interface);
            out.Element(Ns::kSchema, "InterfaceType", kEthernet);
        }
        const Scope ipv4(out, Ns::kSchema, "IPv4");
        out.Element(Ns::kSchema, "Enabled", interface.ipv4Enabled);
        const Scope config(out, Ns::kSchema, "Config");
        for (const PrefixedAddress& address : interface.manual) {
            WritePrefixed(out, "Manual", address);
        }
        if (interface.dhcp && interface.fromDhcp) {
            WritePrefixed(out, "FromDHCP", *interface.fromDhcp);
        }
        out.Element(Ns::kSchema, "DHCP", interface.dhcp);
    }
    return kDone;
}

/// Changes @p target when the child is there; false when its text is not a value of that kind.
bool ReadOptional(const XmlElement* parent, std::string_view name, bool& target) {
    if (Child(parent, name) == nullptr) {
        return true;
    }
    const auto value = ToBool(ChildText(parent, name));
    target = value.value_or(target);
    return value.has_value();
}

bool ReadOptional(const XmlElement* parent, std::string_view name, int& target) {
    if (Child(parent, name) == nullptr) {
        return true;
    }
    const auto value = ToInt(ChildText(parent, name));
    target = value.value_or(target);
    return value.has_value();
}

Answer ReadIpv4(const XmlElement* ipv4, NetworkInterface& interface) {
    if (!ReadOptional(ipv4, "Enabled", interface.ipv4Enabled) ||
        !ReadOptional(ipv4, "DHCP", interface.dhcp)) {
        return InvalidArgument({}, "Enabled and DHCP are true or false");
    }
    const auto manual = Children(ipv4, "Manual");
    if (manual.size() > kLongestList) {
        return TooMany();
    }
    std::vector<PrefixedAddress> addresses;
    for (const XmlElement* element : manual) {
        const std::string_view address = ChildText(element, "Address");
        if (!IsIpv4(address)) {
            return BadIpv4();
        }
        const auto prefixLength = ToInt(ChildText(element, "PrefixLength"));
        if (!prefixLength || *prefixLength < 0 || *prefixLength > 32) {
            return InvalidArgument({}, "PrefixLength is not between 0 and 32");
        }
        addresses.push_back({std::string(address), *prefixLength});
    }
    if (!addresses.empty()) {
        interface.manual = std::move(addresses);
    }
    return kDone;
}

Answer SetNetworkInterfaces(Call& call) {
    auto* interface = FindByToken(call.state.network.interfaces, call.Argument("InterfaceToken"));
    if (interface == nullptr) {
        return InvalidArgument("InvalidNetworkInterface", "No such network interface");
    }
    NetworkInterface changed = *interface;
    const XmlElement* wanted = Child(&call.request, "NetworkInterface");
    const XmlElement* link = Child(wanted, "Link");
    if (!ReadOptional(wanted, "Enabled", changed.enabled) ||
        !ReadOptional(link, "AutoNegotiation", changed.autoNegotiation) ||
        !ReadOptional(link, "Speed", changed.speed)) {
        return InvalidArgument("SettingNotSupported", "A setting is not of its kind");
    }
    if (const XmlElement* duplex = Child(link, "Duplex")) {
        changed.duplex = Text(duplex);
    }
    if (changed.duplex != "Full" && changed.duplex != "Half") {
        return InvalidArgument("SettingNotSupported", "Duplex is neither Full nor Half");
    }
    if (!ReadOptional(wanted, "MTU", changed.mtu) || changed.mtu < kSmallestMtu ||
        changed.mtu > kLargestMtu) {
        return InvalidArgument("InvalidMtuValue", "The MTU is out of range");
    }
    if (Answer fault = ReadIpv4(Child(wanted, "IPv4"), changed)) {
        return fault;
    }
    *interface = std::move(changed);
    call.out.Element(Ns::kDevice, "RebootNeeded", false);
    return kDone;
}

Answer GetNetworkDefaultGateway(Call& call) {
    const Scope gateway(call.out, Ns::kDevice, "NetworkGateway");
    for (const std::string& address : call.state.network.gatewaysIpv4) {
        call.out.Element(Ns::kSchema, "IPv4Address", address);
    }
    for (const std::string& address : call.state.network.gatewaysIpv6) {
        call.out.Element(Ns::kSchema, "IPv6Address", address);
    }
    return kDone;
}

Answer SetNetworkDefaultGateway(Call& call) {
    std::vector<std::string> ipv4;
    for (const XmlElement* address : Children(&call.request, "IPv4Address")) {
        ipv4.emplace_back(Text(address));
    }
    std::vector<std::string> ipv6;
    for (const XmlElement* address : Children(&call.request, "IPv6Address")) {
        ipv6.emplace_back(Text(address));
    }
    if (ipv4.size() > kLongestList || ipv6.size() > kLongestList) {
        return TooMany();
    }
    if (!std::all_of(ipv4.begin(), ipv4.end(), IsIpv4)) {
        return InvalidArgument("InvalidGatewayAddress", "Not an IPv4 address");
    }
    if (!std::all_of(ipv6.begin(), ipv6.end(), IsIpv6)) {
        return InvalidArgument("InvalidGatewayAddress", "Not an IPv6 address");
    }
    call.state.network.gatewaysIpv4 = std::move(ipv4);
    call.state.network.gatewaysIpv6 = std::move(ipv6);
    return kDone;
}

Answer GetNetworkProtocols(Call& call) {
    for (const NetworkProtocol& protocol : call.state.network.protocols) {
        const Scope element(call.out, Ns::kDevice, "NetworkProtocols");
        call.out.Element(Ns::kSchema, "Name", protocol.name);
        call.out.Element(Ns::kSchema, "Enabled", protocol.enabled);
        for (const int port : protocol.ports) {
            call.out.Element(Ns::kSchema, "Port", port);
        }
    }
    return kDone;
}

Answer SetNetworkProtocols(Call& call) {
    std::vector<NetworkProtocol> protocols = call.state.network.protocols;
    for (const XmlElement* wanted : Children(&call.request, "NetworkProtocols")) {
        const std::string_view name = ChildText(wanted, "Name");
        const auto protocol =
            std::find_if(protocols.begin(), protocols.end(),
                         [name](const auto& known) { return known.name == name; });
        if (protocol == protocols.end()) {
            return InvalidArgument("ServiceNotSupported", "No such protocol");
        }
        if (!ReadOptional(wanted, "Enabled", protocol->enabled)) {
            return InvalidArgument({}, "Enabled is neither true nor false");
        }
        const auto ports = Children(wanted, "Port");
        if (ports.size() > kLongestList) {
            return TooMany();
        }
        if (!ports.empty()) {
            protocol->ports.clear();
        }
        for (const XmlElement* element : ports) {
            const auto port = ToInt(Text(element));
            if (!port || *port < 1 || *port > kLargestPort) {
                return InvalidArgument({}, "The port is not between 1 and 65535");
            }
            protocol->ports.push_back(*port);
        }
    }
    call.state.network.protocols = std::move(protocols);
    return kDone;
}

constexpr std::array kOperations = {
    Operation{"GetNetworkInterfaces", GetNetworkInterfaces},
    Operation{"SetNetworkInterfaces", SetNetworkInterfaces},
    Operation{"GetNetworkDefaultGateway", GetNetworkDefaultGateway},
    Operation{"SetNetworkDefaultGateway", SetNetworkDefaultGateway},
    Operation{"GetNetworkProtocols", GetNetworkProtocols},
    Operation{"SetNetworkProtocols", SetNetworkProtocols},
};

}  // namespace

std::span<const Operation> DeviceNetworkOperations() {
    return kOperations;
}

}  // namespace camera_sim
