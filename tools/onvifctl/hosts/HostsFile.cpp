#include "hosts/HostsFile.h"

#define TOML_HEADER_ONLY 1
#define TOML_ENABLE_FORMATTERS 0
#include <toml++/toml.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <utility>

#include "ExitCode.h"
#include "system/FilePath.h"

namespace onvifctl {

namespace {

constexpr std::size_t kMostBytes = 1 << 20;
constexpr std::size_t kMostEntries = 10000;

/// Reads one file; its messages name the line.
class CReader {
 public:
    explicit CReader(const std::string& file) : file_(file) {}

    std::vector<HostEntry> Read(std::string_view text) const {
        const toml::table document = Parse(text);
        std::vector<std::pair<toml::source_index, HostEntry>> found;
        for (const auto& [key, value] : document) {
            if (!value.is_table()) {
                throw Fault(key.source(),
                            "'" + std::string(key.str()) + "' stands outside of a camera's [NAME]");
            }
            found.emplace_back(key.source().begin.line, Entry(key, *value.as_table()));
        }
        if (found.size() > kMostEntries) {
            throw CFailure(ExitCode::kUsage,
                           file_ + ": more than " + std::to_string(kMostEntries) + " cameras");
        }
        std::stable_sort(found.begin(), found.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        std::vector<HostEntry> entries;
        for (auto& [line, entry] : found) {
            entries.push_back(std::move(entry));
        }
        return entries;
    }

 private:
    CFailure Fault(const toml::source_region& place, const std::string& message) const {
        return {ExitCode::kUsage, file_ + ":" + std::to_string(place.begin.line) + ": " + message};
    }

    toml::table Parse(std::string_view text) const {
        try {
            return toml::parse(text);
        } catch (const toml::parse_error& error) {
            // What the parser saw may be a piece of a password.
            std::string message(error.description());
            message.erase(std::min({message.size(), message.find("; saw"), message.find(", saw")}));
            throw Fault(error.source(), message);
        }
    }

    std::string Text(const toml::key& key, const toml::node& value) const {
        const auto* text = value.as_string();
        if (text == nullptr) {
            throw Fault(value.source(), "'" + std::string(key.str()) + "' is not a text");
        }
        return text->get();
    }

    /// Names and tags are words of the command line.
    std::string Word(const toml::source_region& place, const std::string& text) const {
        const bool fits = !text.empty() && text[0] != '@' && text[0] != '-' &&
                          std::none_of(text.begin(), text.end(), [](unsigned char c) {
                              return c <= ' ' || c == 0x7F || c == ',';
                          });
        if (!fits) {
            throw Fault(place,
                        "'" + text + "' is not a name: no blanks, no commas, no @ or - first");
        }
        return text;
    }

    std::vector<std::string> Tags(const toml::key& key, const toml::node& value) const {
        const auto* list = value.as_array();
        if (list == nullptr) {
            throw Fault(value.source(), "'" + std::string(key.str()) + "' is not a list of texts");
        }
        std::vector<std::string> tags;
        for (const toml::node& tag : *list) {
            tags.push_back(Word(tag.source(), Text(key, tag)));
        }
        return tags;
    }

    HostEntry Entry(const toml::key& name, const toml::table& table) const {
        HostEntry entry;
        entry.name = Word(name.source(), std::string(name.str()));
        int passwords = 0;
        for (const auto& [key, value] : table) {
            if (key == "address") {
                entry.address = Text(key, value);
            } else if (key == "user") {
                entry.user = Text(key, value);
            } else if (key == "tags") {
                entry.tags = Tags(key, value);
            } else if (key == "password") {
                entry.password = Text(key, value);
            } else if (key == "password-file") {
                entry.passwordFile = Text(key, value);
            } else if (key == "password-command") {
                entry.passwordCommand = Text(key, value);
            } else {
                throw Fault(key.source(), "'" + std::string(key.str()) +
                                              "' is unknown (a name with a dot needs quotes: "
                                              "[\"gate.example\"])");
            }
            passwords += key.str().starts_with("password") ? 1 : 0;
            if (passwords > 1) {
                throw Fault(key.source(), "'" + entry.name + "' has more than one password");
            }
        }
        if (entry.address.empty()) {
            throw Fault(name.source(), "'" + entry.name + "' has no address");
        }
        return entry;
    }

    const std::string& file_;
};

std::string TextOfFile(const std::string& file) {
    std::ifstream stream(PathOf(file), std::ios::binary);
    std::string text(kMostBytes + 1, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (stream.bad() || (stream.fail() && !stream.eof())) {
        throw CFailure(ExitCode::kUsage, "cannot read '" + file + "'");
    }
    text.resize(static_cast<std::size_t>(stream.gcount()));
    if (text.size() > kMostBytes) {
        throw CFailure(ExitCode::kUsage, "'" + file + "' is larger than 1 MiB");
    }
    return text;
}

}  // namespace

std::vector<HostEntry> ReadHostsFile(const std::string& file, bool isDefault) {
    std::error_code error;
    if (isDefault && (file.empty() || !std::filesystem::exists(PathOf(file), error))) {
        return {};
    }
    const std::string text = TextOfFile(file);
    auto entries = CReader(file).Read(text);
    const std::filesystem::path folder = PathOf(file).parent_path();
    for (HostEntry& entry : entries) {
        if (entry.password && OthersMayRead(PathOf(file))) {
            throw CFailure(ExitCode::kUsage, "'" + file +
                                                 "' holds passwords and can be read by others than "
                                                 "its owner (chmod go-r)");
        }
        if (!entry.passwordFile.empty()) {
            entry.passwordFile = TextOf(folder / PathOf(entry.passwordFile));
        }
    }
    return entries;
}

std::string DefaultHostsFile() {
    const std::filesystem::path folder = SettingsFolder();
    return folder.empty() ? "" : TextOf(folder / "onvifctl" / "hosts.toml");
}

}  // namespace onvifctl
