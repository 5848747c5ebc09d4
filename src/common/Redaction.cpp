#include "common/Redaction.h"

#include <algorithm>
#include <iterator>

#include "common/AsciiText.h"
#include "common/HttpHead.h"

namespace onvif_client {

namespace {

constexpr std::size_t kShortestUser = 3;
constexpr std::size_t kShortestPassword = 4;

/// "user" is an element with other things in it, "key" a parameter of any kind.
enum class Where { kElement, kAssignment, kBoth };

struct SecretName {
    std::string_view name;
    Where where;
};

constexpr SecretName kNames[] = {
    {"username", Where::kBoth},
    {"password", Where::kBoth},
    {"passphrase", Where::kBoth},
    {"passwd", Where::kBoth},
    {"pwd", Where::kBoth},
    {"nonce", Where::kBoth},
    {"cnonce", Where::kBoth},
    {"created", Where::kElement},
    {"key", Where::kElement},
    {"privatekey", Where::kElement},
    {"user", Where::kAssignment},
    {"usr", Where::kAssignment},
    {"pass", Where::kAssignment},
    {"loginuse", Where::kAssignment},
    {"loginpas", Where::kAssignment},
    {"auth", Where::kAssignment},
};

bool IsSecret(std::string_view name, Where where) {
    return std::any_of(std::begin(kNames), std::end(kNames), [&](const SecretName& each) {
        return (each.where == where || each.where == Where::kBoth) && SameLetters(each.name, name);
    });
}

/// Letters and digits of all kinds.
bool IsWordCharacter(char c) {
    return (c >= '0' && c <= '9') || (LowerCase(c) >= 'a' && LowerCase(c) <= 'z') ||
           static_cast<unsigned char>(c) >= 0x80U;
}

/// The name of a tag without its prefix, of "tt:Name a='b'/".
std::string_view LocalName(std::string_view tag) {
    const std::string_view name = tag.substr(0, tag.find_first_of(" \t\r\n/<>"));
    return name.substr(name.rfind(':') + 1);
}

/// Where the end tag of that name begins, or the text ends.
std::size_t ContentSize(std::string_view text, std::string_view name) {
    std::size_t at = text.find("</");
    while (at != std::string_view::npos) {
        if (SameLetters(LocalName(text.substr(at + 2)), name)) {
            return at;
        }
        at = text.find("</", at + 2);
    }
    return text.size();
}

/// A value in quotes, or none.
std::string_view AttributeValue(std::string_view tag, std::string_view attribute) {
    for (std::size_t at = tag.find(attribute); at != std::string_view::npos;
         at = tag.find(attribute, at + 1)) {
        const std::string_view value = tag.substr(at + attribute.size());
        if (value.size() > 2 && value[0] == '=' && (value[1] == '"' || value[1] == '\'')) {
            return value.substr(2, value.find(value[1], 2) - 2);
        }
    }
    return {};
}

/// "SimpleItem Name='Password' Value='...'".
std::string ShownTag(std::string_view tag) {
    std::string shown(tag);
    const std::string_view value = AttributeValue(tag, " Value");
    if (!value.empty() && IsSecret(AttributeValue(tag, " Name"), Where::kElement)) {
        shown.replace(static_cast<std::size_t>(value.data() - tag.data()), value.size(), kRemoved);
    }
    return shown;
}

std::string WithoutSecretElements(std::string_view text) {
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        const std::size_t begin = std::min(text.find('<'), text.size());
        const std::size_t end = std::min(text.find_first_of("<>", begin + 1), text.size());
        const std::string_view tag = text.substr(begin, end - begin);
        shown.append(text.substr(0, begin)).append(ShownTag(tag));
        text.remove_prefix(end);
        const std::string_view name = LocalName(tag.substr(std::min<std::size_t>(1, tag.size())));
        if (text.starts_with('>') && !tag.ends_with('/') && IsSecret(name, Where::kElement)) {
            const std::size_t size = ContentSize(text, name);
            shown.append(">").append(size > 1 ? kRemoved : "");
            text.remove_prefix(size);
        }
    }
    return shown;
}

/// The size of a value behind a "=" and maybe a quote.
std::size_t ValueSize(std::string_view text, std::string_view ends) {
    return text.starts_with(kRemoved) ? kRemoved.size()
                                      : std::min(text.find_first_of(ends), text.size());
}

/// Attributes, and parameters in URIs and forms: "name=value".
std::string WithoutSecretAssignments(std::string_view text) {
    constexpr std::string_view kEnds = "&;<>\"'# \t\r\n";
    std::string shown;
    shown.reserve(text.size());
    std::size_t done = 0;
    for (std::size_t at = text.find('='); at != std::string_view::npos; at = text.find('=', at)) {
        std::size_t begin = at;
        while (begin > done && IsWordCharacter(text[begin - 1])) {
            --begin;
        }
        const std::string_view name = text.substr(begin, at - begin);
        ++at;
        if (!IsSecret(name, Where::kAssignment)) {
            continue;
        }
        const std::string_view quote = text.substr(at, 1);
        at += quote == "\"" || quote == "'" ? 1 : 0;
        const std::size_t size =
            ValueSize(text.substr(at), quote == "\"" || quote == "'" ? quote : kEnds);
        shown.append(text.substr(done, at - done)).append(size > 0 ? kRemoved : "");
        at += size;
        done = at;
    }
    return shown.append(text.substr(done));
}

/// How much of what stands behind "://" are user and password; a password may hold slashes.
std::size_t UserInfoSize(std::string_view text) {
    constexpr std::size_t kLongest = 256;  // where it holds slashes
    const std::string_view authority = text.substr(0, text.find_first_of("/?#<>\"' \t\r\n"));
    const std::string_view port = authority.substr(authority.rfind(':') + 1);
    const bool hasPort = port.find_first_not_of("0123456789") == std::string_view::npos;
    std::size_t end = authority.rfind('@');
    if (!hasPort && authority.find(':') != std::string_view::npos) {
        text = text.substr(0, kLongest);
        const std::size_t slashed = text.substr(0, text.find_first_of("<>\"' \t\r\n")).rfind('@');
        end = slashed == std::string_view::npos ? end : slashed;
    }
    return end == std::string_view::npos ? 0 : end;
}

std::string WithoutUserInfo(std::string_view text) {
    constexpr std::string_view kBegin = "://";
    std::string shown;
    shown.reserve(text.size());
    for (;;) {
        const std::size_t begin = text.find(kBegin);
        if (begin == std::string_view::npos) {
            return shown.append(text);
        }
        shown.append(text.substr(0, begin + kBegin.size()));
        text.remove_prefix(begin + kBegin.size());
        if (const std::size_t size = UserInfoSize(text)) {
            shown += kRemoved;
            text.remove_prefix(size);
        }
    }
}

std::string WithoutWord(std::string_view text, std::string_view word) {
    std::string shown;
    std::size_t done = 0;
    for (std::size_t at = text.find(word); at != std::string_view::npos;
         at = text.find(word, at + 1)) {
        const std::size_t end = at + word.size();
        const bool goesOn = (at > 0 && IsWordCharacter(text[at - 1])) ||
                            (end < text.size() && IsWordCharacter(text[end]));
        if (!goesOn && at >= done) {
            shown.append(text.substr(done, at - done)).append(kRemoved);
            done = end;
        }
    }
    return shown.append(text.substr(done));
}

/// Behind the head, outside of tags and of texts that are URIs, as a user's name may be part of
/// many a path.
std::string WithoutWordInTexts(std::string_view text, std::string_view word) {
    std::string shown;
    std::size_t tagEnd = std::min(text.find(kHeadEnd), text.size());
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('<', tagEnd), text.size());
        const std::string_view between = text.substr(tagEnd, end - tagEnd);
        shown += text.substr(0, tagEnd);
        shown += between.find("://") == std::string_view::npos ? WithoutWord(between, word)
                                                               : std::string(between);
        text.remove_prefix(end);
        tagEnd = std::min(text.find('>'), text.size());
    }
    return shown;
}

}  // namespace

std::string Redacted(std::string_view message, const KnownSecrets& known) {
    std::string shown = WithoutUserInfo(
        WithoutSecretAssignments(WithoutSecretElements(WithoutCredentialFields(message))));
    if (known.password.size() >= kShortestPassword) {
        shown = WithoutWord(shown, known.password);
    }
    if (known.user.size() >= kShortestUser) {
        shown = WithoutWordInTexts(shown, known.user);
    }
    return shown;
}

}  // namespace onvif_client
