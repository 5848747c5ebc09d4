// onvif-camera-sim: simulated cameras as a program.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <iostream>
#include <string>
#include <thread>
#include <utility>
#include <vector>
// Asio uses std::exchange without including it.
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/signal_set.hpp>

#include "OddOptions.h"
#include "camera_sim/CameraSim.h"
#include "camera_sim/control/Control.h"
#include "system/System.h"

namespace {

constexpr int kFailure = 1;
constexpr int kMostCameras = 10000;
constexpr std::size_t kOtherDescriptors = 64;
constexpr int kMostSeconds = 10 * 366 * 24 * 3600;
constexpr int kMostMilliseconds = 24 * 3600 * 1000;
constexpr int kLongEpisode = 3 * 60 * 1000;  // milliseconds
constexpr int kMostMessages = 1000000;

struct Arguments {
    camera_sim::CameraOptions camera;
    int cameras = 1;
    int clockOffset = 0;
    int createdWindow = 300;
    int motionPeriod = 0;
    int inputPeriod = 0;
    int maxPullTimeout = 120;
    int maxTermination = 24 * 3600;
    bool noMedia2 = false;
    bool noPtz = false;
    bool exitWithStdin = false;
    bool answersProbes = false;
    camera_sim::DiscoveryOptions discovery{.port = 3702};
    std::vector<std::string> faults;
    camera_sim::Spoiling spoiling;
    bool listsKinds = false;
};

void AddFlags(CLI::App& app, Arguments& arguments) {
    auto& camera = arguments.camera;
    const auto without = [&app](const std::string& name, bool& value, const std::string& help) {
        app.add_flag_callback(
            name, [&value] { value = false; }, help);
    };
    app.add_flag("--no-media2", arguments.noMedia2, "no second media service");
    app.add_flag("--no-ptz", arguments.noPtz, "no PTZ service");
    without("--no-media", camera.media, "no first media service");
    without("--no-imaging", camera.imaging, "no imaging service");
    without("--no-analytics", camera.analytics, "no analytics service");
    without("--no-events", camera.events, "no event service");
    without("--no-device-io", camera.deviceIo, "no device I/O service");
    without("--no-get-services", camera.getServices, "GetServices is not implemented");
    without("--no-capabilities-all", camera.capabilitiesAll, "GetCapabilities refuses All");
    without("--allow-replays", camera.refuseReplays, "accept a nonce more than once");
    without("--no-prolog", camera.xmlProlog, "answers without the XML declaration");
    without("--any-path", camera.strictPaths, "every service answers at every path");
    app.add_flag_callback(
        "--long-episodes", [&arguments] { arguments.motionPeriod = kLongEpisode; },
        "motion begins or ends every three minutes, and nothing is repeated between");
    app.add_flag("--numeric-states", camera.numericStates, "digital inputs report 1 and 0");
    app.add_flag("--pulls-renew", camera.pullsRenew, "every pull extends its subscription");
    app.add_flag("--pretty", camera.prettyXml, "answers with line breaks and indentation");
    app.add_flag("--exit-with-stdin", arguments.exitWithStdin, "end when standard input is closed");
}

void ReadSpoiling(const std::string& text, Arguments& arguments) {
    arguments.listsKinds = text == "list";
    std::string error;
    const auto spoiling = camera_sim::ParseSpoiling(arguments.listsKinds ? "none" : text, error);
    if (!spoiling) {
        throw CLI::ValidationError("--spoil", error);
    }
    arguments.spoiling = *spoiling;
}

void AddOptions(CLI::App& app, Arguments& arguments) {
    auto& camera = arguments.camera;
    app.add_option("--model", camera.model, "dome, fixed or recorder")
        ->check(CLI::IsMember({"dome", "fixed", "recorder"}))
        ->capture_default_str();
    app.add_option("--port", camera.port,
                   "port of the first camera, counted up for the others; 0: free ones")
        ->capture_default_str();
    app.add_option("--cameras", arguments.cameras, "how many cameras")
        ->check(CLI::Range(1, kMostCameras))
        ->capture_default_str();
    app.add_option("--user", camera.user,
                   "an administrator; empty, and no --account: no authentication")
        ->capture_default_str();
    app.add_option("--password", camera.password)->capture_default_str();
    app.add_option("--clock-offset", arguments.clockOffset,
                   "seconds that the camera's clock is ahead")
        ->check(CLI::Range(-kMostSeconds, kMostSeconds));
    app.add_option("--created-window", arguments.createdWindow,
                   "seconds that Created may differ from the camera's clock")
        ->check(CLI::Range(0, kMostSeconds))
        ->capture_default_str();
    app.add_option("--unauthorized-status", camera.unauthorizedStatus,
                   "HTTP status beside NotAuthorized: 400, 401, 403 or 500")
        ->check(CLI::IsMember({400, 401, 403, 500}))
        ->capture_default_str();
    app.add_option("--sender-fault-status", camera.senderFaultStatus,
                   "HTTP status of other faults of the sender: 200, 400 or 500")
        ->check(CLI::IsMember({200, 400, 500}))
        ->capture_default_str();
    app.add_option("--prefix-style", camera.prefixStyle, "namespace prefixes of answers")
        ->check(CLI::IsMember(camera_sim::PrefixStyleNames()))
        ->capture_default_str();
    app.add_option("--address", camera.addressShape, "form of the advertised addresses")
        ->capture_default_str();
    AddHttpScheme(
        app, "--snapshot-auth", "protection of pictures; otherwise as the model has it",
        [&camera](camera_sim::HttpScheme scheme) { camera.snapshotAuthentication = scheme; });
    app.add_option("--snapshot-realm", camera.snapshotRealm)->capture_default_str();
    app.add_option("--snapshot-qop", camera.snapshotQop, "auth, auth,auth-int or empty")
        ->capture_default_str();
    app.add_option("--snapshot-address", camera.snapshotAddressShape,
                   "form of the pictures' addresses")
        ->capture_default_str();
    app.add_option("--fault", arguments.faults, "a misbehaviour, see below; may be repeated")
        ->allow_extra_args(false);
    app.add_option_function<std::string>(
        "--spoil", [&arguments](const std::string& text) { ReadSpoiling(text, arguments); },
        "spoil replies: KIND[:SEED[:N]], see below; list: name the kinds");
}

void AddDiscoveryOptions(CLI::App& app, Arguments& arguments) {
    auto& discovery = arguments.discovery;
    auto* group = app.add_flag("--discovery", discovery.joinsGroup,
                               "answer probes for devices, those to the multicast group, too");
    app.add_option("--discovery-port", discovery.port,
                   "UDP port of 127.0.0.1 for probes; 0: a free one. Without --discovery those to "
                   "the group are left to others")
        ->capture_default_str()
        ->each([&arguments](const std::string&) { arguments.answersProbes = true; });
    app.add_option("--discovery-interface", discovery.groupInterface,
                   "address of the interface on which the group is joined")
        ->capture_default_str()
        ->needs(group);
}

/// False when nothing can listen; says why.
bool AnswerProbes(camera_sim::CCameraHost& host, const Arguments& arguments) {
    if (!arguments.answersProbes && !arguments.discovery.joinsGroup) {
        return true;
    }
    std::string error;
    const auto port = host.TryAnswerProbes(arguments.discovery, error);
    if (!port) {
        std::cerr << "onvif-camera-sim: " << error << '\n';
        return false;
    }
    std::cout << "onvif-camera-sim: discovery listening on 127.0.0.1:" << *port << std::endl;
    return true;
}

void AddEventOptions(CLI::App& app, Arguments& arguments) {
    auto& camera = arguments.camera;
    const auto number = [&app](const std::string& name, int& value, int least, int most,
                               const std::string& help) {
        app.add_option(name, value, help)->check(CLI::Range(least, most))->capture_default_str();
    };
    app.add_option("--topic-style", camera.topicStyle, "topics of motion and digital inputs")
        ->check(CLI::IsMember(camera_sim::TopicStyleNames()))
        ->capture_default_str();
    app.add_option("--subscription-style", camera.subscriptionStyle,
                   "how a subscription is referred to: by an address of its own, by an id in the "
                   "reference parameters, or by an address with other parameters")
        ->check(CLI::IsMember(camera_sim::SubscriptionStyleNames()))
        ->capture_default_str();
    app.add_option("--max-subscriptions", camera.maxSubscriptions, "subscriptions at the same time")
        ->capture_default_str();
    number("--max-termination", arguments.maxTermination, 1, kMostSeconds,
           "seconds that a subscription may live without renewal");
    number("--max-pull-timeout", arguments.maxPullTimeout, 0, kMostSeconds,
           "seconds that a pull may wait");
    number("--max-message-limit", camera.maxMessageLimit, 1, kMostMessages,
           "messages that a pull may ask for");
    number("--motion-period", arguments.motionPeriod, 0, kMostMilliseconds,
           "milliseconds after which motion begins or ends, again and again; 0: never");
    number("--input-period", arguments.inputPeriod, 0, kMostMilliseconds,
           "the same for every digital input");
}

/// False when a camera cannot be started; says why.
bool StartCameras(camera_sim::CCameraHost& host, const Arguments& arguments,
                  const std::vector<camera_sim::PlannedFault>& faults) {
    constexpr int kLargestPort = 65535;
    const int firstPort = arguments.camera.port;
    if (firstPort != 0 && firstPort + arguments.cameras - 1 > kLargestPort) {
        std::cerr << "onvif-camera-sim: there are not that many ports above " << firstPort << '\n';
        return false;
    }
    // A camera listens, and holds a pull.
    const std::size_t needed = 2 * static_cast<std::size_t>(arguments.cameras) + kOtherDescriptors;
    if (const std::size_t most = AllowManyDescriptors(); most != 0 && most < needed) {
        std::cerr << "onvif-camera-sim: the process may have " << most << " descriptors; for "
                  << arguments.cameras << " cameras that hold a pull each it needs " << needed
                  << '\n';
    }
    for (int i = 0; i < arguments.cameras; ++i) {
        camera_sim::CameraOptions options = arguments.camera;
        if (firstPort != 0) {
            options.port = static_cast<std::uint16_t>(firstPort + i);
        }
        std::string error;
        camera_sim::CCamera* camera = host.TryAdd(std::move(options), error);
        if (camera == nullptr) {
            std::cerr << "onvif-camera-sim: " << error << '\n';
            return false;
        }
        for (const camera_sim::PlannedFault& planned : faults) {
            camera->Inject(planned.operation, planned.fault);
        }
        camera->Spoil(arguments.spoiling);
        std::cout << "onvif-camera-sim: " << arguments.camera.model
                  << " listening on 127.0.0.1:" << camera->Port() << std::endl;
    }
    return true;
}

void WaitForEnd(boost::asio::io_context& io, bool exitWithStdin) {
    if (exitWithStdin) {
        // The thread may wait for input until the process ends; it holds nothing but the context,
        // which lives as long as the process.
        std::thread([&io] {
            while (std::cin.get() != std::istream::traits_type::eof()) {
            }
            boost::asio::post(io, [&io] { io.stop(); });
        }).detach();
    }
    io.run();
}

int Run(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    WriteLinesAsTheyAre();
    Arguments arguments;
    CLI::App app("Simulated ONVIF cameras on 127.0.0.1.", "onvif-camera-sim");
    app.set_version_flag("--version", "onvif-camera-sim " CAMERA_SIM_VERSION, "Print the version");
    AddOptions(app, arguments);
    AddEventOptions(app, arguments);
    AddDiscoveryOptions(app, arguments);
    AddOddOptions(app, arguments.camera);
    AddFlags(app, arguments);
    app.footer("\nFaults:\n" + std::string(camera_sim::FaultSyntax()) + "\n" +
               "Spoiled replies:\n" + std::string(camera_sim::SpoilingSyntax()) + "\n" +
               std::string(camera_sim::ControlHelp()));
    // The parser takes them without the program's name, the last one first.
    auto words = ProgramWords(argc, argv);
    std::reverse(words.begin(), words.end());
    try {
        app.parse(std::move(words));
    } catch (const CLI::ParseError& refusal) {
        return app.exit(refusal);
    }
    if (arguments.listsKinds) {
        std::cout << camera_sim::SpoilKindList() << std::flush;
        return 0;
    }

    std::vector<camera_sim::PlannedFault> faults;
    for (const std::string& text : arguments.faults) {
        std::string error;
        auto fault = camera_sim::ParseFault(text, error);
        if (!fault) {
            return app.exit(CLI::ValidationError("--fault", error));
        }
        faults.push_back(*std::move(fault));
    }
    if (arguments.noMedia2) {
        arguments.camera.media2 = false;
    }
    if (arguments.noPtz) {
        arguments.camera.ptz = false;
    }
    arguments.camera.clockOffset = std::chrono::seconds(arguments.clockOffset);
    arguments.camera.createdWindow = std::chrono::seconds(arguments.createdWindow);
    arguments.camera.motionPeriod = std::chrono::milliseconds(arguments.motionPeriod);
    arguments.camera.inputPeriod = std::chrono::milliseconds(arguments.inputPeriod);
    arguments.camera.maxPullTimeout = std::chrono::seconds(arguments.maxPullTimeout);
    arguments.camera.maxTermination = std::chrono::seconds(arguments.maxTermination);

    static boost::asio::io_context io(1);
    boost::asio::signal_set signals(io);
    for (const int each : EndSignals()) {
        signals.add(each);
    }
    signals.async_wait([](const boost::system::error_code&, int) { io.stop(); });
    camera_sim::CCameraHost host;
    if (!StartCameras(host, arguments, faults) || !AnswerProbes(host, arguments)) {
        return kFailure;
    }
    WaitForEnd(io, arguments.exitWithStdin);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "onvif-camera-sim: %s\n", failure.what());
        return kFailure;
    }
}
