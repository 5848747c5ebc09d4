/// @file
/// What an unfinished command line says so far.
#ifndef ONVIFCTL_VOCABULARY_TYPEDWORDS_H
#define ONVIFCTL_VOCABULARY_TYPEDWORDS_H

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "Connection.h"

namespace onvifctl {

struct TypedWords {
    const CLI::App* app = nullptr;         // the subcommand or action that the words lead to
    std::string path;                      // its names: "ptz preset goto"
    std::string subcommand;                // the first of them
    std::size_t arguments = 0;             // of the subcommand or action
    bool hasHost = false;                  // what the subcommand's first argument is
    std::string command;                   // the last one that get or set was told
    const CLI::Option* pending = nullptr;  // an option whose value comes next
    bool valueIsNext = false;              // of that option, or of a parameter
    ConnectionOptions connection;          // as the words and the environment say
};

/// @p words: all but the one that is completed.
TypedWords ReadTypedWords(const CLI::App& app, const std::vector<std::string>& words);

/// The action's option of that name ("--user", "-u"), or one of those above it; null if none is.
const CLI::Option* FindOption(const CLI::App* app, const std::string& name);

}  // namespace onvifctl

#endif
