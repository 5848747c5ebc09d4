#include "CommandLine.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "documents/ResultTable.h"
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
    "keep-alive",
    "quick-login",
    "no-basic",
};

/// What the command line says of logins beats the environment.
void TakeGivenLogin(CommandLine& line) {
    GivenLogin& given = line.hosts.given;
    given.ReadPassword();
    line.connection.user = given.user.value_or(line.connection.user);
    if (given.password) {
        line.connection.password = given.password;
    }
}

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

std::string ExamplesFooter(const std::vector<std::string>& examples) {
    std::string footer = examples.size() == 1 ? "\nExample:\n" : "\nExamples:\n";
    for (const std::string& example : examples) {
        footer += "  " + example + "\n";
    }
    return footer;
}

CLI::App* AddCommandForMany(CLI::App& app, CommandLine& line, const char* name,
                            const std::string& description,
                            const std::vector<std::string>& examples) {
    CLI::App* command = app.add_subcommand(name, description);
    command->footer(ExamplesFooter(examples) +
                    "\nUser and password come from the command line, else from the hosts file, else"
                    " from the\nenvironment (ONVIF_USER, ONVIF_PASSWORD); a missing password is"
                    " asked for when standard\ninput is a terminal.\n");
    command->add_option("-u,--user", line.hosts.given.user, "User name")
        ->type_name("TEXT (Env:ONVIF_USER)");
    auto* password = command
                         ->add_option("-p,--password", line.hosts.given.password,
                                      "Password; - for a line of standard input")
                         ->type_name("TEXT (Env:ONVIF_PASSWORD)");
    command
        ->add_option("--password-file", line.hosts.given.passwordFile,
                     "The password is the first line of this file")
        ->type_name("FILE")
        ->excludes(password);
    command
        ->add_option("--hosts", line.hosts.file,
                     "Names of cameras (default: onvifctl/hosts.toml among your settings)")
        ->type_name("FILE");
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
    extensions->delimiter(',')->allow_extra_args(false)->type_name("NAME")->check(
        CLI::IsMember(kExtensions));
    command
        ->add_flag_callback(
            "--literal", [&line] { line.connection.extensions = ""; }, "No extensions")
        ->excludes(extensions);
    command->parse_complete_callback([&line] { TakeGivenLogin(line); });
    return command;
}

CLI::App* AddCommand(CLI::App& app, CommandLine& line, const char* name,
                     const std::string& description, const std::vector<std::string>& examples) {
    CLI::App* command = AddCommandForMany(app, line, name, description, examples);
    auto word = std::make_shared<std::string>();
    command->add_option("HOST", *word, "Address with :PORT if not 80, or a name of the hosts file")
        ->required();
    command->parse_complete_callback([&line, word] {
        TakeGivenLogin(line);
        line.hosts.words = {*word};
        line.connection = Target(line.hosts, line.connection);
    });
    return command;
}

CLI::App* AddCommandForSeveral(CLI::App& app, CommandLine& line, const char* name,
                               const std::string& description,
                               const std::vector<std::string>& examples) {
    CLI::App* command = AddCommandForMany(app, line, name, description, examples);
    command->add_option("HOST", line.hosts.words,
                        "Addresses with :PORT if not 80, names or @TAGs of the hosts file");
    AddChoiceOfHosts(command, line);
    return command;
}

CLI::Validator CheckSeconds(double least, double most) {
    const CLI::Range range(least, most);
    return {[range](std::string& text) {
                double seconds = 0;
                const bool isNumber =
                    CLI::detail::lexical_cast(text, seconds) && !std::isnan(seconds);
                return isNumber ? range(text) : "'" + text + "' is no number of seconds";
            },
            range.get_description()};
}

void AddTagOptions(CLI::App* command, CommandLine& line) {
    command->add_flag("--all", line.hosts.all, "All cameras of the hosts file");
    command->add_option("--tag", line.hosts.tags, "The cameras with this tag")
        ->allow_extra_args(false);
}

void AddChoiceOfHosts(CLI::App* command, CommandLine& line) {
    AddTagOptions(command, line);
    command->add_option("--timeout", line.timeout, "Give up what is not done after so many seconds")
        ->check(CheckSeconds());
}

CLI::App* AddAction(CLI::App* command, const char* name, const std::string& description,
                    const std::string& example) {
    CLI::App* action = command->add_subcommand(name, description);
    action->footer(ExamplesFooter({example}));
    action->fallthrough();
    command->require_subcommand(1);
    return action;
}

void AddFormatOption(CLI::App* command, CommandLine& line, Formats formats) {
    const bool documents = formats == Formats::kDocuments;
    std::vector<std::string> names = {"table", "json"};
    if (documents) {
        names.insert(names.begin(), "xml");
    }
    command
        ->add_option_function<std::string>(
            "--format",
            [&line](const std::string& format) {
                line.format = format == "table"  ? Format::kTable
                              : format == "json" ? Format::kJson
                                                 : Format::kXml;
            },
            documents ? "xml: the result document (default); table: readable text; json: an object"
                      : "table: readable text (default); json: an object")
        ->check(CLI::IsMember(names));
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
