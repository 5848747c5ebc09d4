#include "bridge/CommandAtCamera.h"

#include <algorithm>
#include <charconv>
#include <map>

#include "CommandLine.h"
#include "ResultOutput.h"
#include "documents/RequestDocument.h"
#include "documents/ResultDocument.h"
#include "output/Printable.h"
#include "ptz/NamedItems.h"

namespace onvifctl {

namespace {

using Kind = BridgeCommand::Kind;

constexpr std::size_t kLongestName = 256;
constexpr unsigned int kMostProfiles = 1000;

CFailure Usage(const std::string& message) {
    return {ExitCode::kUsage, message};
}

/// A picture's profile: 0 when none is said; nothing when it is no number.
std::optional<unsigned int> ProfileOf(const std::string& payload) {
    if (payload.empty()) {
        return 0;
    }
    unsigned int index = 0;
    const char* const end = payload.data() + payload.size();
    const auto [rest, error] = std::from_chars(payload.data(), end, index);
    const bool fits = error == std::errc() && rest == end && index < kMostProfiles;
    return fits ? std::optional(index) : std::nullopt;
}

/// The tokens of inputs ("token") or relays ("alarm/token") in the order of their numbers.
std::vector<std::string> TokensOf(CResultOutput& output, const char* command) {
    const CResultDocument result(output.Ask(MakeRequest("Get", {command})));
    std::vector<std::string> tokens;
    const auto* list = result.Command(command);
    const auto* item = list == nullptr ? nullptr : list->FirstChildElement();
    for (; item != nullptr; item = item->NextSiblingElement()) {
        const std::string name = item->Name();
        if (name == "token" || name == "alarm") {
            tokens.push_back(TextAt(item, name == "token" ? "" : "token"));
        }
    }
    return tokens;
}

void SwitchRelay(CResultOutput& output, unsigned int number, bool on) {
    const auto tokens = TokensOf(output, "alarmout");
    if (number == 0 || number > tokens.size()) {
        throw Usage("there is no such relay: the camera lists " + std::to_string(tokens.size()));
    }
    output.Ask(MakeRequest(
        "Set", {"manualAlarmout", "--token", tokens[number - 1], "--active", on ? "1" : "0"}));
}

/// What is done with something that is called by its token or its name.
struct Operation {
    const ItemKind& kind;
    const char* command;
    const char* parameter;
};

const std::map<Kind, Operation>& Operations() {
    static const std::map<Kind, Operation> operations = {
        {Kind::kPreset, {kPresetKind, "gotoPreset", "--presetToken"}},
        {Kind::kTourStart, {kTourKind, "startCruise", "--token"}},
        {Kind::kTourStop, {kTourKind, "stopCruise", "--token"}},
        {Kind::kTourPause, {kTourKind, "pauseCruise", "--token"}},
    };
    return operations;
}

}  // namespace

void CheckPayload(const BridgeCommand& command, const std::string& payload, std::size_t size) {
    if (size > kLongestName) {
        throw Usage("the payload has " + std::to_string(size) + " bytes, more than " +
                    std::to_string(kLongestName));
    }
    if (Printable(payload) != payload) {
        throw Usage("the payload is no text: UTF-8 without control characters");
    }
    if (command.kind == Kind::kRelay && payload != "ON" && payload != "OFF") {
        throw Usage("'" + payload + "' is neither ON nor OFF");
    }
    if (command.kind == Kind::kSnapshot && !ProfileOf(payload)) {
        throw Usage("'" + payload + "' is no profile: 0, 1 ... or nothing");
    }
    if (Operations().contains(command.kind) && payload.empty()) {
        throw Usage("the payload is empty: it names a " +
                    std::string(Operations().at(command.kind).kind.noun));
    }
}

struct CCommandSession::Talk {
    explicit Talk(const ConnectionOptions& options) : session(options, unused) {}

    std::string unused{};
    const Session session;
};

CCommandSession::CCommandSession(const ConnectionOptions& options)
    : talk_(std::make_unique<Talk>(options)) {}

CCommandSession::~CCommandSession() = default;

std::string CCommandSession::Do(const BridgeCommand& command, const std::string& payload) {
    if (command.kind == Kind::kSnapshot) {
        return talk_->session.connection.Picture(ProfileOf(payload).value_or(0));
    }
    CResultOutput output(talk_->session, Format::kJson);
    if (command.kind == Kind::kRelay) {
        SwitchRelay(output, command.number, payload == "ON");
        return "";
    }
    const Operation& operation = Operations().at(command.kind);
    const std::string token = CNamedItems(output, operation.kind).TokenOf(payload);
    output.Ask(MakeRequest("Set", {operation.command, operation.parameter, token}));
    return "";
}

Inventory CCommandSession::TakeInventory() {
    const auto count = [this](const char* command) -> unsigned int {
        constexpr std::size_t kMost = 1000;
        try {
            CResultOutput output(talk_->session, Format::kJson);
            return static_cast<unsigned int>(std::min(TokensOf(output, command).size(), kMost));
        } catch (const CFailure&) {
            return 0;
        }
    };
    return {count("alarmin"), count("alarmout")};
}

}  // namespace onvifctl
