#include "vocabulary/TypedWords.h"

#include "CommandLine.h"

namespace onvifctl {

namespace {

const CLI::App* ActionOf(const CLI::App* app, const std::string& name) {
    for (const CLI::App* each : app->get_subcommands([](const CLI::App*) { return true; })) {
        if (each->get_name() == name) {
            return each;
        }
    }
    return nullptr;
}

void ReadOption(const std::string& word, TypedWords& typed) {
    const std::size_t equals = word.find('=');
    const CLI::Option* option = FindOption(typed.app, word.substr(0, equals));
    const bool takesValue = option == nullptr ? word.starts_with("--") && !typed.command.empty()
                                              : option->get_items_expected_max() > 0;
    typed.valueIsNext = takesValue && equals == std::string::npos;
    typed.pending = typed.valueIsNext ? option : nullptr;
}

void ReadValue(const std::string& word, TypedWords& typed) {
    if (typed.pending != nullptr && typed.pending->check_lname("user")) {
        typed.connection.user = word;
    } else if (typed.pending != nullptr && typed.pending->check_lname("password")) {
        typed.connection.password = word;
    }
    typed.valueIsNext = false;
    typed.pending = nullptr;
}

void ReadArgument(const std::string& word, TypedWords& typed) {
    if (const CLI::App* action = ActionOf(typed.app, word)) {
        typed.app = action;
        typed.path += (typed.path.empty() ? "" : " ") + word;
        typed.subcommand = typed.subcommand.empty() ? word : typed.subcommand;
        typed.arguments = 0;
        return;
    }
    if (!typed.hasHost) {
        typed.hasHost = true;
        typed.connection.host = word;
    } else if (typed.subcommand == "get" || typed.subcommand == "set") {
        typed.command = word;
    }
    ++typed.arguments;
}

}  // namespace

const CLI::Option* FindOption(const CLI::App* app, const std::string& name) {
    for (; app != nullptr; app = app->get_parent()) {
        if (const CLI::Option* option = app->get_option_no_throw(name)) {
            return option->nonpositional() ? option : nullptr;
        }
    }
    return nullptr;
}

TypedWords ReadTypedWords(const CLI::App& app, const std::vector<std::string>& words) {
    TypedWords typed;
    typed.app = &app;
    typed.connection = CredentialsOfEnvironment();
    for (const std::string& word : words) {
        if (typed.valueIsNext) {
            ReadValue(word, typed);
        } else if (word.starts_with('-') && word.size() > 1) {
            ReadOption(word, typed);
        } else {
            ReadArgument(word, typed);
        }
    }
    return typed;
}

}  // namespace onvifctl
