#include "vocabulary/Completion.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <future>
#include <iterator>
#include <memory>
#include <thread>

#include "CommandLine.h"
#include "ExitCode.h"
#include "ResultOutput.h"
#include "hosts/HostsFile.h"
#include "hosts/Targets.h"
#include "output/Printable.h"
#include "ptz/NamedItems.h"
#include "vocabulary/Commands.h"
#include "vocabulary/Help.h"
#include "vocabulary/TypedWords.h"

namespace onvifctl {

namespace {

using Words = std::vector<std::string>;

constexpr const char* kAsk = "--words";

void Append(Words& words, const Words& more) {
    words.insert(words.end(), more.begin(), more.end());
}

/// The names of what a device lists; none where it does not tell.
Words NamesAt(ConnectionOptions options, const ItemKind& kind) {
    Words names;
    try {
        HostChoice choice;
        choice.words = {options.host};
        options = Target(choice, options);
        if (NeedsPassword(options)) {
            options.password = "";  // nobody is asked for one
        }
        const Session session(options);
        CResultOutput output(session, Format::kTable);
        const CNamedItems items(output, kind);
        for (const auto* item : items.Items()) {
            const std::string name = TextAt(item, kind.name);
            names.push_back(name.empty() ? TextAt(item, kind.token) : name);
        }
    } catch (const CFailure&) {  // then there is nothing to choose from
        names.clear();
    }
    return names;
}

/// The same, given up where a device lets somebody who types wait.
Words NamesSoon(const ConnectionOptions& options, const ItemKind& kind) {
    constexpr std::chrono::seconds kPatience(2);
    auto asked = std::make_shared<std::packaged_task<Words()>>(
        [options, kind] { return NamesAt(options, kind); });
    auto names = asked->get_future();
    std::thread asking([asked] { (*asked)(); });
    if (names.wait_for(kPatience) == std::future_status::timeout) {
        std::_Exit(EXIT_SUCCESS);  // the thread waits for the device, and nobody for the thread
    }
    asking.join();
    return names.get();
}

/// The items of a device that an action is told.
struct DeviceNames {
    const char* path;
    std::size_t from;
    std::size_t to;
    const ItemKind& kind;
};

constexpr std::size_t kAny = 1000;
constexpr DeviceNames kDeviceNames[] = {
    {"ptz preset goto", 0, 0, kPresetKind},   {"ptz preset rename", 0, 0, kPresetKind},
    {"ptz preset remove", 0, 0, kPresetKind}, {"ptz tour add", 1, kAny, kPresetKind},
    {"ptz tour start", 0, 0, kTourKind},      {"ptz tour stop", 0, 0, kTourKind},
    {"ptz tour pause", 0, 0, kTourKind},      {"ptz tour remove", 0, 0, kTourKind},
};

/// The words in braces that a check of an option's value shows.
Words ChoicesOf(const CLI::Option* option) {
    const std::string type = option->get_type_name();
    const std::size_t start = type.find('{');
    const std::size_t end = type.find('}', start);
    return end == std::string::npos
               ? Words()
               : CLI::detail::split(type.substr(start + 1, end - start - 1), ',');
}

Words Values(const CLI::Option* option, const std::string& current) {
    Words values;
    const bool list = option->get_delimiter() == ',';
    const std::string before = list ? current.substr(0, current.rfind(',') + 1) : "";
    for (const std::string& choice : ChoicesOf(option)) {
        values.push_back(before + choice);
    }
    return values;
}

Words OptionsFor(const TypedWords& typed) {
    Words options;
    const char* root = typed.subcommand == "get" ? "Get" : "Set";
    if (const CommandWords* command = FindCommand(root, typed.command)) {
        for (const ParameterWords& parameter : command->parameters) {
            options.push_back("--" + parameter.name);
        }
    }
    for (const CLI::App* app = typed.app;
         app != nullptr && (app->get_parent() != nullptr || app == typed.app);
         app = app->get_parent()) {
        for (const CLI::Option* option : app->get_options()) {
            for (const std::string& name : option->get_lnames()) {
                const std::string word = "--" + name;
                if (std::find(options.begin(), options.end(), word) == options.end()) {
                    options.push_back(word);
                }
            }
        }
    }
    return options;
}

bool WantsHost(const TypedWords& typed) {
    const auto positionals = typed.app->get_options([](const CLI::Option* option) {
        return option->get_positional() && option->get_name(true).starts_with("HOST");
    });
    return !positionals.empty() &&
           (!typed.hasHost || positionals.front()->get_items_expected_max() > 1);
}

Words ArgumentsFor(const TypedWords& typed) {
    Words words;
    if (WantsHost(typed)) {
        words = CompletionHosts();
    }
    if (typed.subcommand == "help") {
        return ActionNames(*typed.app->get_parent());
    }
    if (typed.subcommand == "commands") {
        return CommandNames();
    }
    if (typed.subcommand == "completion") {
        return {"bash", "fish", "zsh"};
    }
    if (typed.hasHost && typed.subcommand == "get") {
        return CommandNames("Get");
    }
    if (typed.hasHost && typed.subcommand == "set") {
        return CommandNames("Set");
    }
    Append(words, ActionNames(*typed.app));
    for (const DeviceNames& each : kDeviceNames) {
        if (typed.path == each.path && typed.arguments >= each.from && typed.arguments <= each.to) {
            Append(words, NamesSoon(typed.connection, each.kind));
        }
    }
    return words;
}

Words Candidates(const TypedWords& typed, const std::string& current) {
    if (typed.valueIsNext) {
        return typed.pending == nullptr ? Words() : Values(typed.pending, current);
    }
    return current.starts_with('-') ? OptionsFor(typed) : ArgumentsFor(typed);
}

}  // namespace

Words CompletionHosts() {
    Words names;
    try {
        for (const HostEntry& entry : ReadHostsFile(DefaultHostsFile(), true)) {
            names.push_back(entry.name);
        }
    } catch (const CFailure&) {  // who runs a command is told why
        names.clear();
    }
    return names;
}

bool AsksForCompletions(const Words& words) {
    return words.size() > 1 && words[0] == "completion" && words[1] == kAsk;
}

int ShowCompletions(const CLI::App& app, const Words& words) {
    Words typed(words.begin() + 2, words.end());
    const std::string current = typed.empty() ? "" : typed.back();
    if (!typed.empty()) {
        typed.pop_back();
    }
    std::string text;
    for (const std::string& word : Candidates(ReadTypedWords(app, typed), current)) {
        // A name that would control the terminal is not shown there.
        if (word.starts_with(current) && Printable(word) == word) {
            text += word + "\n";
        }
    }
    CDataOutput().Write(text);
    return 0;
}

void AddCompletion(CLI::App& app) {
    auto shell = std::make_shared<std::string>();
    auto hosts = std::make_shared<bool>(false);
    CLI::App* completion = app.add_subcommand(
        "completion", "Print the script that completes command lines in a shell");
    completion->footer(ExamplesFooter({"source <(onvifctl completion bash)",
                                       "onvifctl completion zsh > ~/.zfunc/_onvifctl",
                                       "onvifctl completion fish | source"}));
    auto* name = completion->add_option("SHELL", *shell, "bash, zsh or fish")
                     ->check(CLI::IsMember({"bash", "zsh", "fish"}));
    completion->add_flag("--hosts", *hosts, "Print the known hosts instead")->excludes(name);
    completion->callback([shell, hosts] {
        if (shell->empty() && !*hosts) {
            throw CFailure(ExitCode::kUsage, "say which shell: bash, zsh or fish");
        }
        std::string text = *hosts ? "" : CompletionScript(*shell);
        for (const std::string& host : *hosts ? CompletionHosts() : Words()) {
            text += host + "\n";
        }
        CDataOutput().Write(text);
    });
}

}  // namespace onvifctl
