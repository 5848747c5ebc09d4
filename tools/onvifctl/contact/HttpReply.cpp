#include "contact/HttpReply.h"

#include <tinyxml2.h>

#include <algorithm>
#include <charconv>

namespace onvifctl {

namespace {

using tinyxml2::XMLElement;

std::string InSmallLetters(std::string_view text) {
    std::string small(text);
    std::transform(small.begin(), small.end(), small.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return small;
}

std::string_view Trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t start = std::min(text.find_first_not_of(kBlanks), text.size());
    return text.substr(start, text.find_last_not_of(kBlanks) + 1 - start);
}

/// Nothing unless the whole text is a number.
std::optional<std::size_t> Number(std::string_view text, int base = 10) {
    std::size_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, base);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

/// Takes the chunks that are there out of @p framed. @return whether the last one is among them.
bool TakeChunks(std::string_view framed, std::string& body) {
    for (;;) {
        const std::size_t line = framed.find("\r\n");
        if (line == std::string_view::npos) {
            return false;
        }
        const std::string_view head = framed.substr(0, line);
        const auto size = Number(Trimmed(head.substr(0, head.find(';'))), 16);
        if (!size || *size == 0) {
            return true;  // what is no chunk ends the reply as the last one does
        }
        framed.remove_prefix(line + 2);
        body.append(framed.substr(0, *size));
        if (framed.size() < *size || framed.size() - *size < 2) {
            return false;
        }
        framed.remove_prefix(*size + 2);
    }
}

void TakeBody(std::string_view rest, HttpReply& reply) {
    const auto length = Number(HeaderOf(reply, "content-length"));
    const bool chunked =
        InSmallLetters(HeaderOf(reply, "transfer-encoding")).find("chunked") != std::string::npos;
    reply.hasEnd = chunked || length;
    if (chunked) {
        reply.isWhole = TakeChunks(rest, reply.body);
    } else {
        reply.body = rest.substr(0, length.value_or(rest.size()));
        reply.isWhole = length && rest.size() >= *length;
    }
}

/// The name without its prefix, in small letters.
std::string LocalName(const XMLElement& element) {
    const std::string_view name = element.Name();
    return InSmallLetters(name.substr(name.find(':') + 1));  // npos + 1 is 0
}

/// The first element of that name, @p from itself included. The parser bounds the depth.
const XMLElement* Find(const XMLElement* from, std::string_view name) {
    if (from == nullptr || LocalName(*from) == name) {
        return from;
    }
    for (const auto* child = from->FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        if (const auto* found = Find(child, name)) {
            return found;
        }
    }
    return nullptr;
}

/// The number of an element below @p from; 9999, which no clock shows, when there is none.
unsigned NumberOf(const XMLElement* from, std::string_view name) {
    constexpr unsigned kNone = 9999;
    const XMLElement* element = Find(from, name);
    return element == nullptr ? kNone : std::min(element->UnsignedText(kNone), kNone);
}

}  // namespace

HttpReply ParseReply(std::string_view bytes) {
    HttpReply reply;
    std::string_view head;
    do {
        const std::size_t headEnd = bytes.find("\r\n\r\n");
        if (!bytes.starts_with("HTTP/") || headEnd == std::string_view::npos) {
            return {};
        }
        head = bytes.substr(0, headEnd);
        bytes.remove_prefix(headEnd + 4);
        const std::size_t code = std::min(head.find(' ') + 1, head.size());
        reply.status = static_cast<int>(Number(head.substr(code, 3)).value_or(0));
    } while (reply.status >= 100 && reply.status < 200);
    for (std::size_t end = head.find('\n'); end != std::string_view::npos; end = head.find('\n')) {
        head.remove_prefix(end + 1);
        const std::string_view line = head.substr(0, head.find('\n'));
        const std::size_t colon = std::min(line.find(':'), line.size());
        reply.headers.emplace_back(InSmallLetters(Trimmed(line.substr(0, colon))),
                                   Trimmed(line.substr(std::min(colon + 1, line.size()))));
    }
    TakeBody(bytes, reply);
    return reply;
}

std::string HeaderOf(const HttpReply& reply, std::string_view name) {
    std::string values;
    for (const auto& [header, value] : reply.headers) {
        if (header == name) {
            values += (values.empty() ? "" : ", ") + value;
        }
    }
    return values;
}

bool Offers(const HttpReply& reply, std::string_view scheme) {
    const std::string challenges = InSmallLetters(HeaderOf(reply, "www-authenticate"));
    bool quoted = false;
    bool wordBegins = true;
    for (std::size_t i = 0; i < challenges.size(); ++i) {
        const char c = challenges[i];
        quoted = quoted != (c == '"');
        if (!quoted && wordBegins && challenges.compare(i, scheme.size(), scheme) == 0) {
            const std::size_t end = i + scheme.size();
            if (end == challenges.size() || challenges[end] == ' ' || challenges[end] == ',') {
                return true;
            }
        }
        wordBegins = c == ' ' || c == ',';
    }
    return false;
}

BodyKind KindOf(const HttpReply& reply) {
    if (Trimmed(reply.body).empty()) {
        return BodyKind::kNone;
    }
    tinyxml2::XMLDocument document;
    document.Parse(reply.body.c_str(), reply.body.size());
    // A parser that has failed may still have read the root.
    if (document.RootElement() != nullptr && LocalName(*document.RootElement()) == "envelope") {
        return BodyKind::kEnvelope;
    }
    const std::string start = InSmallLetters(std::string_view(reply.body).substr(0, 2048));
    const bool isPage = start.find("<html") != std::string::npos ||
                        start.find("<!doctype html") != std::string::npos ||
                        HeaderOf(reply, "content-type").find("text/html") != std::string::npos;
    return isPage ? BodyKind::kWebPage : BodyKind::kOther;
}

bool IsPlainEnvelope(const HttpReply& reply) {
    tinyxml2::XMLDocument document;
    document.Parse(reply.body.c_str(), reply.body.size());
    const XMLElement* root = document.RootElement();
    return Trimmed(reply.body).starts_with("<?xml") && root != nullptr &&
           std::string_view(root->Name()).find(':') != std::string_view::npos;
}

std::optional<std::chrono::sys_seconds> ClockIn(const std::string& document) {
    using std::chrono::day;
    using std::chrono::month;
    using std::chrono::year;
    tinyxml2::XMLDocument xml;
    xml.Parse(document.c_str(), document.size());
    const XMLElement* utc = Find(xml.RootElement(), "utcdatetime");
    const std::chrono::year_month_day date(year(static_cast<int>(NumberOf(utc, "year"))),
                                           month(NumberOf(utc, "month")),
                                           day(NumberOf(utc, "day")));
    const unsigned hour = NumberOf(utc, "hour");
    const unsigned minute = NumberOf(utc, "minute");
    const unsigned second = NumberOf(utc, "second");
    // Beyond these years clocks of nanoseconds and some systems' calendars end.
    const bool isNear = date.year() >= year(1970) && date.year() <= year(2200);
    if (!date.ok() || !isNear || hour > 23 || minute > 59 || second > 60) {
        return std::nullopt;
    }
    return std::chrono::sys_days(date) + std::chrono::hours(hour) + std::chrono::minutes(minute) +
           std::chrono::seconds(second);
}

}  // namespace onvifctl
