#include "client/SnapshotRequest.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "common/AsciiText.h"
#include "common/HttpAddress.h"
#include "common/HttpHead.h"
#include "platform/Digests.h"

namespace onvif_client {

namespace {

constexpr std::size_t kLongestRequest = 8191;
constexpr std::size_t kLongestDigestText = 511;
constexpr std::string_view kNonceCount = "00000001";
constexpr std::string_view kQop = "auth";

/// A scheme, or the name of a parameter, with the blanks behind it.
std::string_view TakeWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t,"), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(" \t,="));
    text.remove_prefix(word.size());
    text.remove_prefix(std::min(text.find_first_not_of(kHeadBlanks), text.size()));
    return word;
}

/// A quoted value keeps its commas; a backslash in it stands for what follows.
std::string TakeValue(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(kHeadBlanks), text.size()));
    if (!text.starts_with('"')) {
        return std::string(Trim(TakeUntil(text, ",")));
    }
    std::string value;
    std::size_t at = 1;
    for (; at < text.size() && text[at] != '"'; ++at) {
        at += text[at] == '\\' && at + 1 < text.size() ? 1U : 0U;
        value += text[at];
    }
    text.remove_prefix(std::min(at + 1, text.size()));
    return value;
}

/// The reverse, without the quotes around it. Nothing for what no quoted text can hold (RFC 9110):
/// it could end the line.
std::optional<std::string> Quoted(std::string_view text) {
    std::string quoted;
    for (const char c : text) {
        if (IsControl(c) && c != '\t') {
            return std::nullopt;
        }
        quoted += c == '"' || c == '\\' ? "\\" : "";
        quoted += c;
    }
    return quoted;
}

/// @return false for a challenge with an algorithm that this client does not speak.
bool SetParameter(std::string_view name, const std::string& value, HttpChallenge& challenge) {
    if (SameLetters(name, "algorithm")) {
        return SameLetters(value, "MD5");
    }
    const std::pair<std::string_view, std::string*> parameters[] = {{"realm", &challenge.realm},
                                                                    {"nonce", &challenge.nonce},
                                                                    {"qop", &challenge.qop},
                                                                    {"opaque", &challenge.opaque}};
    for (const auto& [known, place] : parameters) {
        if (SameLetters(name, known)) {
            *place = value;
        }
    }
    return true;
}

/// Adds the challenges of a field that this client speaks. They stand one behind the other, divided
/// by commas as their parameters are (RFC 9110, 11.6.1): a word without "=" begins the next one.
void ReadChallenges(std::string_view field, SnapshotHeader& read) {
    std::vector<HttpChallenge>& challenges = read.challenges;
    bool digest = false;  // the parameters are those of the last challenge that was added
    while (!field.empty()) {
        const std::string_view word = TakeWord(field);
        if (!field.starts_with('=')) {
            digest = SameLetters(word, "Digest");
            read.asksForDigest = read.asksForDigest || digest;
            if (digest || SameLetters(word, "Basic")) {
                challenges.emplace_back().scheme =
                    digest ? AuthorizationScheme::kDigest : AuthorizationScheme::kBasic;
            }
            continue;
        }
        field.remove_prefix(1);
        const std::string value = TakeValue(field);
        if (digest && !SetParameter(word, value, challenges.back())) {
            challenges.pop_back();
            digest = false;
        }
    }
}

/// The MD5 digits of texts joined by colons; nothing for more than a device may have hashed. A cut
/// text would do worse: where a realm leaves room for some letters of the password only, a device
/// finds them one by one.
std::optional<std::string> HashJoined(std::initializer_list<std::string_view> texts) {
    std::string joined;
    for (const std::string_view text : texts) {
        joined.append(text).append(":");
    }
    joined.pop_back();
    if (joined.size() > kLongestDigestText) {
        return std::nullopt;
    }
    const auto digest = Md5(Bytes(joined));
    return digest ? LowerHex(*digest) : "";
}

std::string BasicRequest(const SnapshotAddress& address, const Credentials& credentials) {
    return "GET " + address.path + " HTTP/1.1\r\nHost: " + address.host +
           "\r\nAuthorization: Basic " +
           Base64(Bytes(credentials.user + ":" + credentials.password)) +
           "\r\nAccept: text/html, application/xhtml+xml, */*\r\n"
           "Accept-Language: zh-CN,ja;q=0.8,zh;q=0.6,en-US;q=0.4,en;q=0.2\r\n"
           "Accept-Encoding: gzip, deflate\r\nUser-Agent: ApiTool\r\n\r\n";
}

std::string DigestRequest(const SnapshotAddress& address, const Credentials& credentials,
                          const HttpChallenge& challenge) {
    const std::string cnonce = MakeNonceText();
    const auto response =
        DigestResponse(credentials, challenge, kQop, cnonce, kNonceCount, address.path);
    const auto user = Quoted(credentials.user);
    const auto realm = Quoted(challenge.realm);
    const auto nonce = Quoted(challenge.nonce);
    const auto opaque = Quoted(challenge.opaque);
    if (!response || !user || !realm || !nonce || !opaque) {
        return {};
    }
    std::string request = "GET " + address.path + " HTTP/1.1\r\nAuthorization: Digest username=\"";
    request.append(*user).append("\",realm=\"").append(*realm);
    request.append("\",nonce=\"").append(*nonce).append("\",uri=\"").append(address.path);
    request.append("\",algorithm=\"MD5\",cnonce=\"").append(cnonce).append("\",nc=");
    request.append(kNonceCount).append(",qop=\"").append(kQop).append("\",response=\"");
    request.append(*response).append("\",opaque=\"").append(*opaque);
    return request + "\"\r\nHost: " + address.host + "\r\nConnection: Close\r\n\r\n";
}

}  // namespace

SnapshotAddress ParseSnapshotAddress(std::string_view address) {
    address = TrimAddress(address);
    const HttpAddress parts = SplitAddress(address, Behind(address, "//").value_or(0));
    SnapshotAddress parsed;
    parsed.host = HeadText(parts.host);
    parsed.path = parts.path.empty() ? "/" : HeadText(parts.path);
    if (const std::size_t colon = parsed.host.find(':'); colon != std::string::npos) {
        parsed.port = 0;
        std::from_chars(parsed.host.data() + colon + 1, parsed.host.data() + parsed.host.size(),
                        parsed.port);
    }
    return parsed;
}

SnapshotHeader ReadSnapshotHeader(std::string_view header) {
    SnapshotHeader read;
    const std::string_view status = StatusCode(TakeUntil(header, kHeadLineEnd));
    read.unauthorized = status == "401";
    read.notFound = status == "404";
    std::vector<std::string> offers;
    bool offering = false;  // a folded line goes on with the last offer
    while (!header.empty()) {
        const std::string_view line = TakeUntil(header, kHeadLineEnd);
        const auto field = SplitField(line).value_or(HeadField{});
        const std::string_view name = Trim(field.name);
        if (SameLetters(name, "Content-Length") && read.contentLength == 0) {
            read.contentLength = LenientNumber(Trim(field.value));
        } else if (SameLetters(name, "WWW-Authenticate")) {
            offers.emplace_back(field.value);
            offering = true;
        } else if (offering && IsFolded(line)) {
            offers.back().append(" ").append(Trim(line));
        } else {
            offering = false;
        }
    }
    for (const std::string& offer : offers) {
        ReadChallenges(offer, read);
    }
    std::stable_partition(
        read.challenges.begin(), read.challenges.end(),
        [](const HttpChallenge& each) { return each.scheme == AuthorizationScheme::kDigest; });
    return read;
}

std::optional<std::string> DigestResponse(const Credentials& credentials,
                                          const HttpChallenge& challenge, std::string_view qop,
                                          std::string_view cnonce, std::string_view nc,
                                          std::string_view path) {
    const auto ha1 = HashJoined({credentials.user, challenge.realm, credentials.password});
    const auto ha2 = HashJoined({"GET", path});
    return ha1 && ha2 ? HashJoined({*ha1, challenge.nonce, nc, cnonce, qop, *ha2}) : std::nullopt;
}

std::string BuildSnapshotRequest(const SnapshotAddress& address, const Credentials& credentials,
                                 const HttpChallenge& challenge) {
    std::string request;
    switch (challenge.scheme) {
        case AuthorizationScheme::kNone:
            request = "GET " + address.path + " HTTP/1.1\r\nHost: " + address.host +
                      "\r\nConnection: Close\r\n\r\n";
            break;
        case AuthorizationScheme::kBasic:
            request = BasicRequest(address, credentials);
            break;
        case AuthorizationScheme::kDigest:
            request = DigestRequest(address, credentials, challenge);
            break;
    }
    request.resize(std::min(request.size(), kLongestRequest));
    return request;
}

}  // namespace onvif_client
