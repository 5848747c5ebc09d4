#include <gtest/gtest.h>

#include <regex>

#include "client/DigestAnswers.h"
#include "client/SnapshotRequest.h"

namespace onvif_client {
namespace {

TEST(SnapshotRequest, TakesAddressesApart) {
    const std::pair<const char*, const char*> cases[] = {
        {"http://192.0.2.7/snap.jpg?channel=1", "192.0.2.7 /snap.jpg?channel=1 80"},
        {"http://host:8080/a//b", "host:8080 /a//b 8080"},
        {"host/x", "host /x 80"},
        {"x/y//host:8/z", "host:8 /z 8"},
        {"http://host", "host / 80"},
        {"http://host:99999/x", "host:99999 /x 0"},
        {"http://host:/x", "host: /x 0"},
        {"", " / 80"},
        {"\n http://h\r\nX:81/a b\tc\x7F\r\n", "h%0D%0AX:81 /a%20b%09c%7F 81"},
    };
    for (const auto& [address, shown] : cases) {
        const SnapshotAddress parsed = ParseSnapshotAddress(address);
        EXPECT_EQ(parsed.host + " " + parsed.path + " " + std::to_string(parsed.port), shown);
    }
}

/// What is read of a header: the challenge's realm, nonce, qop and opaque, and the length.
std::string Shown(const SnapshotHeader& read) {
    static constexpr const char* kSchemes[] = {"none", "Basic", "Digest"};
    const HttpChallenge challenge =
        read.challenges.empty() ? HttpChallenge{} : read.challenges.front();
    return std::string(read.unauthorized ? "refused "
                       : read.notFound   ? "missing "
                                         : "") +
           kSchemes[static_cast<int>(challenge.scheme)] + " [" + challenge.realm + "][" +
           challenge.nonce + "][" + challenge.qop + "][" + challenge.opaque + "] " +
           std::to_string(read.contentLength);
}

TEST(SnapshotRequest, ReadsWhatAHeaderSays) {
    const std::string refused = "HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate:";
    const std::pair<std::string, const char*> cases[] = {
        {refused + " Digest realm=\"a, \\\"b\\\"=c\", qop=\"auth,auth-int\", nonce=\"n,1\", "
                   "opaque=\"o\", stale=TRUE\r\nContent-Length: 5",
         "refused Digest [a, \"b\"=c][n,1][auth,auth-int][o] 5"},
        {"HTTP/1.1 401 No\r\nwww-authenticate:digest nonce=n,realm=\"r\",algorithm=md5",
         "refused Digest [r][n][][] 0"},
        {"HTTP/1.0 401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"x\"\r\nWWW-Authenticate: "
         "Digest realm=\"r\", nonce=\"n\"",
         "refused Digest [r][n][][] 0"},
        {refused + " Digest realm=\"r\", algorithm=SHA-256, nonce=\"1\"\r\nWWW-Authenticate: "
                   "Digest realm=\"r\", algorithm=\"MD5\", nonce=\"2\"",
         "refused Digest [r][2][][] 0"},
        {refused + " Digest realm=\"unending, nonce=\"",
         "refused Digest [unending, nonce=][][][] 0"},
        {refused + "\r\n Digest realm=\"a\r\n\tb: c\",\r\n   nonce=\"n\",\r\n "
                   "qop=auth\r\nWWW-Authenticate: Digest nonce=\"2\"\r\n Content-Length: 5\r\n "
                   "opaque=\"x\"",
         "refused Digest [a b: c][n][auth][] 5"},
        {refused + " Basic realm=\"x\" , Digest realm=y, nonce=1, algorithm=SHA-256, Negotiate "
                   "aa==,, digest nonce=\"2\" , realm=\"z, Basic\", Basic",
         "refused Digest [z, Basic][2][][] 0"},
        {refused + " Basic", "refused Basic [][][][] 0"},
        {refused + " Bearer realm=\"x\"", "refused none [][][][] 0"},
        {refused, "refused none [][][][] 0"},
        {refused + " Digest realm=r,\r\nnonce=n", "refused Digest [r][][][] 0"},
        {refused + " Digest realm=\"a\\", "refused Digest [a\\][][][] 0"},
        {"HTTP/1.1 200 OK\r\nContent-length: 12\r\nX: 401 Unauthorized", "none [][][][] 12"},
        {"HTTP/1.1 200 OK\r\nX:\r\n content-length : 7x", "none [][][][] 7"},
        {"HTTP/1.1 200 OK\r\nContent-Length: -5", "none [][][][] 0"},
        {"HTTP/1.1 200 OK\r\nContent-Length: 99999999999999999999999",
         "none [][][][] 18446744073709551615"},
        {"HTTP/1.1 ", "none [][][][] 0"},
        {"HTTP/1.1 404 Not Found", "missing none [][][][] 0"},
    };
    for (const auto& [header, shown] : cases) {
        EXPECT_EQ(Shown(ReadSnapshotHeader(header)), shown) << header;
    }
}

TEST(SnapshotRequest, IsWrittenForEachScheme) {
    const SnapshotAddress address = {"cam:8080", "/p?x=1", 8080};
    const Credentials credentials = {"Aladdin", "open sesame"};
    EXPECT_EQ(BuildSnapshotRequest(address, credentials, {}),
              "GET /p?x=1 HTTP/1.1\r\nHost: cam:8080\r\nConnection: Close\r\n\r\n");
    EXPECT_EQ(
        BuildSnapshotRequest(address, credentials, {AuthorizationScheme::kBasic, "", "", "", ""}),
        "GET /p?x=1 HTTP/1.1\r\nHost: cam:8080\r\nAuthorization: Basic "
        "QWxhZGRpbjpvcGVuIHNlc2FtZQ==\r\nAccept: text/html, application/xhtml+xml, */*\r\n"
        "Accept-Language: zh-CN,ja;q=0.8,zh;q=0.6,en-US;q=0.4,en;q=0.2\r\n"
        "Accept-Encoding: gzip, deflate\r\nUser-Agent: ApiTool\r\n\r\n");

    const HttpChallenge challenge = {AuthorizationScheme::kDigest, "r, s", "n", "auth,auth-int",
                                     "o"};
    const std::string digest = BuildSnapshotRequest(address, credentials, challenge);
    const std::regex form(
        "GET /p\\?x=1 HTTP/1\\.1\r\nAuthorization: Digest username=\"Aladdin\",realm=\"r, s\","
        "nonce=\"n\",uri=\"/p\\?x=1\",algorithm=\"MD5\",cnonce=\"([0-9a-f]{32})\",nc=00000001,"
        "qop=\"auth\",response=\"([0-9a-f]{32})\",opaque=\"o\"\r\nHost: cam:8080\r\n"
        "Connection: Close\r\n\r\n");
    std::smatch found;
    ASSERT_TRUE(std::regex_match(digest, found, form)) << digest;
    EXPECT_EQ(found[2], DigestResponse(credentials, challenge, "auth",
                                       {"GET", "/p?x=1", found[1].str(), "00000001"}));
    EXPECT_NE(digest, BuildSnapshotRequest(address, credentials, challenge));  // a new cnonce

    // Of a longer realm, a device could read the password letter by letter.
    const std::size_t taken = std::string("Aladdin::open sesame").size();
    for (const std::size_t size : {511U, 512U}) {
        const std::string realm(size - taken, 'r');
        const HttpChallenge longOne = {AuthorizationScheme::kDigest, realm, "n", "auth", ""};
        EXPECT_EQ(BuildSnapshotRequest(address, credentials, longOne).empty(), size == 512) << size;
        const HttpChallenge filling = {AuthorizationScheme::kDigest, "r", "n", "auth",
                                       std::string(size, 'o')};
        EXPECT_EQ(DigestAuthorization(credentials, filling, "GET", "/", 1).empty(), size == 512);
        // Of a head without end no challenge is made.
        const std::string head = "HTTP/1.1 401 No\r\nX: " + std::string(size * 128, 'x') +
                                 "\r\nWWW-Authenticate: Digest nonce=n\r\n\r\n";
        EXPECT_EQ(CDigestAnswers(credentials).Take(head, {}) == CDigestAnswers::Verdict::kNotAsked,
                  size == 512);
    }

    EXPECT_EQ(BuildSnapshotRequest(address, {"a\x1F", "p"}, challenge), "");
    const SnapshotAddress endless = {"h", "/" + std::string(20000, 'x'), 80};
    EXPECT_EQ(BuildSnapshotRequest(endless, credentials, {}).size(), 8191U);
}

}  // namespace
}  // namespace onvif_client
