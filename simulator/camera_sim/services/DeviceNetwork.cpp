// Device service: interfaces, gateway, name servers and ports.
#include <algorithm>
#include <array>
#include <utility>
// Asio uses std::exchange without including it.
#include <boost/asio/ip/address.hpp>

#include "camera_sim/services/Services.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

constexpr std::size_t kLongestList = 16;
constexpr int kSmallestMtu = 576;
constexpr int kLargestMtu = 9000;
constexpr int kLargestPort = 65535;

bool IsIpv6(std::string_view text) {
    boost::system::error_code error;
    boost::asio::ip::make_address_v6(std::string(text), error);
    return !error;
}

bool IsDomainName(std::string_view text) {
    constexpr std::size_t kLongest = 253;
    constexpr std::string_view kAllowed =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-.";
    return !text.empty() && text.size() <= kLongest &&
           text.find_first_not_of(kAllowed) == std::string_view::npos;
}

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

void WriteIpAddress(CXmlWriter& out, std::string_view name, const std::string& address) {
    const bool ipv4 = IsIpv4(address);
    const Scope element(out, Ns::kSchema, name);
    out.Element(Ns::kSchema, "Type", ipv4 ? "IPv4" : "IPv6");
    out.Element(Ns::kSchema, ipv4 ? "IPv4Address" : "IPv6Address", address);
}

Answer GetDns(Call& call) {
    const NameServers& servers = call.state.network.nameServers;
    const Scope information(call.out, Ns::kDevice, "DNSInformation");
    call.out.Element(Ns::kSchema, "FromDHCP", servers.fromDhcp);
    for (const std::string& domain : servers.searchDomains) {
        call.out.Element(Ns::kSchema, "SearchDomain", domain);
    }
    if (servers.fromDhcp) {
        for (const std::string& address : servers.dhcpAddresses) {
            WriteIpAddress(call.out, "DNSFromDHCP", address);
        }
    }
    for (const std::string& address : servers.manualAddresses) {
        WriteIpAddress(call.out, "DNSManual", address);
    }
    return kDone;
}

/// Reads the addresses of that name; without any, @p target stays.
Answer ReadAddresses(const XmlElement& request, std::string_view name,
                     std::vector<std::string>& target) {
    const auto elements = Children(&request, name);
    if (elements.size() > kLongestList) {
        return TooMany();
    }
    std::vector<std::string> addresses;
    for (const XmlElement* element : elements) {
        const bool ipv6 = ChildText(element, "Type") == "IPv6";
        const std::string_view address = ChildText(element, ipv6 ? "IPv6Address" : "IPv4Address");
        if (ipv6 && !IsIpv6(address)) {
            return InvalidArgument("InvalidIPv6Address", "Not an IPv6 address");
        }
        if (!ipv6 && !IsIpv4(address)) {
            return BadIpv4();
        }
        addresses.emplace_back(address);
    }
    if (!addresses.empty()) {
        target = std::move(addresses);
    }
    return kDone;
}

// Addresses from DHCP are no part of the request's schema, but some clients send them.
Answer SetDns(Call& call) {
    NameServers servers = call.state.network.nameServers;
    const auto fromDhcp = ToBool(call.Argument("FromDHCP"));
    if (!fromDhcp) {
        return InvalidArgument({}, "FromDHCP is neither true nor false");
    }
    servers.fromDhcp = *fromDhcp;
    const auto domains = Children(&call.request, "SearchDomain");
    if (domains.size() > kLongestList) {
        return TooMany();
    }
    if (!domains.empty()) {
        servers.searchDomains.clear();
    }
    for (const XmlElement* domain : domains) {
        if (!IsDomainName(Text(domain))) {
            return InvalidArgument("InvalidDnsName", "Not a domain name");
        }
        servers.searchDomains.emplace_back(Text(domain));
    }
    if (Answer fault = ReadAddresses(call.request, "DNSManual", servers.manualAddresses)) {
        return fault;
    }
    if (Answer fault = ReadAddresses(call.request, "DNSFromDHCP", servers.dhcpAddresses)) {
        return fault;
    }
    call.state.network.nameServers = std::move(servers);
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

Answer GetHostname(Call& call) {
    const Scope information(call.out, Ns::kDevice, "HostnameInformation");
    call.out.Element(Ns::kSchema, "FromDHCP", false);
    call.out.Element(Ns::kSchema, "Name", call.state.network.hostname);
    return kDone;
}

constexpr std::array kOperations = {
    Operation{"GetNetworkInterfaces", GetNetworkInterfaces},
    Operation{"SetNetworkInterfaces", SetNetworkInterfaces},
    Operation{"GetNetworkDefaultGateway", GetNetworkDefaultGateway},
    Operation{"SetNetworkDefaultGateway", SetNetworkDefaultGateway},
    Operation{"GetDNS", GetDns},
    Operation{"SetDNS", SetDns},
    Operation{"GetNetworkProtocols", GetNetworkProtocols},
    Operation{"SetNetworkProtocols", SetNetworkProtocols},
    Operation{"GetHostname", GetHostname},
};

}  // namespace

std::span<const Operation> DeviceNetworkOperations() {
    return kOperations;
}

}  // namespace camera_sim
