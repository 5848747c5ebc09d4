#include "vocabulary/Help.h"

#include <memory>

#include "CommandLine.h"
#include "vocabulary/Nearest.h"

namespace onvifctl {

namespace {

constexpr auto kAll = [](const CLI::App*) { return true; };

std::string KindOf(const CLI::App& app) {
    return app.get_parent() == nullptr ? "subcommand" : "action";
}

std::string Unknown(const CLI::App& app, const std::string& word) {
    const std::string suggestion = DidYouMean(word, ActionNames(app));
    std::string path;
    for (const CLI::App* at = &app; at->get_parent() != nullptr; at = at->get_parent()) {
        path.insert(0, " " + at->get_name());
    }
    return "unknown " + KindOf(app) + " '" + word + "'" +
           (suggestion.empty() ? " ('onvifctl help" + path + "' lists them)" : suggestion);
}

void ShowHelp(const CLI::App& app, const std::vector<std::string>& words) {
    const CLI::App* found = &app;
    for (const std::string& word : words) {
        const CLI::App* next = nullptr;
        for (const CLI::App* each : found->get_subcommands(kAll)) {
            next = each->get_name() == word ? each : next;
        }
        if (next == nullptr) {
            throw CFailure(ExitCode::kUsage, Unknown(*found, word));
        }
        found = next;
    }
    const auto formatter = found->get_formatter();
    CDataOutput().Write(formatter->make_help(found, found->get_name(), CLI::AppFormatMode::Normal));
}

}  // namespace

std::string CUsageFormatter::make_usage(const CLI::App* app, std::string /*name*/) const {
    std::string path = app->get_name();
    for (const CLI::App* above = app->get_parent(); above != nullptr; above = above->get_parent()) {
        std::string words = above->get_name();
        for (const CLI::Option* option : above->get_options()) {
            words += option->get_positional() ? " " + make_option_usage(option) : "";
        }
        path.insert(0, words + " ");
    }
    return Formatter::make_usage(app, path);
}

std::vector<std::string> ActionNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* each : app.get_subcommands(kAll)) {
        names.push_back(each->get_name());
    }
    return names;
}

std::string UnknownAction(const CLI::App& root) {
    const CLI::App* deepest = &root;
    while (!deepest->get_subcommands().empty()) {
        deepest = deepest->get_subcommands().back();
    }
    if (deepest->get_subcommands(kAll).empty()) {
        return "";
    }
    // What an action does not take is left with those above it.
    for (const CLI::App* app = deepest; app != nullptr; app = app->get_parent()) {
        for (const std::string& word : app->remaining()) {
            if (!word.starts_with('-')) {
                return Unknown(*deepest, word);
            }
        }
    }
    return "";
}

void AddHelp(CLI::App& app) {
    auto words = std::make_shared<std::vector<std::string>>();
    CLI::App* help =
        app.add_subcommand("help", "Show the help of a subcommand, or of one of its actions");
    help->footer(ExamplesFooter({"onvifctl help get", "onvifctl help ptz move"}));
    help->add_option("SUBCOMMAND", *words, "A subcommand and its actions");
    help->callback([&app, words] { ShowHelp(app, *words); });
}

}  // namespace onvifctl
