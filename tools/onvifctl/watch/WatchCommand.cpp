// The subcommand watch: what happens at cameras, as it happens.
#include <algorithm>
#include <array>
#include <chrono>
#include <iostream>
#include <memory>
#include <optional>

#include "CommandLine.h"
#include "system/Descriptors.h"
#include "system/Interruption.h"
#include "watch/AlarmWatch.h"
#include "watch/WatchDisplay.h"

namespace onvifctl {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

struct WatchArguments {
    std::optional<double> seconds;
    bool json = false;
    bool raw = false;
    std::string format;
};

/// Host names from standard input, one per line; what follows a '#' is a comment.
std::vector<std::string> ReadHosts() {
    constexpr std::size_t kMostHosts = 10000;
    constexpr const char* kBlanks = " \t\r\v\f";
    std::vector<std::string> hosts;
    std::array<char, 1024> buffer = {};
    while (std::cin.getline(buffer.data(), buffer.size())) {
        std::string line = buffer.data();
        line.erase(std::min(line.find('#'), line.size()));
        const std::size_t start = line.find_first_not_of(kBlanks);
        if (start == std::string::npos) {
            continue;
        }
        if (hosts.size() == kMostHosts) {
            throw CFailure(ExitCode::kUsage, "standard input names too many hosts");
        }
        hosts.push_back(line.substr(start, line.find_last_not_of(kBlanks) + 1 - start));
    }
    if (!std::cin.eof()) {
        throw CFailure(ExitCode::kUsage, "standard input has a line too long for a host name");
    }
    std::cin.clear();  // a terminal may still be asked for the password
    if (hosts.empty()) {
        throw CFailure(ExitCode::kUsage, "no HOST is given, nor any on standard input");
    }
    return hosts;
}

/// The cameras to watch, each with its credentials.
std::vector<ConnectionOptions> CamerasFor(const CommandLine& line) {
    HostChoice choice = line.hosts;
    if (choice.words.empty() && choice.tags.empty() && !choice.all) {
        choice.words = ReadHosts();
    }
    auto cameras = Targets(choice, line.connection);
    for (const ConnectionOptions& camera : cameras) {
        FullAddress(camera.host);  // throws when it is none
    }
    return cameras;
}

/// Shows what the watch learns until the time has passed, a signal comes or no camera is left.
void Follow(CAlarmWatch& watch, CWatchDisplay& display, const CInterruption& interruption,
            std::optional<Clock::time_point> end) {
    for (bool ends = false; !ends;) {
        milliseconds patience = display.Patience();
        if (end) {
            patience = std::min(patience, std::chrono::ceil<milliseconds>(*end - Clock::now()));
        }
        const bool interrupted = interruption.Wait(patience) != 0;
        ends = interrupted || (end && Clock::now() >= *end) || watch.AllGivenUp();
        display.Show(watch.Take());
    }
    display.Finish();
}

WatchFormat FormatFor(const WatchArguments& arguments, bool verbose) {
    if (arguments.json || arguments.format == "json") {
        return WatchFormat::kJson;
    }
    if (arguments.raw && arguments.format == "table") {
        throw CFailure(ExitCode::kUsage, "a table shows states: --raw has lines and json");
    }
    // A log on the same terminal would tear a table apart.
    const bool lines = arguments.raw || verbose || arguments.format == "lines";
    return lines ? WatchFormat::kLines : WatchFormat::kLive;
}

ExitCode Watch(const CommandLine& line, const WatchArguments& arguments) {
    const WatchFormat format = FormatFor(arguments, line.connection.verbose);
    const auto cameras = CamerasFor(line);
    std::vector<std::string> names(cameras.size());
    std::transform(cameras.begin(), cameras.end(), names.begin(),
                   [](const ConnectionOptions& camera) { return camera.name; });

    AllowManyDescriptors();  // each camera takes one
    const CDataOutput output{};
    CInterruption interruption;
    const auto display = MakeWatchDisplay(format, output, names);
    std::optional<Clock::time_point> end;
    if (arguments.seconds) {
        end = Clock::now() + milliseconds(static_cast<std::int64_t>(*arguments.seconds * 1000));
    }
    CAlarmWatch watch(cameras, arguments.raw ? WatchFor::kEvents : WatchFor::kAlarms,
                      [&interruption] { interruption.Wake(); });
    Follow(watch, *display, interruption, end);
    interruption.LetSignalsGo();  // a second Ctrl-C ends what may still wait for a name server
    return watch.Worst();
}

}  // namespace

void AddWatch(CLI::App& app, CommandLine& line) {
    auto arguments = std::make_shared<WatchArguments>();
    CLI::App* watch = AddCommandForMany(
        app, line, "watch",
        "Show alarm states as they change, of one or many cameras: a live table on a terminal,\n"
        "else a line per change with local time, camera, kind and state. A camera that is lost\n"
        "is told of and tried again. Ends on Ctrl-C",
        {"onvifctl watch 192.168.1.64", "onvifctl watch --json --for 60 gate:8000 192.168.1.64",
         "onvifctl watch --raw 192.168.1.64", "onvifctl watch < hosts.txt >> alarms.txt"});
    watch->add_option(
        "HOST", line.hosts.words,
        "Addresses with :PORT if not 80, names or @TAGs of the hosts file. Without any\n"
        "they are read from standard input, one per line; '#' begins a comment");
    AddTagOptions(watch, line);
    watch->add_flag(
        "--raw", arguments->raw,
        "All events of the cameras, with topic, source and data, not only alarm states");
    auto* format =
        watch
            ->add_option("--format", arguments->format,
                         "table: live, on a terminal with enough rows, else lines (default);\n"
                         "lines: a line per change; json: a JSON object per change, times in UTC")
            ->check(CLI::IsMember({"table", "lines", "json"}));
    watch->add_flag("--json", arguments->json, "The same as --format json")->excludes(format);
    watch->add_option("--for", arguments->seconds, "End after so many seconds")
        ->check(CheckSeconds());
    watch->callback([&line, arguments] { line.code = Watch(line, *arguments); });
}

}  // namespace onvifctl
