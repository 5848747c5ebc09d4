#include "camera_sim/http/HttpAuthentication.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "camera_sim/system/Crypto.h"

namespace camera_sim {
namespace {

constexpr std::size_t kRememberedNonces = 1000;
constexpr std::size_t kNonceBytes = 16;
constexpr std::size_t kCountDigits = 8;
constexpr std::string_view kBlanks = " \t";

std::string Lower(std::string_view text) {
    std::string lower(text);
    for (char& character : lower) {
        character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    }
    return lower;
}

std::string Hex(std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    for (const char each : bytes) {
        const auto byte = static_cast<unsigned char>(each);
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 0xFU];
    }
    return text;
}

/// A hash that Digest is computed with.
struct Algorithm {
    std::string_view name;
    Hash hash;

    /// Of the parts with colons between them.
    std::string Digest(std::initializer_list<std::string_view> parts) const {
        std::string joined;
        for (const std::string_view part : parts) {
            joined.append(part).append(":");
        }
        joined.pop_back();
        return Hex(HashOf(hash, joined));
    }
};
constexpr Algorithm kMd5{"MD5", Hash::kMd5};
constexpr Algorithm kSha256{"SHA-256", Hash::kSha256};

/// Those that a scheme offers, the best first.
std::vector<const Algorithm*> Offered(HttpScheme scheme) {
    switch (scheme) {
        case HttpScheme::kNone:
        case HttpScheme::kBasic:
            break;
        case HttpScheme::kDigest:
            return {&kMd5};
        case HttpScheme::kDigestSha256:
            return {&kSha256};
        case HttpScheme::kDigestEither:
            return {&kSha256, &kMd5};
    }
    return {};
}

std::string RandomText() {
    return Hex(RandomBytes(kNonceBytes));
}

std::string Quoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\') {
            quoted += '\\';
        }
        quoted += character;
    }
    return quoted + '"';
}

void SkipBlanks(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
}

/// Takes a quoted string, with its quotes, off the front of @p text.
std::optional<std::string> TakeQuoted(std::string_view& text) {
    std::string value;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '"') {
            text.remove_prefix(i + 1);
            return value;
        }
        if (text[i] == '\\' && ++i == text.size()) {
            break;
        }
        value += text[i];
    }
    return std::nullopt;
}

/// Takes what stands before a blank, a comma or an equals sign.
std::string_view TakeToken(std::string_view& text) {
    const std::string_view token = text.substr(0, text.find_first_of(" \t,="));
    text.remove_prefix(token.size());
    return token;
}

using Fields = std::map<std::string, std::string, std::less<>>;

/// NAME=VALUE, NAME="VALUE", ...; names in lower case. Nothing when @p text is not of that form or
/// a name comes twice.
std::optional<Fields> ReadFields(std::string_view text) {
    Fields fields;
    while (true) {
        SkipBlanks(text);
        const std::string name = Lower(TakeToken(text));
        SkipBlanks(text);
        if (name.empty() || !text.starts_with('=')) {
            return std::nullopt;
        }
        text.remove_prefix(1);
        SkipBlanks(text);
        auto value = text.starts_with('"') ? TakeQuoted(text) : std::string(TakeToken(text));
        if (!value || !fields.emplace(name, *std::move(value)).second) {
            return std::nullopt;
        }
        SkipBlanks(text);
        if (text.empty()) {
            return fields;
        }
        if (!text.starts_with(',')) {
            return std::nullopt;
        }
        text.remove_prefix(1);
    }
}

bool Lists(std::string_view list, std::string_view word) {
    while (!list.empty()) {
        SkipBlanks(list);
        const auto end = std::min(list.find(','), list.size());
        if (list.substr(0, end) == word) {
            return true;
        }
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return false;
}

/// A nonce count: exactly eight hexadecimal digits.
std::optional<std::uint32_t> ReadCount(std::string_view text) {
    std::uint32_t count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count, 16);
    if (text.size() != kCountDigits || error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return count;
}

}  // namespace

struct CHttpAuthenticator::DigestFields {
    Fields fields;

    /// Empty for a missing field.
    std::string_view Get(std::string_view name) const {
        const auto field = fields.find(name);
        return field == fields.end() ? std::string_view() : field->second;
    }

    /// The one of @p scheme that they use; null for another. MD5 need not be named.
    const Algorithm* Find(HttpScheme scheme) const {
        const std::string name = Lower(Get("algorithm"));
        for (const Algorithm* algorithm : Offered(scheme)) {
            if (name == Lower(algorithm->name) || (name.empty() && algorithm == &kMd5)) {
                return algorithm;
            }
        }
        return nullptr;
    }

    std::string Response(const Algorithm& algorithm, const HttpRequest& request,
                         const User& user) const {
        const std::string who = algorithm.Digest({user.name, Get("realm"), user.password});
        const std::string_view qop = Get("qop");
        const std::string what =
            qop == "auth-int"
                ? algorithm.Digest({request.method, Get("uri"), algorithm.Digest({request.body})})
                : algorithm.Digest({request.method, Get("uri")});
        if (qop.empty()) {
            return algorithm.Digest({who, Get("nonce"), what});
        }
        return algorithm.Digest({who, Get("nonce"), Get("nc"), Get("cnonce"), qop, what});
    }
};

CHttpAuthenticator::CHttpAuthenticator(HttpAuthenticationSettings settings)
    : settings_(std::move(settings)), opaque_(RandomText()) {}

bool CHttpAuthenticator::IsOn(const std::vector<User>& users) const {
    return settings_.scheme != HttpScheme::kNone && !users.empty();
}

CHttpAuthenticator::Result CHttpAuthenticator::Check(const HttpRequest& request,
                                                     const std::vector<User>& users, Time now) {
    if (!IsOn(users)) {
        return {{true, {}, Role::kAdministrator}};
    }
    std::string_view rest = request.authorization;
    SkipBlanks(rest);
    if (rest.empty()) {
        return {};
    }
    const std::string scheme = Lower(TakeToken(rest));
    SkipBlanks(rest);
    if (scheme != (settings_.scheme == HttpScheme::kBasic ? "basic" : "digest")) {
        return {{false, "another scheme"}};
    }
    return settings_.scheme == HttpScheme::kBasic ? Result{CheckBasic(rest, users)}
                                                  : CheckDigest(rest, request, users, now);
}

Credentials CHttpAuthenticator::CheckBasic(std::string_view credentials,
                                           const std::vector<User>& users) {
    const auto decoded = DecodeBase64(credentials);
    const auto colon = decoded ? decoded->find(':') : std::string::npos;
    if (colon == std::string::npos) {
        return {false, "unreadable credentials"};
    }
    const User* user = FindUser(users, decoded->substr(0, colon));
    if (user == nullptr) {
        return {false, "unknown user"};
    }
    if (decoded->substr(colon + 1) != user->password) {
        return {false, "wrong password"};
    }
    return {true, {}, user->role};
}

CHttpAuthenticator::Result CHttpAuthenticator::CheckDigest(std::string_view text,
                                                           const HttpRequest& request,
                                                           const std::vector<User>& users,
                                                           Time now) {
    auto parsed = ReadFields(text);
    if (!parsed) {
        return {{false, "unreadable credentials"}};
    }
    const DigestFields fields{*std::move(parsed)};
    const User* user = FindUser(users, fields.Get("username"));
    if (user == nullptr) {
        return {{false, "unknown user"}};
    }
    std::string_view refusal = Mismatch(fields, request);
    // A nonce counts as used, and as stale, only for those who know the password.
    if (refusal.empty() && Lower(fields.Get("response")) !=
                               fields.Response(*fields.Find(settings_.scheme), request, *user)) {
        refusal = "wrong response";
    }
    if (!refusal.empty()) {
        return {{false, std::string(refusal)}};
    }
    refusal = UseNonce(fields, now);
    return {{refusal.empty(), std::string(refusal), user->role}, !refusal.empty()};
}

std::string_view CHttpAuthenticator::Mismatch(const DigestFields& fields,
                                              const HttpRequest& request) const {
    const std::string_view qop = fields.Get("qop");
    if (fields.Get("realm") != settings_.realm) {
        return "another realm";
    }
    if (fields.Get("uri") != request.target) {
        return "another uri";
    }
    // Some clients do not send it back, and it protects nothing.
    const std::string_view opaque = fields.Get("opaque");
    if (!opaque.empty() && opaque != opaque_) {
        return "another opaque";
    }
    if (fields.Find(settings_.scheme) == nullptr) {
        return "another algorithm";
    }
    if (qop.empty() != settings_.qop.empty() || (!qop.empty() && !Lists(settings_.qop, qop))) {
        return "qop not offered";
    }
    if (!qop.empty() && fields.Get("cnonce").empty()) {
        return "no cnonce";
    }
    if (!qop.empty() && !ReadCount(fields.Get("nc"))) {
        return "no readable nonce count";
    }
    return {};
}

std::string_view CHttpAuthenticator::UseNonce(const DigestFields& fields, Time now) {
    const auto nonce = std::find_if(nonces_.begin(), nonces_.end(), [&](const Nonce& candidate) {
        return candidate.text == fields.Get("nonce");
    });
    if (nonce == nonces_.end()) {
        return "unknown nonce";
    }
    if (now - nonce->made >= settings_.nonceLifetime ||
        (settings_.nonceUses != 0 && nonce->uses >= settings_.nonceUses)) {
        return "outdated nonce";
    }
    if (const auto count = ReadCount(fields.Get("nc")); count && !settings_.qop.empty()) {
        if (*count <= nonce->lastCount) {
            return "nonce count used before";
        }
        nonce->lastCount = *count;
    }
    ++nonce->uses;
    return {};
}

std::string CHttpAuthenticator::Challenges(bool stale, Time now) {
    constexpr std::string_view kField = "WWW-Authenticate: ";
    std::string lines;
    if (settings_.scheme == HttpScheme::kBasic) {
        return lines.append(kField).append("Basic realm=").append(Quoted(settings_.realm)) + "\r\n";
    }
    const Nonce& nonce = nonces_.emplace_back(Nonce{.text = RandomText(), .made = now});
    for (const Algorithm* algorithm : Offered(settings_.scheme)) {
        lines.append(kField).append("Digest realm=").append(Quoted(settings_.realm));
        // The first kind of Digest knew neither qop nor other algorithms than MD5.
        if (!settings_.qop.empty()) {
            lines.append(", qop=").append(Quoted(settings_.qop));
        }
        if (!settings_.qop.empty() || algorithm != &kMd5) {
            lines.append(", algorithm=").append(algorithm->name);
        }
        lines.append(", nonce=").append(Quoted(nonce.text));
        lines.append(", opaque=").append(Quoted(opaque_));
        lines.append(stale ? ", stale=true\r\n" : "\r\n");
    }
    if (nonces_.size() > kRememberedNonces) {
        nonces_.pop_front();
    }
    return lines;
}

}  // namespace camera_sim
