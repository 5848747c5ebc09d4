// The subcommand bridge: alarms at an MQTT broker.
#include <algorithm>
#include <fstream>
#include <memory>
#include <optional>

#include "CommandLine.h"
#include "bridge/Bridge.h"
#include "bridge/Share.h"
#include "output/OutputFile.h"
#include "system/Descriptors.h"
#include "system/Environment.h"
#include "system/FilePath.h"
#include "system/Interruption.h"

namespace onvifctl {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

struct BridgeArguments {
    std::string broker;
    std::string user = Variable("ONVIF_BROKER_USER");
    std::string passwordFile;
    std::string authorities;
    std::string certificate;
    std::string key;
    std::string clientId;
    std::string prefix = "onvif";
    std::string discoveryPrefix = "homeassistant";
    std::string share = "1/1";
    unsigned int expiry = 30;
    std::optional<double> seconds;
    bool homeAssistant = false;
    bool raw = false;
    bool showShare = false;
};

void CheckReadable(const std::string& file) {
    if (!file.empty() && !std::ifstream(PathOf(file))) {
        throw CFailure(ExitCode::kUsage, "cannot read '" + file + "'");
    }
}

BrokerOptions BrokerOf(const BridgeArguments& arguments, const Share& share) {
    if (arguments.broker.empty()) {
        throw CFailure(ExitCode::kUsage, "no --broker is given");
    }
    BrokerOptions broker;
    broker.address = ParseBrokerAddress(arguments.broker);
    broker.user = arguments.user;
    broker.password = arguments.passwordFile.empty() ? Variable("ONVIF_BROKER_PASSWORD")
                                                     : PasswordOfFile(arguments.passwordFile);
    broker.authorities = arguments.authorities;
    broker.certificate = arguments.certificate;
    broker.key = arguments.key;
    const bool named = !broker.authorities.empty() || !broker.certificate.empty();
    if (named && !broker.address.secure) {
        throw CFailure(ExitCode::kUsage, "certificates are for mqtts://");
    }
    if (!broker.certificate.empty() && broker.authorities.empty()) {
        throw CFailure(ExitCode::kUsage, "--broker-cert needs --broker-ca");
    }
    for (const std::string& file : {broker.authorities, broker.certificate, broker.key}) {
        CheckReadable(file);
    }
    const std::string number = std::to_string(share.number);
    broker.clientId = arguments.clientId.empty()
                          ? "onvifctl-" + IdentifierOf(arguments.prefix) + "-" + number
                          : arguments.clientId;
    broker.keepAlive = std::chrono::seconds(arguments.expiry * 2 / 3);
    return broker;
}

/// The cameras of a share, all of the hosts file unless some are chosen.
std::vector<ConnectionOptions> CamerasOf(const CommandLine& line, const Share& share) {
    HostChoice choice = line.hosts;
    choice.all = choice.all || (choice.words.empty() && choice.tags.empty());
    auto cameras = Targets(choice, line.connection);
    std::erase_if(cameras, [&share](const ConnectionOptions& camera) {
        return OwnerOf(camera.name, share.count) != share.number;
    });
    for (const ConnectionOptions& camera : cameras) {
        FullAddress(camera.host);  // throws when it is none
    }
    return cameras;
}

ExitCode ShowShare(const std::vector<ConnectionOptions>& cameras) {
    const CDataOutput output{};
    for (const ConnectionOptions& camera : cameras) {
        output.Write(camera.name + "\n");
    }
    return ExitCode::kDone;
}

void Run(CBridge& bridge, const CInterruption& interruption, std::optional<Clock::time_point> end) {
    bool ends = false;
    while (!ends) {
        auto until = bridge.Advance();
        if (end) {
            until = std::min(until, *end);
        }
        const auto patience = std::chrono::ceil<milliseconds>(until - Clock::now());
        const bool interrupted = interruption.Wait(std::max(patience, milliseconds(0))) != 0;
        ends = interrupted || (end && Clock::now() >= *end);
    }
}

ExitCode RunBridge(const CommandLine& line, const BridgeArguments& arguments) {
    const Share share = ParseShare(arguments.share);
    const auto cameras = CamerasOf(line, share);
    if (arguments.showShare) {
        return ShowShare(cameras);
    }
    CheckBrokerClient();
    BridgeOptions options;
    options.broker = BrokerOf(arguments, share);
    options.prefix = arguments.prefix;
    options.discoveryPrefix = arguments.homeAssistant ? arguments.discoveryPrefix : "";
    options.raw = arguments.raw;
    options.number = share.number;
    options.expiry = std::chrono::seconds(arguments.expiry);
    std::optional<Clock::time_point> end;
    if (arguments.seconds) {
        end = Clock::now() + milliseconds(static_cast<std::int64_t>(*arguments.seconds * 1000));
    }
    AllowManyDescriptors();  // each camera takes one, two with --raw
    CInterruption interruption;
    CBridge bridge(options, cameras, [&interruption] { interruption.Wake(); });
    Run(bridge, interruption, end);
    const bool ended = bridge.End([&interruption](milliseconds time) { interruption.Wait(time); });
    const ExitCode worst = bridge.Worst();
    interruption.LetSignalsGo();  // a second one ends what may still wait for a name server
    if (!ended) {
        EndAtOnce(worst);
    }
    return worst;
}

void AddBrokerOptions(CLI::App* bridge, BridgeArguments& arguments) {
    bridge->add_option("--broker", arguments.broker,
                       "mqtt://HOST[:PORT], or mqtts:// for TLS; MQTT 5");
    bridge->add_option("--broker-user", arguments.user, "User name at the broker")
        ->type_name("TEXT (Env:ONVIF_BROKER_USER)");
    bridge
        ->add_option("--broker-password-file", arguments.passwordFile,
                     "The password there is the first line of this file")
        ->type_name("FILE (Env:ONVIF_BROKER_PASSWORD)");
    bridge
        ->add_option("--broker-ca", arguments.authorities,
                     "Certificates that the broker's is checked with (default: the system's)")
        ->type_name("FILE");
    auto* key = bridge->add_option("--broker-key", arguments.key, "Its key, without a passphrase")
                    ->type_name("FILE");
    auto* certificate = bridge
                            ->add_option("--broker-cert", arguments.certificate,
                                         "Certificate that the bridge shows the broker")
                            ->type_name("FILE");
    certificate->needs(key);
    key->needs(certificate);
    bridge->add_option("--client-id", arguments.clientId,
                       "Name at the broker (default: onvifctl-PREFIX-I)");
}

void AddTopicOptions(CLI::App* bridge, BridgeArguments& arguments) {
    constexpr unsigned int kShortest = 9;  // brokers have no patience for less
    constexpr unsigned int kLongest = 3600;
    bridge->add_option("--prefix", arguments.prefix, "What topics begin with (default: onvif)");
    bridge
        ->add_option("--expire", arguments.expiry,
                     "After so many seconds without the bridge the broker forgets its states\n"
                     "(default: 30); they are published three times in it")
        ->check(CLI::Range(kShortest, kLongest));
    bridge->add_flag("--raw", arguments.raw,
                     "All events of the cameras, too, by a second session at each");
    bridge->add_flag("--home-assistant", arguments.homeAssistant,
                     "Discovery messages for Home Assistant");
    bridge->add_option("--discovery-prefix", arguments.discoveryPrefix,
                       "What their topics begin with (default: homeassistant)");
}

}  // namespace

void AddBridge(CLI::App& app, CommandLine& line) {
    auto arguments = std::make_shared<BridgeArguments>();
    CLI::App* bridge = AddCommandForMany(
        app, line, "bridge",
        "Publish alarm states of many cameras at an MQTT broker, and take commands for them\n"
        "from there: retained states, whether bridge and cameras are online, pictures, relays,\n"
        "presets and tours. Several bridges share a fleet. Ends on Ctrl-C",
        {"onvifctl bridge --broker mqtt://broker.example",
         "onvifctl bridge --broker mqtts://broker.example --shard 2/4 --home-assistant",
         "onvifctl bridge --shard 2/4 --show-share"});
    bridge->add_option("HOST", line.hosts.words,
                       "Addresses with :PORT if not 80, names or @TAGs of the hosts file; all of\n"
                       "its cameras when none is given");
    AddTagOptions(bridge, line);
    AddBrokerOptions(bridge, *arguments);
    AddTopicOptions(bridge, *arguments);
    bridge->add_option("--shard", arguments->share,
                       "I/N: of those, the cameras that belong to the I-th of N bridges");
    bridge->add_flag("--show-share", arguments->showShare,
                     "Show the names of these cameras, a line each, and do nothing else");
    bridge->add_option("--for", arguments->seconds, "End after so many seconds")
        ->check(CheckSeconds());
    bridge->callback([&line, arguments] { line.code = RunBridge(line, *arguments); });
}

}  // namespace onvifctl
