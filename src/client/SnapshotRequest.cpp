#include "client/SnapshotRequest.h"

#include <algorithm>
#include <charconv>
#include <span>
#include <vector>

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

std::string_view TakeName(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t,"), text.size()));
    return Trim(TakeUntil(text, "="));
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

/// The reverse, without the quotes around it.
std::string Quoted(std::string_view text) {
    std::string quoted;
    for (const char c : text) {
        quoted += c == '"' || c == '\\' ? "\\" : "";
        quoted += c;
    }
    return quoted;
}

/// @return nothing for a scheme, or an algorithm, that this client does not speak.
std::optional<HttpChallenge> ReadChallenge(std::string_view field) {
    const std::string_view scheme = TakeUntil(field, " ");
    HttpChallenge challenge;
    if (SameLetters(scheme, "Basic")) {
        challenge.scheme = AuthorizationScheme::kBasic;
        return challenge;
    }
    if (!SameLetters(scheme, "Digest")) {
        return std::nullopt;
    }
    challenge.scheme = AuthorizationScheme::kDigest;
    const std::pair<std::string_view, std::string*> parameters[] = {{"realm", &challenge.realm},
                                                                    {"nonce", &challenge.nonce},
                                                                    {"qop", &challenge.qop},
                                                                    {"opaque", &challenge.opaque}};
    while (!field.empty()) {
        const std::string_view name = TakeName(field);
        const std::string value = TakeValue(field);
        if (SameLetters(name, "algorithm") && !SameLetters(value, "MD5")) {
            return std::nullopt;
        }
        for (const auto& [known, place] : parameters) {
            if (SameLetters(name, known)) {
                *place = value;
            }
        }
    }
    return challenge;
}

/// Digest before Basic, else the first that this client speaks.
std::optional<HttpChallenge> ChooseChallenge(std::span<const std::string> offers) {
    std::optional<HttpChallenge> chosen;
    for (const std::string& each : offers) {
        const auto offered = ReadChallenge(Trim(each));
        if (offered && (!chosen || (offered->scheme == AuthorizationScheme::kDigest &&
                                    chosen->scheme != AuthorizationScheme::kDigest))) {
            chosen = offered;
        }
    }
    return chosen;
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
    if (!response) {
        return {};
    }
    std::string request = "GET " + address.path + " HTTP/1.1\r\nAuthorization: Digest username=\"";
    request.append(Quoted(credentials.user)).append("\",realm=\"").append(Quoted(challenge.realm));
    request.append("\",nonce=\"")
        .append(Quoted(challenge.nonce))
        .append("\",uri=\"")
        .append(address.path);
    request.append("\",algorithm=\"MD5\",cnonce=\"").append(cnonce).append("\",nc=");
    request.append(kNonceCount).append(",qop=\"").append(kQop).append("\",response=\"");
    request.append(*response).append("\",opaque=\"").append(Quoted(challenge.opaque));
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
    read.challenge = ChooseChallenge(offers);
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
