#include "client/ExchangeTrace.h"

#include <algorithm>
#include <utility>

#include "client/SoapExchange.h"
#include "common/AsciiText.h"
#include "common/HttpHead.h"
#include "common/LogText.h"
#include "common/Redaction.h"
#include "platform/Clock.h"
#include "platform/OrNothing.h"
#include "platform/ShownText.h"
#include "platform/TraceFile.h"
#include "transform/XmlTransform.h"

namespace onvif_client {

namespace {

constexpr std::size_t kMostShown = 262144;
// Behind what is shown, so that nothing is told of a part of what is removed as a whole.
constexpr std::size_t kMargin = 8192;
constexpr std::size_t kLongestWord = 200;

const char* WordOf(ExchangeEnd end) {
    switch (end) {
        case ExchangeEnd::kReplied:
            break;
        case ExchangeEnd::kRefused:
            return "refused";
        case ExchangeEnd::kNoConnection:
            return "no-connection";
        case ExchangeEnd::kClosed:
            return "closed";
        case ExchangeEnd::kTimeout:
            return "timeout";
        case ExchangeEnd::kStopped:
            return "stopped";
    }
    return "closed";
}

/// A text of one line without blanks around it.
std::string OneLine(std::string_view text) {
    std::string line(text.substr(0, kLongestWord));
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\t' || c == '\r' || c == '\n'; }, ' ');
    return ShownText(Trim(line));
}

/// The lines of a message with their breaks; none of them begins as an entry does.
std::string Lines(std::string_view text) {
    constexpr std::string_view kMark = "==";
    std::string shown;
    while (!text.empty()) {
        std::string_view line = TakeUntil(text, "\n");
        line = line.substr(0, line.find_last_not_of('\r') + 1);
        if (line.starts_with(kMark)) {
            shown += "\\x3D";
            line.remove_prefix(1);
        }
        for (bool goesOn = true; goesOn;) {
            const std::size_t tab = line.find('\t');
            goesOn = tab != std::string_view::npos;
            shown.append(ShownText(line.substr(0, tab))).append(goesOn ? "\t" : "\n");
            line.remove_prefix(goesOn ? tab + 1 : 0);
        }
    }
    return shown;
}

/// A message as it may be shown, and how many bytes of it are not.
struct Shown {
    std::string text;
    std::size_t left = 0;
};

Shown ShownMessage(std::string_view message, const Credentials& credentials) {
    Shown shown{Redacted(message.substr(0, kMostShown + kMargin),
                         {credentials.user, credentials.password})};
    if (message.size() > kMostShown + kMargin) {
        shown.text.erase(shown.text.size() - std::min(shown.text.size(), kMargin));
        shown.left = message.size() - kMostShown;
    }
    return shown;
}

std::string Printed(const Shown& message) {
    return Lines(message.text) +
           (message.left > 0 ? "... " + std::to_string(message.left) + " bytes more\n" : "");
}

/// "GetDNS": the first element in the body of an envelope.
std::string OperationOf(std::string_view request) {
    constexpr std::string_view kNameEnds = " \t\r\n/>";
    const std::size_t body = request.find(":Body");
    if (!request.starts_with("POST ") || body == std::string_view::npos) {
        return request.starts_with("GET ") ? "picture" : "-";
    }
    std::string_view tag = request.substr(body);
    TakeUntil(tag, "<");
    const std::string_view name = tag.substr(0, tag.find_first_of(kNameEnds));
    const std::string shown = OneLine(name.substr(name.rfind(':') + 1));
    return shown.empty() ? "-" : shown;
}

std::string TargetOf(std::string_view request) {
    TakeUntil(request, " ");
    const std::string target = OneLine(TakeUntil(request, " "));
    return target.empty() ? "-" : target;
}

/// Three digits; empty where there are none.
std::string_view StatusOf(std::string_view reply) {
    const std::string_view status = HttpStatus(reply);
    const bool proper =
        status.size() == 3 && status.find_first_not_of("0123456789") == std::string_view::npos;
    return proper ? status : std::string_view();
}

/// "NotAuthorized" of "ter:NotAuthorized", the innermost code of a fault; empty where it is none.
std::string_view FaultCode(const XMLElement* fault) {
    std::string_view code;
    for (const XMLElement* each = FirstChild(fault, "Code"); each != nullptr;
         each = FirstChild(each, "Subcode")) {
        code = Trim(TextOf(FirstChild(each, "Value")));
    }
    code.remove_prefix(code.rfind(':') + 1);
    const bool isName = code.size() < 64 && std::all_of(code.begin(), code.end(), [](char c) {
                            return LowerCase(c) >= 'a' && LowerCase(c) <= 'z';
                        });
    return isName ? code : std::string_view();
}

/// "fault NotAuthorized: REASON"; nothing where there is none.
std::optional<std::string> FaultRemark(std::string_view reply) {
    const std::size_t begin = reply.find('<');
    if (begin == std::string_view::npos || reply.find("Fault", begin) == std::string_view::npos) {
        return std::nullopt;
    }
    CXmlDocument document;
    CXmlTransform::LoadTrimmed(reply.substr(begin), document);
    const XMLElement* fault = document.Find("Envelope/Body/Fault");
    if (fault == nullptr) {
        return std::nullopt;
    }
    const std::string_view code = FaultCode(fault);
    const XMLElement* old = FirstChild(fault, "faultstring");
    return "fault" + (code.empty() ? "" : " " + std::string(code)) + ": " +
           OneLine(old != nullptr ? TextOf(old) : TextAt(fault, "Reason/Text"));
}

std::string Remark(const CExchangeTrace::Outcome& outcome, std::string_view status,
                   std::string_view shownReply) {
    if (outcome.bodySize) {
        return " " + std::to_string(*outcome.bodySize) + " bytes";
    }
    if (const auto fault = FaultRemark(shownReply)) {
        return " " + *fault;
    }
    const bool answer = shownReply.find("Envelope") != std::string_view::npos;
    return status.starts_with('2') && !answer ? " no SOAP" : "";
}

}  // namespace

std::shared_ptr<CExchangeTrace> CExchangeTrace::Begin(const std::string& ip, std::uint16_t port,
                                                      const Credentials& credentials,
                                                      std::string_view request) {
    if (!TracesExchanges()) {
        return nullptr;
    }
    return OrNothing([&] {
        return std::make_shared<CExchangeTrace>(DeviceName(ip, port), credentials, request);
    });
}

CExchangeTrace::CExchangeTrace(std::string device, Credentials credentials,
                               std::string_view request)
    : device_(std::move(device)),
      credentials_(std::move(credentials)),
      request_(request),
      began_(TickCount()) {}

void CExchangeTrace::End(const Outcome& outcome) const {
    const std::uint32_t milliseconds = TickCount() - began_;
    OrNothing([&] {
        WriteTraceEntry(milliseconds, Text(outcome, milliseconds));
        return true;
    });
}

std::string CExchangeTrace::Text(const Outcome& outcome, std::uint32_t milliseconds) const {
    const Shown request = ShownMessage(request_, credentials_);
    const Shown reply = ShownMessage(outcome.reply, credentials_);
    const std::string_view status = StatusOf(outcome.reply);
    std::string text =
        OneLine(device_) + " " + OperationOf(request.text) + " " + TargetOf(request.text) + " ";
    if (outcome.reply.empty()) {
        text += WordOf(outcome.end);
    } else {
        text += status.empty() ? std::string_view("no-http") : status;
    }
    text += " " + std::to_string(milliseconds) + " ms" + Remark(outcome, status, reply.text) + "\n";
    text += "=== request\n" + Printed(request);
    if (!outcome.reply.empty()) {
        const bool whole = outcome.end == ExchangeEnd::kReplied;
        text +=
            whole ? "=== reply\n" : std::string("=== reply, then ") + WordOf(outcome.end) + "\n";
        text += Printed(reply);
    }
    return text + "\n";
}

}  // namespace onvif_client
