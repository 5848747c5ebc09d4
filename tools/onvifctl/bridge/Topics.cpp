#include "bridge/Topics.h"

#include <array>
#include <cctype>
#include <charconv>
#include <cstdio>

#include "ExitCode.h"
#include "output/Printable.h"

namespace onvifctl {

namespace {

constexpr std::size_t kLongestPrefix = 256;
constexpr std::size_t kLongestLevel = 8192;
constexpr unsigned int kMostNumber = 1000;  // the library has no more inputs, nor relays

std::string Escaped(char sign, char c) {
    std::array<char, 4> text = {};
    std::snprintf(text.data(), text.size(), "%c%02X", sign, static_cast<unsigned char>(c));
    return text.data();
}

/// 1 ... 1000, written in one way alone; 0: it is none.
unsigned int NumberOf(const std::string& text) {
    unsigned int number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    const bool fits =
        error == std::errc() && rest == end && text[0] != '0' && number <= kMostNumber;
    return fits ? number : 0;
}

struct CommandTopic {
    const char* before;  // a relay's number stands between these
    const char* after;
    BridgeCommand::Kind kind;
};

using Kind = BridgeCommand::Kind;
constexpr std::array kCommands = {
    CommandTopic{"relay/", "/set", Kind::kRelay},
    CommandTopic{"preset/set", "", Kind::kPreset},
    CommandTopic{"tour/set", "", Kind::kTourStart},
    CommandTopic{"tour/stop", "", Kind::kTourStop},
    CommandTopic{"tour/pause", "", Kind::kTourPause},
    CommandTopic{"snapshot/get", "", Kind::kSnapshot},
};

}  // namespace

std::string LevelOf(const std::string& name) {
    const bool isText = Printable(name) == name;  // UTF-8 without control characters
    std::string level;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        const bool special = byte < ' ' || byte == 0x7F || (byte > 0x7F && !isText) || c == '+' ||
                             c == '#' || c == '/' || c == '%' || c == '$';
        level += special ? Escaped('%', c) : std::string(1, c);
    }
    if (level.size() > kLongestLevel) {
        throw CFailure(ExitCode::kUsage, "the name '" + name.substr(0, 40) + "...' is too long");
    }
    return level;
}

std::string IdentifierOf(const std::string& name) {
    std::string identifier;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        const bool plain = byte < 0x80 && (std::isalnum(byte) != 0 || c == '-');
        identifier += plain ? std::string(1, c) : Escaped('_', c);
    }
    return identifier;
}

bool IsNumberedState(const std::string& rest) {
    const std::size_t slash = rest.find('/');
    const std::string kind = rest.substr(0, slash);
    return slash != std::string::npos && (kind == "input" || kind == "relay") &&
           NumberOf(rest.substr(slash + 1)) != 0;
}

CTopics::CTopics(const std::string& prefix, unsigned int bridge)
    : prefix_(prefix + "/"), bridge_(prefix_ + "$bridge/" + std::to_string(bridge) + "/") {
    if (prefix.empty() || prefix.size() > kLongestPrefix || Printable(prefix) != prefix ||
        prefix.find_first_of("+#") != std::string::npos || prefix.front() == '$') {
        throw CFailure(ExitCode::kUsage,
                       "'" + prefix + "' cannot begin a topic: no +, no #, no $ first");
    }
}

std::vector<std::string> CTopics::CommandFilters() const {
    std::vector<std::string> filters;
    for (const CommandTopic& each : kCommands) {
        const std::string after = each.after;
        filters.push_back(prefix_ + "+/" + each.before + (after.empty() ? "" : "+" + after));
    }
    return filters;
}

std::vector<std::string> CTopics::StateFilters() const {
    return {prefix_ + "+/input/+", prefix_ + "+/relay/+"};
}

std::optional<CTopics::Parts> CTopics::PartsOf(const std::string& topic) const {
    const std::size_t start = prefix_.size();
    const std::size_t slash = topic.find('/', start);
    if (!topic.starts_with(prefix_) || slash == std::string::npos) {
        return std::nullopt;
    }
    return Parts{topic.substr(start, slash - start), topic.substr(slash + 1)};
}

std::optional<BridgeCommand> CTopics::CommandOf(const std::string& rest) {
    for (const CommandTopic& each : kCommands) {
        const std::string before = each.before;
        const std::string after = each.after;
        if (after.empty() && rest == before) {
            return BridgeCommand{each.kind, 0, rest.substr(0, rest.find('/'))};
        }
        if (!after.empty() && rest.starts_with(before) && rest.ends_with(after)) {
            const std::string name = rest.substr(0, rest.size() - after.size());
            // A number that no relay has is refused where the relays are known.
            return BridgeCommand{each.kind, NumberOf(name.substr(before.size())), name};
        }
    }
    return std::nullopt;
}

}  // namespace onvifctl
