/// @file
/// Help where somebody looks for it: full usage lines, mistyped subcommands.
#ifndef ONVIFCTL_VOCABULARY_HELP_H
#define ONVIFCTL_VOCABULARY_HELP_H

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace onvifctl {

/// Usage lines of actions with what stands before them: "onvifctl ptz HOST move [OPTIONS] X Y".
class CUsageFormatter : public CLI::Formatter {
 public:
    std::string make_usage(const CLI::App* app, std::string name) const override;
};

/// The names of the subcommands or actions.
std::vector<std::string> ActionNames(const CLI::App& app);

/// What is wrong with words that the parser did not take, when it is a subcommand or an action;
/// else nothing.
std::string UnknownAction(const CLI::App& root);

}  // namespace onvifctl

#endif
