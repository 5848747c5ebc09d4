// onvifctl: asks and changes ONVIF devices from the command line.
#include <CLI/CLI.hpp>
#include <csignal>
#include <iostream>
#include <string>
#include <vector>

#include "Connection.h"
#include "ExitCode.h"
#include "RequestDocument.h"
#include "ResultTable.h"
#include "StandardStreams.h"

namespace {

using onvifctl::CConnection;
using onvifctl::CDataOutput;
using onvifctl::CFailure;
using onvifctl::ExitCode;

constexpr const char* kConnectionHelp =
    "\nUser and password may also come from the environment (ONVIF_USER, ONVIF_PASSWORD); a missing"
    "\npassword is asked for when standard input is a terminal.\n";

constexpr const char* kExitCodes =
    "\nExit codes: 0 done, 1 refused by the device, 2 bad usage, 3 wrong credentials,\n"
    "4 unreachable, 5 the login failed otherwise, 6 a result could not be written.\n";

/// Everything that the command line can say.
struct Arguments {
    onvifctl::ConnectionOptions connection;
    bool table = false;
    std::string file;
};

struct Section {
    const char* heading;
    std::vector<std::string> commands;
};

void AddConnectionOptions(CLI::App* command, Arguments& arguments) {
    command->add_option("HOST", arguments.connection.host, "Address or name, with :PORT if not 80")
        ->required();
    command->add_option("-u,--user", arguments.connection.user, "User name")->envname("ONVIF_USER");
    command->add_option("-p,--password", arguments.connection.password, "Password")
        ->envname("ONVIF_PASSWORD");
    command->add_flag("-v,--verbose", arguments.connection.verbose,
                      "Show the library's log and traces on standard error");
}

void AddFormatOption(CLI::App* command, Arguments& arguments) {
    command
        ->add_option_function<std::string>(
            "--format",
            [&arguments](const std::string& format) { arguments.table = format == "table"; },
            "xml: the result document (default); table: readable text")
        ->check(CLI::IsMember({"xml", "table"}));
}

/// Sends a request, shows the result and tells what the device refused.
ExitCode Show(const CConnection& connection, const CDataOutput& output, const std::string& request,
              bool table) {
    const std::string result = connection.Send(request);
    output.Write(table ? onvifctl::FormatTable(result) : result);
    const auto refusals = onvifctl::Refusals(result);
    for (const std::string& refusal : refusals) {
        std::cerr << "onvifctl: " << refusal << '\n';
    }
    return refusals.empty() ? ExitCode::kDone : ExitCode::kRefused;
}

ExitCode SendOne(const Arguments& arguments, const std::string& request) {
    const CDataOutput output(arguments.connection.verbose);
    const CConnection connection(arguments.connection);
    return Show(connection, output, request, arguments.table);
}

ExitCode GetOrSet(const Arguments& arguments, const std::string& root,
                  const std::vector<std::string>& words) {
    if (!arguments.file.empty() && !words.empty()) {
        throw CFailure(ExitCode::kUsage, "give either a file or commands");
    }
    return SendOne(arguments, arguments.file.empty() ? onvifctl::MakeRequest(root, words)
                                                     : onvifctl::ReadRequest(arguments.file, root));
}

ExitCode Info(const Arguments& arguments) {
    return SendOne(arguments,
                   onvifctl::MakeRequest("Get", {"devInfo", "ipv4", "dns", "networkProtocols",
                                                 "dateAndTime", "serviceUrl", "profiles"}));
}

ExitCode Demo(const Arguments& arguments) {
    const Section sections[] = {
        {"Who are you?", {"devInfo"}},
        {"How are you connected?", {"ipv4", "dns", "networkProtocols"}},
        {"What time is it?", {"dateAndTime"}},
        {"Which services do you offer?", {"serviceUrl"}},
        {"Which inputs and relays do you have?", {"alarmin", "alarmout"}},
        {"Which streams?", {"streamCount", "profiles"}},
    };
    const CDataOutput output(arguments.connection.verbose);
    const CConnection connection(arguments.connection);
    output.Write("Logged in to " + arguments.connection.host + " as '" + arguments.connection.user +
                 "'.\n");
    ExitCode worst = ExitCode::kDone;
    for (const Section& section : sections) {
        output.Write(std::string("\n--- ") + section.heading + "\n");
        const ExitCode code =
            Show(connection, output, onvifctl::MakeRequest("Get", section.commands), true);
        worst = code == ExitCode::kDone ? worst : code;
    }
    return worst;
}

int Run(int argc, char** argv) {
    CLI::App app("Asks and changes ONVIF devices.", "onvifctl");
    app.require_subcommand(1);
    app.footer(kExitCodes);
    Arguments arguments;
    ExitCode code = ExitCode::kDone;

    CLI::App* info = app.add_subcommand("info", "Show what a device is and how it is set up");
    info->footer(std::string("\nExample: onvifctl info 192.168.1.64 -u admin\n") + kConnectionHelp);
    AddConnectionOptions(info, arguments);
    info->callback([&] {
        arguments.table = true;
        code = Info(arguments);
    });

    for (const char* root : {"Get", "Set"}) {
        const bool get = root == std::string("Get");
        CLI::App* command = app.add_subcommand(
            get ? "get" : "set",
            get ? "Ask: COMMAND [--NAME VALUE]... any number of times, or a request document"
                : "Change: COMMAND --NAME VALUE... or a request document");
        command->footer(
            std::string(
                get ? "\nCommands and their parameters follow the host: every --NAME VALUE that is "
                      "no"
                      " option of\nthe tool is a parameter of the command before it, and its name"
                      " may be a path.\n\nExamples:\n"
                      "  onvifctl get 192.168.1.64 devInfo dateAndTime\n"
                      "  onvifctl get 192.168.1.64 profiles --format table\n"
                    : "\nExamples:\n"
                      "  onvifctl set 192.168.1.64 manualAlarmout --token R1 --active 1\n"
                      "  onvifctl set 192.168.1.64 networkProtocols --http/port 8080\n"
                      "  onvifctl set 192.168.1.64 -f request.xml\n") +
            kConnectionHelp);
        AddConnectionOptions(command, arguments);
        AddFormatOption(command, arguments);
        command->add_option("-f,--file", arguments.file,
                            "Request document to send; - for standard input");
        command->allow_extras();
        command->callback([&arguments, &code, command, root] {
            std::vector<std::string> words = command->remaining();
            // A command's name has neither.
            const bool namesFile = words.size() == 1 && arguments.file.empty() &&
                                   words[0].find_first_of("-./") != std::string::npos &&
                                   !words[0].starts_with("--");
            if (namesFile) {
                arguments.file = words[0];
                words.clear();
            }
            code = GetOrSet(arguments, root, words);
        });
    }

    CLI::App* send = app.add_subcommand("send", "Send a request document, Get or Set by its root");
    send->footer(std::string("\nExample: onvifctl send 192.168.1.64 request.xml\n") +
                 kConnectionHelp);
    AddConnectionOptions(send, arguments);
    AddFormatOption(send, arguments);
    send->add_option("FILE", arguments.file, "The document; - for standard input")->required();
    send->callback([&] { code = SendOne(arguments, onvifctl::ReadRequest(arguments.file, "")); });

    CLI::App* demo = app.add_subcommand("demo", "A guided tour of a device");
    demo->footer(std::string("\nExample: onvifctl demo 127.0.0.1:8080 -u admin -p secret\n") +
                 kConnectionHelp);
    AddConnectionOptions(demo, arguments);
    demo->callback([&] { code = Demo(arguments); });

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        app.exit(error);
        return static_cast<int>(ExitCode::kUsage);
    }
    return static_cast<int>(code);
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);  // a closed pipe is an exit code like others
    try {
        return Run(argc, argv);
    } catch (const CFailure& failure) {
        std::cerr << "onvifctl: " << failure.what() << '\n';
        return static_cast<int>(failure.Code());
    } catch (const std::exception& error) {
        std::cerr << "onvifctl: " << error.what() << '\n';
        return static_cast<int>(ExitCode::kLoginFailed);
    }
}
