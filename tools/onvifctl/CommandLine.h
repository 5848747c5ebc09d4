/// @file
/// What all subcommands share: how they appear on the command line, and how they talk to a device.
#ifndef ONVIFCTL_COMMANDLINE_H
#define ONVIFCTL_COMMANDLINE_H

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Connection.h"
#include "ExitCode.h"
#include "hosts/Targets.h"
#include "output/DataOutput.h"
#include "output/Notices.h"

namespace onvifctl {

/// From ONVIF_USER and ONVIF_PASSWORD, where they are set.
ConnectionOptions CredentialsOfEnvironment();

/// How results are shown.
enum class Format { kXml, kTable, kJson };

/// What one run of the tool was told, and how it ended.
struct CommandLine {
    HostChoice hosts;
    ConnectionOptions connection = CredentialsOfEnvironment();  // of commands for one device: to it
    std::optional<double> timeout;                              // seconds for the whole run
    Format format = Format::kXml;
    ExitCode code = ExitCode::kDone;
};

/// The end of a help: whole command lines.
std::string ExamplesFooter(const std::vector<std::string>& examples);

/// Adds a subcommand with the credentials, for devices that it names by itself. @p examples: whole
/// command lines.
CLI::App* AddCommandForMany(CLI::App& app, CommandLine& line, const char* name,
                            const std::string& description,
                            const std::vector<std::string>& examples);

/// The same with HOST.
CLI::App* AddCommand(CLI::App& app, CommandLine& line, const char* name,
                     const std::string& description, const std::vector<std::string>& examples);

/// The same with any number of HOSTs, and what chooses cameras of the hosts file.
CLI::App* AddCommandForSeveral(CLI::App& app, CommandLine& line, const char* name,
                               const std::string& description,
                               const std::vector<std::string>& examples);

/// --all and --tag, in the place of HOST or beside it.
void AddTagOptions(CLI::App* command, CommandLine& line);

/// The options of the latter: these and --timeout.
void AddChoiceOfHosts(CLI::App* command, CommandLine& line);

/// Adds an action of a subcommand ("ptz HOST stop"); the credentials may stand behind it too.
CLI::App* AddAction(CLI::App* command, const char* name, const std::string& description,
                    const std::string& example);

inline constexpr double kTenYears = 10 * 366 * 24 * 3600.0;

/// A check of an option's seconds. "nan", which any range would let through, is none.
CLI::Validator CheckSeconds(double least = 0, double most = kTenYears);

/// --format; xml is the default, or else table.
enum class Formats { kDocuments, kTexts };
void AddFormatOption(CLI::App* command, CommandLine& line, Formats formats = Formats::kDocuments);

/// A device to talk to and a place for what it says.
struct Session {
    explicit Session(const ConnectionOptions& given)
        : options(WithPassword(given)), library(std::in_place, options), connection(options) {}
    /// One of several: the library has been started, and what comes out is added to a text.
    Session(const ConnectionOptions& given, std::string& collected)
        : options(WithPassword(given)), output(&collected), connection(options) {}

    const ConnectionOptions options;
    const CDataOutput output{};
    const std::optional<CStartedLibrary> library;
    const CConnection connection;
};

/// The result of a request that the device refuses no part of. Throws CFailure otherwise.
std::string SendOrFail(const Session& session, const std::string& request);

ExitCode Worse(ExitCode one, ExitCode other);

/// The groups of subcommands; each file adds its own.
void AddCommands(CLI::App& app);
void AddRequestCommands(CLI::App& app, CommandLine& line);
void AddMediaCommands(CLI::App& app, CommandLine& line);
void AddPtzCommands(CLI::App& app, CommandLine& line);
void AddImageCommands(CLI::App& app, CommandLine& line);
void AddExport(CLI::App& app, CommandLine& line);
void AddImport(CLI::App& app, CommandLine& line);
void AddWatch(CLI::App& app, CommandLine& line);
void AddBridge(CLI::App& app, CommandLine& line);
void AddDiscover(CLI::App& app, CommandLine& line);
void AddDemo(CLI::App& app, CommandLine& line);
void AddDoctor(CLI::App& app, CommandLine& line);
void AddCompletion(CLI::App& app);
void AddHelp(CLI::App& app);

/// Tells apart the two meanings of "--timeout": seconds are the tool's, a duration or a time
/// ("PT5S") is a parameter of the command before it.
void MarkParameters(std::vector<std::string>& words);

/// The stream addresses of all profiles, a line each; @p credentials: with user and password.
ExitCode ShowStreams(const Session& session, bool credentials = false);

}  // namespace onvifctl

#endif
