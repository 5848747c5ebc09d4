// onvifctl: asks and changes ONVIF devices from the command line.
#include <algorithm>

#include "CommandLine.h"
#include "onvif_client/Version.h"
#include "system/Environment.h"
#include "system/Interruption.h"
#include "system/StandardStreams.h"
#include "vocabulary/Completion.h"
#include "vocabulary/Help.h"

namespace {

using onvifctl::ExitCode;

constexpr const char* kExitCodes =
    "\nExit codes: 0 done, 1 refused by the device, 2 bad usage, 3 wrong credentials,\n"
    "4 unreachable, 5 the login failed otherwise, 6 a result could not be written.\n";

int Run(std::vector<std::string> words) {
    CLI::App app("Asks and changes ONVIF devices.", "onvifctl");
    app.set_version_flag("--version", "onvifctl " ONVIF_CLIENT_VERSION, "Print the version");
    app.require_subcommand(1);
    app.allow_windows_style_options(false);  // "/tmp/x" is a file
    app.footer(kExitCodes);
    app.formatter(std::make_shared<onvifctl::CUsageFormatter>());
    onvifctl::CommandLine line;
    onvifctl::AddCommands(app);
    onvifctl::AddRequestCommands(app, line);
    onvifctl::AddMediaCommands(app, line);
    onvifctl::AddPtzCommands(app, line);
    onvifctl::AddImageCommands(app, line);
    onvifctl::AddExport(app, line);
    onvifctl::AddImport(app, line);
    onvifctl::AddWatch(app, line);
    onvifctl::AddBridge(app, line);
    onvifctl::AddDiscover(app, line);
    onvifctl::AddDemo(app, line);
    onvifctl::AddDoctor(app, line);
    onvifctl::AddCompletion(app);
    onvifctl::AddHelp(app);
    if (onvifctl::AsksForCompletions(words)) {
        return onvifctl::ShowCompletions(app, words);
    }
    onvifctl::MarkParameters(words);
    try {
        std::reverse(words.begin(), words.end());  // the parser takes them from the end
        app.parse(std::move(words));
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        if (const std::string unknown = onvifctl::UnknownAction(app); !unknown.empty()) {
            onvifctl::Tell(unknown);
        } else {
            app.exit(error);
        }
        return static_cast<int>(ExitCode::kUsage);
    }
    return static_cast<int>(line.code);
}

}  // namespace

int main(int argc, char** argv) {
    onvifctl::PrepareSignals();
    onvifctl::PrepareStreams();
    try {
        auto words = onvifctl::Arguments(argc, argv);
        onvifctl::HidePasswords(argc, argv);
        return Run(std::move(words));
    } catch (const onvifctl::CFailure& failure) {
        onvifctl::Tell(failure.what());
        return static_cast<int>(failure.Code());
    } catch (const std::exception& error) {
        onvifctl::Tell(error.what());
        return static_cast<int>(ExitCode::kLoginFailed);
    }
}
