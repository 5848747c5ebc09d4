#include "vocabulary/Commands.h"

#include <tinyxml2.h>

#include <algorithm>
#include <array>

#include "vocabulary/Embedded.h"

namespace onvifctl {

namespace {

constexpr std::string_view kFence = "```";

/// Takes the first line off a text.
std::string_view TakeLine(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

/// Without the marks of the page: `code` and [text](target).
std::string Plain(std::string_view marked) {
    std::string plain;
    for (std::size_t at = 0; at < marked.size(); ++at) {
        const bool link = marked.substr(at).starts_with("](");
        if (link) {
            at = std::min(marked.find(')', at), marked.size());
        } else if (marked[at] != '`' && marked[at] != '[') {
            plain += marked[at];
        }
    }
    return plain;
}

std::string Trimmed(std::string_view text) {
    const std::size_t first = std::min(text.find_first_not_of(' '), text.size());
    const std::size_t last = text.find_last_not_of(' ');
    return std::string(text.substr(first, last == text.npos ? 0 : last + 1 - first));
}

/// "| `name` | values | left out | required |"; false for the lines above the rows.
bool ReadRow(std::string_view line, ParameterWords& row) {
    std::array<std::string, 4> cells;
    line.remove_prefix(1);
    for (std::string& cell : cells) {
        const std::size_t end = std::min(line.find('|'), line.size());
        cell = Trimmed(line.substr(0, end));
        line.remove_prefix(std::min(end + 1, line.size()));
    }
    if (!cells[0].starts_with('`')) {
        return false;
    }
    row = {Plain(cells[0]), Plain(cells[1]), Plain(cells[2]), Plain(cells[3]), row.extension};
    return true;
}

/// "With the extension `standard-requests` ...": for the table that follows.
std::string ExtensionIn(std::string_view line) {
    constexpr std::string_view kLead = "With the extension `";
    return line.starts_with(kLead)
               ? std::string(line.substr(kLead.size(), line.find('`', kLead.size()) - kLead.size()))
               : "";
}

void AddToDescription(std::string_view line, bool& ended, std::string& description) {
    if (line == "No parameters." || ended) {
        ended = true;
    } else if (line.empty()) {
        description += description.empty() || description.ends_with('\n') ? "" : "\n";
    } else {
        description +=
            (description.empty() || description.ends_with('\n') ? "" : " ") + Plain(line);
    }
}

/// Reads a section up to the next heading.
void ReadSection(std::string_view& page, CommandWords& command) {
    bool ended = false;
    ParameterWords row;
    while (!page.empty() && !page.starts_with("#")) {
        const std::string_view line = TakeLine(page);
        if (line.starts_with(kFence)) {
            ended = true;
            const std::size_t end = std::min(page.find(kFence), page.size());
            if (command.request.empty()) {
                command.request = page.substr(0, end);
            }
            page.remove_prefix(end);
            TakeLine(page);
        } else if (line.starts_with('|')) {
            ended = true;
            if (ReadRow(line, row)) {
                command.parameters.push_back(row);
            }
        } else if (const std::string extension = ExtensionIn(line); !extension.empty() && ended) {
            row.extension = extension;
        } else {
            AddToDescription(line, ended, command.description);
        }
    }
    while (command.description.ends_with('\n')) {
        command.description.pop_back();
    }
}

std::vector<CommandWords> ReadCommands(std::string_view page) {
    std::vector<CommandWords> commands;
    while (!page.empty()) {
        const std::string_view line = TakeLine(page);
        for (const std::string_view root : {"Get", "Set"}) {
            const std::string heading = "### " + std::string(root) + " ";
            if (line.starts_with(heading)) {
                auto& command = commands.emplace_back();
                command.root = root;
                command.name = line.substr(heading.size());
                ReadSection(page, command);
                break;
            }
        }
    }
    return commands;
}

void AddWords(const tinyxml2::XMLElement* element, const std::string& path,
              std::vector<std::string>& words) {
    for (const auto* child = element->FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        const std::string name = path + child->Name();
        if (child->FirstChildElement() != nullptr) {
            AddWords(child, name + "/", words);
        } else {
            words.push_back("--" + name);
            words.emplace_back(child->GetText() == nullptr ? "" : child->GetText());
        }
    }
}

}  // namespace

std::string CommandWords::Summary() const {
    const std::string first = description.substr(0, description.find('\n'));
    std::size_t end = first.size() - (first.ends_with('.') ? 1 : 0);
    const std::size_t aside = first.find(" (");
    for (const char* stop : {". ", ": ", "; "}) {
        end = std::min(end, first.find(stop));
    }
    // Not within an aside.
    if (aside < end && first.find(')', aside) > end) {
        end = aside;
    }
    return first.substr(0, end);
}

std::vector<std::string> CommandWords::Example() const {
    tinyxml2::XMLDocument document;
    document.Parse(request.c_str(), request.size());
    std::vector<std::string> words = {name};
    if (document.RootElement() != nullptr && !document.RootElement()->NoChildren()) {
        AddWords(document.RootElement()->FirstChildElement(), "", words);
    }
    return words;
}

const std::vector<CommandWords>& KnownCommands() {
    static const std::vector<CommandWords> kCommands = ReadCommands(CommandsPage());
    return kCommands;
}

const CommandWords* FindCommand(std::string_view root, std::string_view name) {
    for (const CommandWords& command : KnownCommands()) {
        if (command.root == root && command.name == name) {
            return &command;
        }
    }
    return nullptr;
}

std::vector<std::string> CommandNames(std::string_view root) {
    std::vector<std::string> names;
    for (const CommandWords& command : KnownCommands()) {
        const bool wanted = root.empty() || command.root == root;
        if (wanted && std::find(names.begin(), names.end(), command.name) == names.end()) {
            names.push_back(command.name);
        }
    }
    return names;
}

}  // namespace onvifctl
