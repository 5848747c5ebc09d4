// The subcommand commands: what get and set can be told.
#include <memory>

#include "CommandLine.h"
#include "documents/JsonResults.h"
#include "documents/ResultTable.h"
#include "vocabulary/Commands.h"
#include "vocabulary/Nearest.h"

namespace onvifctl {

namespace {

struct CommandsArguments {
    std::string name;
    bool json = false;
};

/// A word as a shell takes it.
std::string Quoted(const std::string& word) {
    const bool plain = !word.empty() && word.find_first_of(" '\"$&|;<>()\\*?#`") == word.npos;
    return plain ? word : "'" + word + "'";
}

std::string ExampleLine(const CommandWords& command) {
    std::string line = "onvifctl " + command.Subcommand() + " HOST";
    for (const std::string& word : command.Example()) {
        line += " " + Quoted(word);
    }
    return line;
}

/// With line breaks where a terminal would break words.
std::string Wrapped(const std::string& text) {
    constexpr std::size_t kWidth = 96;
    std::string wrapped;
    std::size_t column = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find_first_of(" \n", at), text.size());
        if (column > 0 && column + end - at > kWidth) {
            wrapped.back() = '\n';
            column = 0;
        }
        wrapped += text.substr(at, end + 1 - at);
        column = text[std::min(end, text.size() - 1)] == '\n' ? 0 : column + end + 1 - at;
        at = end + 1;
    }
    return wrapped;
}

std::string ListOf(const std::string& root, const std::string& heading) {
    std::vector<std::vector<std::string>> rows;
    for (const CommandWords& command : KnownCommands()) {
        if (command.root == root) {
            rows.push_back({command.name, command.Summary()});
        }
    }
    return heading + "\n" + AlignColumns(rows);
}

std::string Explanation(const CommandWords& command) {
    std::string text = command.Subcommand() + " " + command.name + "\n";
    text += Wrapped(command.description) + "\n\n";
    if (command.parameters.empty()) {
        text += "No parameters.\n";
    } else {
        std::vector<std::vector<std::string>> rows = {
            {"PARAMETER", "REQUIRED", "LEFT OUT", "VALUES"}};
        for (const ParameterWords& each : command.parameters) {
            rows.push_back({"--" + each.name, each.required, each.leftOut,
                            each.values + (each.extension.empty()
                                               ? ""
                                               : " (with the extension " + each.extension + ")")});
        }
        text += AlignColumns(rows);
    }
    return text + "\nExample:\n  " + ExampleLine(command) + "\n";
}

Json JsonOf(const CommandWords& command) {
    Json parameters = Json::array();
    for (const ParameterWords& each : command.parameters) {
        parameters.push_back(
            {{"name", each.name},
             {"values", each.values},
             {"leftOut", each.leftOut},
             {"required", each.required},
             {"extension", each.extension.empty() ? Json() : Json(each.extension)}});
    }
    return {{"command", command.name},
            {"subcommand", command.Subcommand()},
            {"description", command.description},
            {"parameters", parameters},
            {"example", command.Example()},
            {"values", ResultShape(command.root, command.name)}};
}

void ShowCommands(const CommandsArguments& arguments) {
    std::string text;
    for (const CommandWords& command : KnownCommands()) {
        if (!arguments.name.empty() && command.name != arguments.name) {
            continue;
        }
        text += arguments.json ? JsonLine(JsonOf(command))
                               : (text.empty() ? "" : "\n") + Explanation(command);
    }
    if (text.empty()) {
        throw CFailure(ExitCode::kUsage, "unknown command '" + arguments.name + "'" +
                                             DidYouMean(arguments.name, CommandNames()));
    }
    if (arguments.name.empty() && !arguments.json) {
        text = ListOf("Get", "get:") + "\n" + ListOf("Set", "set:");
    }
    CDataOutput().Write(text);
}

}  // namespace

void AddCommands(CLI::App& app) {
    auto arguments = std::make_shared<CommandsArguments>();
    CLI::App* commands =
        app.add_subcommand("commands", "List the commands of get and set, or explain one of them");
    commands->footer(ExamplesFooter({"onvifctl commands", "onvifctl commands dateAndTime",
                                     "onvifctl commands streamURI --format json"}));
    commands->add_option("NAME", arguments->name, "Its parameters, and an example");
    commands
        ->add_option_function<std::string>(
            "--format",
            [arguments](const std::string& format) { arguments->json = format == "json"; },
            "table: readable text (default); json: an object for each command")
        ->check(CLI::IsMember({"table", "json"}));
    commands->callback([arguments] { ShowCommands(*arguments); });
}

}  // namespace onvifctl
