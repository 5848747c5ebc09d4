/// @file
/// The commands that the library knows and their parameters, as docs/commands.md describes them.
#ifndef ONVIFCTL_VOCABULARY_COMMANDS_H
#define ONVIFCTL_VOCABULARY_COMMANDS_H

#include <string>
#include <string_view>
#include <vector>

namespace onvifctl {

/// A row of a command's table.
struct ParameterWords {
    std::string name;  // a path below the command's element: "time/hour"
    std::string values;
    std::string leftOut;
    std::string required;
    std::string extension;  // that it needs; empty: none
};

/// A section of the page.
struct CommandWords {
    std::string root;  // "Get" or "Set"
    std::string name;
    std::string description;  // plain text, a line for each paragraph
    std::vector<ParameterWords> parameters;
    std::string request;  // the document of the example

    /// "get" or "set": the subcommand that sends it.
    std::string Subcommand() const { return root == "Get" ? "get" : "set"; }
    /// The beginning of the description.
    std::string Summary() const;
    /// The example as words behind HOST: "dns --dhcp false --ip 192.0.2.53".
    std::vector<std::string> Example() const;
};

/// All commands, in the order of the page.
const std::vector<CommandWords>& KnownCommands();

/// The command of that root and name; null when there is none.
const CommandWords* FindCommand(std::string_view root, std::string_view name);

/// The names of a root's commands, or of all.
std::vector<std::string> CommandNames(std::string_view root = {});

}  // namespace onvifctl

#endif
