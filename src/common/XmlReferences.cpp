#include "common/XmlReferences.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "common/XmlCharacters.h"

namespace onvif_client {

namespace {

/// A reference by number at the start of a text.
struct NumericReference {
    std::size_t length = 0;  // 0: there is none
    bool namesCharacter = false;
};

NumericReference FirstNumericReference(std::string_view text) {
    if (!text.starts_with("&#")) {
        return {};
    }
    const bool hexadecimal = text.substr(2).starts_with('x');
    const std::string_view number = text.substr(hexadecimal ? 3 : 2);
    const char* const behind = number.data() + number.size();
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(number.data(), behind, value, hexadecimal ? 16 : 10);
    if (error == std::errc::invalid_argument || end == behind || *end != ';') {
        return {};
    }
    return {static_cast<std::size_t>(end + 1 - text.data()),
            error == std::errc() && IsXmlCharacter(value)};
}

/// True when a reference that the parser knows starts @p text.
bool StartsReference(std::string_view text) {
    constexpr std::string_view kEntities[] = {"&amp;", "&lt;", "&gt;", "&quot;", "&apos;"};
    return std::any_of(std::begin(kEntities), std::end(kEntities),
                       [text](std::string_view each) { return text.starts_with(each); }) ||
           FirstNumericReference(text).namesCharacter;
}

/// The position of the first ampersand from @p at on that starts no reference, or npos.
std::size_t FindStray(std::string_view text, std::size_t at = 0) {
    at = text.find('&', at);
    while (at != std::string_view::npos && StartsReference(text.substr(at))) {
        at = text.find('&', at + 1);
    }
    return at;
}

void AppendEscaped(std::string_view text, std::string& escaped) {
    std::size_t from = 0;
    for (std::size_t at = FindStray(text); at != std::string_view::npos;
         at = FindStray(text, from)) {
        escaped += text.substr(from, at - from);
        const std::size_t reference = FirstNumericReference(text.substr(at)).length;
        escaped += reference == 0 ? "&amp;" : kReplacementCharacter;
        from = at + std::max<std::size_t>(reference, 1);
    }
    escaped += text.substr(from);
}

/// Markup without references in it, up to its end.
struct VerbatimMarkup {
    std::string_view start;
    std::string_view end;
};

// The first start that matches decides.
constexpr VerbatimMarkup kVerbatim[] = {
    {"<?", "?>"}, {"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<!", ">"}};

std::size_t Behind(std::string_view text, std::string_view what, std::size_t from) {
    const std::size_t at = text.find(what, from);
    return at == std::string_view::npos ? text.size() : at + what.size();
}

/// The length of the tag at the start of @p text: a ">" in quotes does not end it.
std::size_t TagLength(std::string_view text) {
    std::size_t at = text.find_first_of("\"'>");
    while (at != std::string_view::npos && text[at] != '>') {
        at = text.find_first_of("\"'>", Behind(text, text.substr(at, 1), at + 1));
    }
    return at == std::string_view::npos ? text.size() : at + 1;
}

}  // namespace

std::optional<std::string> EscapeStrayAmpersands(std::string_view document) {
    if (FindStray(document) == std::string_view::npos) {
        return std::nullopt;
    }
    std::string escaped;
    escaped.reserve(document.size() + document.size() / 8);
    while (!document.empty()) {
        const auto* verbatim =
            std::find_if(std::begin(kVerbatim), std::end(kVerbatim),
                         [document](const auto& each) { return document.starts_with(each.start); });
        std::size_t length = 0;
        if (verbatim != std::end(kVerbatim)) {
            length = Behind(document, verbatim->end, verbatim->start.size());
            escaped += document.substr(0, length);
        } else {
            length = document.front() == '<' ? TagLength(document)
                                             : std::min(document.find('<'), document.size());
            AppendEscaped(document.substr(0, length), escaped);
        }
        document.remove_prefix(length);
    }
    return escaped;
}

}  // namespace onvif_client
