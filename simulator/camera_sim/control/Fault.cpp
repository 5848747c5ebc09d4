#include "camera_sim/control/Fault.h"

#include <algorithm>
#include <array>
#include <utility>

#include "camera_sim/soap/Namespaces.h"
#include "camera_sim/soap/Values.h"

namespace camera_sim {
namespace {

constexpr int kLongestWait = 3600 * 1000;  // milliseconds

using Kind = Fault::Kind;

bool IsName(std::string_view text) {
    constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    return !text.empty() && text.find_first_not_of(kLetters) == std::string_view::npos;
}

/// Splits at the first @p separator; the second part is empty when there is none.
std::pair<std::string_view, std::string_view> SplitAt(std::string_view text, char separator) {
    const auto position = text.find(separator);
    if (position == std::string_view::npos) {
        return {text, {}};
    }
    return {text.substr(0, position), text.substr(position + 1)};
}

bool ReadBytes(std::string_view text, Fault& fault) {
    const auto value = ToInt(text);
    if (!value || *value < 0) {
        return false;
    }
    fault.bytes = static_cast<std::size_t>(*value);
    return true;
}

bool ReadWait(std::string_view text, std::chrono::milliseconds& target) {
    const auto value = ToInt(text);
    if (!value || *value < 0 || *value > kLongestWait) {
        return false;
    }
    target = std::chrono::milliseconds(*value);
    return true;
}

bool ReadDelay(std::string_view argument, Fault& fault) {
    return ReadWait(argument, fault.delay);
}

bool ReadOptionalDelay(std::string_view argument, Fault& fault) {
    return argument.empty() || ReadWait(argument, fault.delay);
}

bool ReadSegments(std::string_view argument, Fault& fault) {
    const auto [bytes, pause] = SplitAt(argument, ',');
    return ReadBytes(bytes, fault) && fault.bytes > 0 && ReadWait(pause, fault.pause);
}

/// A name, perhaps with a namespace's usual prefix.
bool IsSubcode(std::string_view text) {
    const auto colon = text.find(':');
    return colon == std::string_view::npos
               ? IsName(text)
               : FindUsualPrefix(text.substr(0, colon)) && IsName(text.substr(colon + 1));
}

bool ReadSoapFault(std::string_view argument, Fault& fault) {
    const auto [code, rest] = SplitAt(argument, ',');
    const auto [subcodes, reason] = SplitAt(rest, ',');
    const auto [subcode, detailCode] = SplitAt(subcodes, '/');
    fault.soapFault = {
        std::string(code), std::string(subcode), std::string(detailCode), std::string(reason), {}};
    return (code == "Sender" || code == "Receiver") && (subcode.empty() || IsSubcode(subcode)) &&
           (detailCode.empty() || IsName(detailCode));
}

bool ReadRaw(std::string_view argument, Fault& fault) {
    constexpr std::string_view kEscapes = "rnt\\";
    constexpr std::string_view kMeanings = "\r\n\t\\";
    for (std::size_t i = 0; i < argument.size(); ++i) {
        if (argument[i] == '\\' && i + 1 < argument.size()) {
            const auto escape = kEscapes.find(argument[++i]);
            if (escape == std::string_view::npos) {
                return false;
            }
            fault.reply += kMeanings[escape];
        } else {
            fault.reply += argument[i];
        }
    }
    return true;
}

bool ReadStatus(std::string_view argument, Fault& fault) {
    constexpr int kLeast = 200;
    constexpr int kMost = 599;
    const auto value = ToInt(argument);
    if (!value || *value < kLeast || *value > kMost) {
        return false;
    }
    fault.status = static_cast<unsigned>(*value);
    return true;
}

struct KindRow {
    Kind kind;
    std::string_view name;
    bool (*readArgument)(std::string_view argument, Fault& fault);
};

constexpr std::array kKinds = {
    KindRow{Kind::kDelay, "delay", ReadDelay},
    KindRow{Kind::kSilence, "silence", ReadOptionalDelay},
    KindRow{Kind::kClose, "close", ReadOptionalDelay},
    KindRow{Kind::kTruncate, "truncate", ReadBytes},
    KindRow{Kind::kGarbage, "garbage", ReadBytes},
    KindRow{Kind::kSoapFault, "soapfault", ReadSoapFault},
    KindRow{Kind::kUnauthorized, "401", ReadOptionalDelay},
    KindRow{Kind::kNoProlog, "noprolog", ReadOptionalDelay},
    KindRow{Kind::kSegments, "segments", ReadSegments},
    KindRow{Kind::kRawReply, "raw", ReadRaw},
    KindRow{Kind::kBareStatus, "status", ReadStatus},
};

}  // namespace

std::string_view FaultSyntax() {
    return R"(OPERATION[@COUNT]=KIND[:ARGUMENT]
OPERATION is a name (GetProfiles), one of one service (tr2:GetProfiles), any of one (tr2:*),
http:snapshot for pictures or * for all requests.
COUNT is how many requests it meets; all when it is left out.
  delay:MS             answer late
  silence[:MS]         never answer, keep the connection open
  close[:MS]           close without an answer, after MS
  truncate:BYTES       close after the first BYTES of the reply, HTTP head included
  garbage:BYTES        send meaningless bytes instead
  soapfault:CODE,SUBCODE[/SUBCODE],REASON
                       e.g. soapfault:Sender,InvalidArgVal/NoProfile,No such profile
  401[:MS]             HTTP 401 without a body
  status:CODE          HTTP CODE with neither body nor challenge
  noprolog[:MS]        answer without the XML declaration
  segments:BYTES,MS    send the reply in pieces of BYTES, MS apart
  raw:TEXT             send TEXT as the whole reply; \r \n \t \\ are understood
)";
}

std::string_view KindName(Kind kind) {
    const auto row = std::find_if(kKinds.begin(), kKinds.end(),
                                  [kind](const KindRow& known) { return known.kind == kind; });
    return row == kKinds.end() ? std::string_view() : row->name;
}

std::optional<PlannedFault> ParseFault(std::string_view text, std::string& error) {
    const auto [target, action] = SplitAt(text, '=');
    const auto [operation, count] = SplitAt(target, '@');
    const auto [kindName, argument] = SplitAt(action, ':');
    PlannedFault planned;
    planned.operation = operation;
    if (operation.empty() || action.empty()) {
        error = "a fault is written OPERATION=KIND";
        return std::nullopt;
    }
    if (target.size() != operation.size()) {
        const auto remaining = ToInt(count);
        if (!remaining || *remaining < 1) {
            error = "the count after @ is not a number above 0";
            return std::nullopt;
        }
        planned.fault.remaining = *remaining;
    }
    const auto row =
        std::find_if(kKinds.begin(), kKinds.end(),
                     [name = kindName](const KindRow& known) { return known.name == name; });
    if (row == kKinds.end()) {
        error = "unknown kind of fault \"" + std::string(kindName) + "\"";
        return std::nullopt;
    }
    planned.fault.kind = row->kind;
    if (!row->readArgument(argument, planned.fault)) {
        error = "bad argument for \"" + std::string(kindName) + "\"";
        return std::nullopt;
    }
    return planned;
}

bool MatchesOperation(std::string_view pattern, std::string_view service,
                      std::string_view operation) {
    if (pattern == "*" || pattern == operation) {
        return true;
    }
    const auto [prefix, name] = SplitAt(pattern, ':');
    return prefix == service && (name == operation || name == "*") && !service.empty();
}

}  // namespace camera_sim
