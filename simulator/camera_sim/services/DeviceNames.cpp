// Device service: the camera's name, its name servers and its time servers.
#include <array>
#include <utility>

#include "camera_sim/services/Services.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

constexpr std::size_t kLongestList = 16;

bool IsDomainName(std::string_view text) {
    constexpr std::size_t kLongest = 253;
    constexpr std::string_view kAllowed =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-.";
    return !text.empty() && text.size() <= kLongest &&
           text.find_first_not_of(kAllowed) == std::string_view::npos;
}

SoapFault TooMany() {
    return InvalidArgument({}, "Too many entries");
}

/// An address or, where there may be one, a name.
void WriteHost(CXmlWriter& out, std::string_view element, const std::string& host) {
    struct Form {
        std::string_view type;
        std::string_view child;
    };
    Form form{"DNS", "DNSname"};
    if (IsIpv4(host)) {
        form = {"IPv4", "IPv4Address"};
    } else if (IsIpv6(host)) {
        form = {"IPv6", "IPv6Address"};
    }
    const Scope scope(out, Ns::kSchema, element);
    out.Element(Ns::kSchema, "Type", form.type);
    out.Element(Ns::kSchema, form.child, host);
}

/// Reads the hosts of that name; without any, @p target stays.
Answer ReadHosts(const Call& call, std::string_view name, bool namesAllowed,
                 std::vector<std::string>& target) {
    const auto elements = Children(&call.request, name);
    if (elements.size() > kLongestList) {
        return TooMany();
    }
    std::vector<std::string> hosts;
    for (const XmlElement* element : elements) {
        const std::string_view type = ChildText(element, "Type");
        if (type == "IPv6") {
            hosts.emplace_back(ChildText(element, "IPv6Address"));
            if (!IsIpv6(hosts.back())) {
                return InvalidArgument("InvalidIPv6Address", "Not an IPv6 address");
            }
        } else if (type == "DNS" && namesAllowed) {
            hosts.emplace_back(ChildText(element, "DNSname"));
            if (!IsDomainName(hosts.back())) {
                return InvalidArgument("InvalidDnsName", "Not a domain name");
            }
        } else {
            hosts.emplace_back(ChildText(element, "IPv4Address"));
            if (!IsIpv4(hosts.back())) {
                return InvalidArgument("InvalidIPv4Address", "Not an IPv4 address");
            }
        }
    }
    if (!hosts.empty()) {
        target = std::move(hosts);
    }
    return kDone;
}

Answer GetHostname(Call& call) {
    const Scope information(call.out, Ns::kDevice, "HostnameInformation");
    call.out.Element(Ns::kSchema, "FromDHCP", false);
    call.out.Element(Ns::kSchema, "Name", call.state.network.hostname);
    return kDone;
}

Answer SetHostname(Call& call) {
    const std::string_view name = call.Argument("Name");
    if (!IsDomainName(name)) {
        return InvalidArgument("InvalidHostname", "Not a host name");
    }
    call.state.network.hostname = name;
    return kDone;
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
            WriteHost(call.out, "DNSFromDHCP", address);
        }
    }
    for (const std::string& address : servers.manualAddresses) {
        WriteHost(call.out, "DNSManual", address);
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
    if (Answer fault = ReadHosts(call, "DNSManual", false, servers.manualAddresses)) {
        return fault;
    }
    if (Answer fault = ReadHosts(call, "DNSFromDHCP", false, servers.dhcpAddresses)) {
        return fault;
    }
    call.state.network.nameServers = std::move(servers);
    return kDone;
}

Answer GetNtp(Call& call) {
    const TimeServers& servers = call.state.network.timeServers;
    const Scope information(call.out, Ns::kDevice, "NTPInformation");
    call.out.Element(Ns::kSchema, "FromDHCP", servers.fromDhcp);
    for (const std::string& host : servers.fromDhcp ? servers.dhcpHosts : servers.manualHosts) {
        WriteHost(call.out, servers.fromDhcp ? "NTPFromDHCP" : "NTPManual", host);
    }
    return kDone;
}

Answer SetNtp(Call& call) {
    TimeServers servers = call.state.network.timeServers;
    const auto fromDhcp = ToBool(call.Argument("FromDHCP"));
    if (!fromDhcp) {
        return InvalidArgument({}, "FromDHCP is neither true nor false");
    }
    servers.fromDhcp = *fromDhcp;
    if (Answer fault = ReadHosts(call, "NTPManual", true, servers.manualHosts)) {
        return fault;
    }
    call.state.network.timeServers = std::move(servers);
    return kDone;
}

constexpr std::array kOperations = {
    Operation{"GetHostname", GetHostname}, Operation{"SetHostname", SetHostname},
    Operation{"GetDNS", GetDns},           Operation{"SetDNS", SetDns},
    Operation{"GetNTP", GetNtp},           Operation{"SetNTP", SetNtp},
};

}  // namespace

std::span<const Operation> DeviceNamesOperations() {
    return kOperations;
}

}  // namespace camera_sim
