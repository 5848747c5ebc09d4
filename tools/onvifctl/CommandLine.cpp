#include "CommandLine.h"

#include <algorithm>
#include <iostream>

#include "documents/ResultTable.h"
#include "output/Printable.h"
#include "system/Environment.h"

namespace onvifctl {

namespace {

const std::vector<std::string> kExtensions = {
    "all",
    "http-framing",
    "large-messages",
    "open-faults",
    "keep-clock",
    "http-digest",
    "media-fallback",
    "per-source-alarms",
    "standard-requests",
    "own-parameters",
    "background-subscription",
    "no-basic",
};

}  // namespace

ConnectionOptions CredentialsOfEnvironment() {
    ConnectionOptions options;
    options.user = Variable("ONVIF_USER");
    const std::string password = Variable("ONVIF_PASSWORD");
    if (!password.empty()) {
        options.password = password;
    }
    return options;
}

CLI::App* AddCommandForMany(CLI::App& app, CommandLine& line, const char* name,
                            const std::string& description,
                            const std::vector<std::string>& examples) {
    CLI::App* command = app.add_subcommand(name, description);
    std::string footer = examples.size() == 1 ? "\nExample:\n" : "\nExamples:\n";
    for (const std::string& example : examples) {
        footer += "  " + example + "\n";
    }
    command->footer(footer +
                    "\nUser and password may also come from the environment (ONVIF_USER,"
                    " ONVIF_PASSWORD); a missing"
                    "\npassword is asked for when standard input is a terminal.\n");
    command->add_option("-u,--user", line.connection.user, "User name")
        ->type_name("TEXT (Env:ONVIF_USER)");
    command->add_option("-p,--password", line.connection.password, "Password")
        ->type_name("TEXT (Env:ONVIF_PASSWORD)");
    command->add_flag("-v,--verbose", line.connection.verbose,
                      "Show each exchange, and the library's log and traces, on standard error");
    command
        ->add_option("--trace", line.connection.trace,
                     "Write each exchange in full, without credentials, to this file")
        ->type_name("FILE");
    auto* extensions = command->add_option_function<std::vector<std::string>>(
        "--extensions",
        [&line](const std::vector<std::string>& names) {
            line.connection.extensions = CLI::detail::join(names, ",");
        },
        "What real cameras need, with commas between (default: all)");
    extensions->delimiter(',')->type_name("NAME")->check(CLI::IsMember(kExtensions));
    command
        ->add_flag_callback(
            "--literal", [&line] { line.connection.extensions = ""; }, "No extensions")
        ->excludes(extensions);
    return command;
}

CLI::App* AddCommand(CLI::App& app, CommandLine& line, const char* name,
                     const std::string& description, const std::vector<std::string>& examples) {
    CLI::App* command = AddCommandForMany(app, line, name, description, examples);
    command->add_option("HOST", line.connection.host, "Address or name, with :PORT if not 80")
        ->required();
    return command;
}

CLI::App* AddAction(CLI::App* command, const char* name, const std::string& description,
                    const std::string& example) {
    CLI::App* action = command->add_subcommand(name, description);
    action->footer("\nExample:\n  " + example + "\n");
    action->fallthrough();
    command->require_subcommand(1);
    return action;
}

void AddFormatOption(CLI::App* command, CommandLine& line) {
    command
        ->add_option_function<std::string>(
            "--format", [&line](const std::string& format) { line.table = format == "table"; },
            "xml: the result document (default); table: readable text")
        ->check(CLI::IsMember({"xml", "table"}));
}

void Tell(const std::string& message) {
    std::cerr << "onvifctl: " << Printable(message) << '\n';
}

ExitCode Show(const Session& session, const std::string& request, bool table) {
    const std::string result = session.connection.Send(request);
    session.output.Write(table ? FormatTable(result) : result);
    const auto refusals = Refusals(result);
    for (const std::string& refusal : refusals) {
        Tell(refusal);
    }
    return refusals.empty() ? ExitCode::kDone : ExitCode::kRefused;
}

std::string SendOrFail(const Session& session, const std::string& request) {
    std::string result = session.connection.Send(request);
    const auto refusals = Refusals(result);
    if (!refusals.empty()) {
        throw CFailure(ExitCode::kRefused, refusals.front());
    }
    return result;
}

ExitCode Worse(ExitCode one, ExitCode other) {
    return std::max(one, other);
}

}  // namespace onvifctl
