#include "client/SnapshotRequest.h"

#include <algorithm>
#include <charconv>

#include "client/DigestAnswers.h"
#include "common/AsciiText.h"
#include "common/HttpAddress.h"
#include "common/HttpHead.h"
#include "platform/Digests.h"

namespace onvif_client {

namespace {

constexpr std::size_t kLongestRequest = 8191;
constexpr std::string_view kNonceCount = "00000001";
constexpr std::string_view kQop = "auth";

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
        DigestResponse(credentials, challenge, kQop, {"GET", address.path, cnonce, kNonceCount});
    const auto user = QuotedText(credentials.user);
    const auto realm = QuotedText(challenge.realm);
    const auto nonce = QuotedText(challenge.nonce);
    const auto opaque = QuotedText(challenge.opaque);
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

/// The same, answering what is asked for.
std::string FullDigestRequest(const SnapshotAddress& address, const Credentials& credentials,
                              const HttpChallenge& challenge) {
    const std::string answer = DigestAuthorization(credentials, challenge, "GET", address.path, 1);
    return answer.empty() ? answer
                          : "GET " + address.path + " HTTP/1.1\r\nAuthorization: " + answer +
                                "\r\nHost: " + address.host + "\r\nConnection: Close\r\n\r\n";
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

SnapshotHeader ReadSnapshotHeader(std::string_view header, DigestKinds kinds) {
    SnapshotHeader read{ReadChallenges(header, kinds)};
    const std::string_view status = StatusCode(TakeUntil(header, kHeadLineEnd));
    read.unauthorized = status == "401";
    read.notFound = status == "404";
    while (!header.empty()) {
        const auto field = SplitField(TakeUntil(header, kHeadLineEnd)).value_or(HeadField{});
        if (SameLetters(Trim(field.name), "Content-Length") && read.contentLength == 0) {
            read.contentLength = LenientNumber(Trim(field.value));
        }
    }
    return read;
}

std::string BuildSnapshotRequest(const SnapshotAddress& address, const Credentials& credentials,
                                 const HttpChallenge& challenge, DigestKinds kinds) {
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
            request = kinds == DigestKinds::kAll
                          ? FullDigestRequest(address, credentials, challenge)
                          : DigestRequest(address, credentials, challenge);
            break;
    }
    request.resize(std::min(request.size(), kLongestRequest));
    return request;
}

}  // namespace onvif_client
