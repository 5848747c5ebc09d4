// The subcommand discover: which devices there are in the network.
#include <charconv>
#include <functional>
#include <map>
#include <memory>

#include "CommandLine.h"
#include "discovery/DeviceLists.h"
#include "discovery/Search.h"
#include "system/HostName.h"
#include "system/Interruption.h"

namespace onvifctl {

namespace {

struct DiscoverArguments {
    std::vector<std::string> hosts;
    std::string interface;
    double seconds = 3;
    std::string format = "table";
};

using ListFormat = std::string (*)(const std::vector<FoundDevice>&);
const std::map<std::string, ListFormat> kFormats = {
    {"table", DeviceTable}, {"json", DeviceJson}, {"hosts", DeviceHosts}};

/// HOST or HOST:PORT; the name is not looked up yet.
ProbeTarget ReadTarget(const std::string& host) {
    ProbeTarget target;
    const std::size_t colon = std::min(host.find(':'), host.size());
    target.to = host.substr(0, colon);
    const char* end = host.data() + host.size();
    if (colon < host.size()) {
        const auto [stop, error] = std::from_chars(host.data() + colon + 1, end, target.port);
        if (error != std::errc() || stop != end) {
            target.port = 0;
        }
    }
    if (target.port == 0 || target.to.empty()) {
        throw CFailure(ExitCode::kUsage, "'" + host + "' is not HOST or HOST:PORT");
    }
    return target;
}

/// Names without an address are told and left out.
std::vector<ProbeTarget> NamedTargets(const std::vector<std::string>& hosts) {
    std::vector<ProbeTarget> named(hosts.size());
    std::transform(hosts.begin(), hosts.end(), named.begin(), ReadTarget);
    std::vector<ProbeTarget> targets;
    for (ProbeTarget& target : named) {
        const auto address = DottedAddressOf(target.to);
        if (address) {
            target.to = *address;
            targets.push_back(std::move(target));
        } else {
            Tell("no IPv4 address is known for '" + target.to + "'");
        }
    }
    return targets;
}

/// The group, from every interface that can multicast or from the wanted one.
std::vector<ProbeTarget> GroupTargets(const std::string& wanted) {
    std::vector<ProbeTarget> targets;
    for (const NetworkInterface& each : NetworkInterfaces()) {
        if (wanted.empty() ? each.multicasts : wanted == each.name || wanted == each.address) {
            targets.emplace_back().from = each.address;
        }
    }
    if (targets.empty() && !wanted.empty()) {
        throw CFailure(ExitCode::kUsage, "no interface with an IPv4 address is called '" + wanted +
                                             "' or has that address");
    }
    return targets;
}

/// Until the time is over or a signal comes.
void Follow(CSearch& search, const CDataOutput& output, CSearch::Clock::time_point end) {
    constexpr int kMostLeft = 1000;
    const CInterruption interruption;
    const bool showsProgress = output.Terminal().has_value();
    std::string shown;
    while (CSearch::Clock::now() < end && interruption.Wait({}) == 0) {
        search.GoOn(end);
        const auto left = std::chrono::ceil<std::chrono::seconds>(end - CSearch::Clock::now());
        const std::string progress = "\r" + std::to_string(search.Count()) + " found, " +
                                     std::to_string(left.count()) + " s left\x1b[K";
        if (showsProgress && progress != shown) {
            output.WriteToTerminal(progress);
            shown = progress;
        }
    }
    // What came in time and waits to be read counts, too.
    for (int left = kMostLeft; left > 0 && search.GoOn(CSearch::Clock::now()); --left) {
    }
    if (showsProgress) {
        output.WriteToTerminal("\r\x1b[K");
    }
}

ExitCode Discover(const DiscoverArguments& arguments) {
    const auto targets =
        arguments.hosts.empty() ? GroupTargets(arguments.interface) : NamedTargets(arguments.hosts);
    if (targets.empty()) {
        throw CFailure(ExitCode::kUnreachable, arguments.hosts.empty()
                                                   ? "no interface is up that can multicast"
                                                   : "there is nobody to ask");
    }
    const CDataOutput output{};
    CSearch search(targets);
    Follow(search, output,
           CSearch::Clock::now() +
               std::chrono::milliseconds(static_cast<std::int64_t>(arguments.seconds * 1000)));
    if (search.Count() == 0) {
        throw CFailure(ExitCode::kUnreachable, "no device has answered");
    }
    output.Write(kFormats.at(arguments.format)(search.Devices()));
    return ExitCode::kDone;
}

}  // namespace

void AddDiscover(CLI::App& app, CommandLine& line) {
    constexpr double kHour = 3600;
    auto arguments = std::make_shared<DiscoverArguments>();
    CLI::App* discover = app.add_subcommand(
        "discover",
        "Find devices by WS-Discovery: those in the networks of this machine, or at given hosts.\n"
        "Ctrl-C ends the search, and what was found is shown");
    discover->footer(
        "\nExamples:\n  onvifctl discover\n  onvifctl discover --to 192.168.7.20 --to gate.example"
        "\n  onvifctl discover --format hosts > hosts.toml\n");
    auto* to =
        discover->add_option("--to", arguments->hosts,
                             "Ask this host alone, with :PORT if not 3702: devices in other\n"
                             "networks do not hear what all are asked. May be repeated");
    to->type_name("HOST")->allow_extra_args(false);
    discover
        ->add_option("--interface", arguments->interface,
                     "The network interface to ask by, by its name or address (default: all)")
        ->excludes(to);
    discover
        ->add_option("--timeout", arguments->seconds, "Seconds to wait for answers (default: 3)")
        ->check(CheckSeconds(0, kHour));
    discover
        ->add_option("--format", arguments->format,
                     "table (default); json: an object per line; hosts: lines for the hosts file")
        ->check(CLI::IsMember({"table", "json", "hosts"}));
    discover->callback([&line, arguments] { line.code = Discover(*arguments); });
}

}  // namespace onvifctl
