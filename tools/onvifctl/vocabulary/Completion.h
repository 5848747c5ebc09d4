/// @file
/// Completion of command lines: the scripts of the shells ask the program itself.
#ifndef ONVIFCTL_VOCABULARY_COMPLETION_H
#define ONVIFCTL_VOCABULARY_COMPLETION_H

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace onvifctl {

/// The names of hosts that somebody has written down.
std::vector<std::string> CompletionHosts();

/// The script for a shell: "bash", "zsh" or "fish".
std::string CompletionScript(const std::string& shell);

/// Whether the words of a command line are "completion --words WORD...", which no parser may see:
/// the words are those of an unfinished command line.
bool AsksForCompletions(const std::vector<std::string>& words);

/// Writes what the last of them can become, a line each.
/// @return the program's exit code.
int ShowCompletions(const CLI::App& app, const std::vector<std::string>& words);

}  // namespace onvifctl

#endif
