#include "common/RedactedFields.h"

#include <algorithm>
#include <iterator>

#include "common/AsciiText.h"
#include "common/HttpHead.h"

namespace onvif_client {

namespace {

struct CredentialField {
    std::string_view name;
    bool hasOpenParts;
};

constexpr CredentialField kFields[] = {
    {"Authorization", true},
    {"Proxy-Authorization", true},
    {"WWW-Authenticate", true},
    {"Proxy-Authenticate", true},
    {"Authentication-Info", true},
    {"Proxy-Authentication-Info", true},
    {"Cookie", false},
    {"Set-Cookie", false},
};

constexpr std::string_view kSchemes[] = {"Basic", "Digest", "Bearer", "NTLM", "Negotiate"};

constexpr std::string_view kOpenParameters[] = {"realm",   "algorithm", "qop", "stale",
                                                "charset", "uri",       "nc"};

// Their values go, their names stay.
constexpr std::string_view kSecretParameters[] = {"username", "nonce",     "cnonce", "response",
                                                  "opaque",   "nextnonce", "rspauth"};

template <std::size_t Count>
bool IsOneOf(std::string_view name, const std::string_view (&names)[Count]) {
    return std::any_of(std::begin(names), std::end(names),
                       [name](std::string_view each) { return SameLetters(each, name); });
}

/// "x" of "x, y": a quotation is never parted.
std::string_view TakeParameter(std::string_view& list) {
    bool quoted = false;
    std::size_t end = 0;
    for (; end < list.size() && (quoted || list[end] != ','); ++end) {
        if (list[end] == '"') {
            quoted = !quoted;
        } else if (quoted && list[end] == '\\') {
            ++end;
        }
    }
    end = std::min(end, list.size());
    const std::string_view taken = list.substr(0, end);
    list.remove_prefix(std::min(end + 1, list.size()));
    return taken;
}

/// A token, or a quotation without another quote in it.
bool IsPlainValue(std::string_view value) {
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
        return value.substr(1, value.size() - 2).find('"') == std::string_view::npos;
    }
    return value.find_first_of("\" ") == std::string_view::npos;
}

/// One parameter, which may have the scheme of a challenge in front.
std::string ShownParameter(std::string_view parameter) {
    std::string shown;
    const std::size_t blank = parameter.find(' ');
    if (IsOneOf(parameter.substr(0, blank), kSchemes)) {
        shown = parameter.substr(0, blank);
        if (blank == std::string_view::npos) {
            return shown;
        }
        shown += ' ';
        parameter = Trim(parameter.substr(blank));
    }
    std::string_view value = parameter;
    const std::string_view name = TakeUntil(value, "=");
    if (IsOneOf(Trim(name), kOpenParameters) && IsPlainValue(Trim(value))) {
        return shown.append(parameter);
    }
    if (IsOneOf(Trim(name), kSecretParameters)) {
        shown.append(name).append("=");
    }
    return shown.append(kRemoved);
}

/// @param value  on one line.
std::string ShownParameters(std::string_view value) {
    std::string shown;
    while (!value.empty()) {
        shown.append(shown.empty() ? "" : ", ").append(ShownParameter(Trim(TakeParameter(value))));
    }
    return shown;
}

/// The size of the field in front, which may go on over several lines, without the break behind it.
std::size_t FieldSize(std::string_view text) {
    std::size_t end = text.find('\n');
    while (end != std::string_view::npos && IsFolded(text.substr(end + 1))) {
        end = text.find('\n', end + 1);
    }
    end = std::min(end, text.size());
    return end > 0 && end < text.size() && text[end - 1] == '\r' ? end - 1 : end;
}

std::string OnOneLine(std::string_view text) {
    std::string line(text);
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\r' || c == '\n' || c == '\t'; }, ' ');
    return line;
}

/// Null where the line begins with none.
const CredentialField* FieldOf(std::string_view line) {
    const auto parts = SplitField(line);
    if (!parts) {
        return nullptr;
    }
    const auto* field = std::find_if(
        std::begin(kFields), std::end(kFields),
        [&](const CredentialField& each) { return SameLetters(each.name, Trim(parts->name)); });
    return field == std::end(kFields) ? nullptr : field;
}

}  // namespace

std::string WithoutCredentialFields(std::string_view text) {
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        const CredentialField* field = FieldOf(line);
        std::size_t size = std::min(line.size() + 1, text.size());
        if (field == nullptr) {
            shown += text.substr(0, size);
        } else {
            size = FieldSize(text);
            const std::size_t colon = line.find(':');
            const std::string value = OnOneLine(text.substr(colon + 1, size - colon - 1));
            shown.append(field->name).append(": ");
            shown += field->hasOpenParts ? ShownParameters(Trim(value)) : std::string(kRemoved);
        }
        text.remove_prefix(size);
    }
    return shown;
}

}  // namespace onvif_client
