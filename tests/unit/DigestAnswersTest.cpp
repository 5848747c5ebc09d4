#include "client/DigestAnswers.h"

#include <gtest/gtest.h>

#include <mutex>
#include <regex>
#include <set>
#include <thread>

#include "client/HttpClient.h"
#include "commands/DeviceRequests.h"
#include "events/EventDocuments.h"
#include "platform/Wirelink.h"
#include "support/ScriptedPeer.h"
#include "unit/Texts.h"

namespace onvif_client {
namespace {

TEST(DigestAnswers, AreThoseOfTheStandards) {
    const std::string host = "testrealm@host.com";
    const std::string nonce = "dcd98b7102dd2f0e8b11d0f600bfb0c093";
    const std::string other = "http-auth@example.org";
    const std::string longNonce = "7ypf/xlj9XXwfDPEoM4URrv/xwf94BcCAzFZH4GiTo0v";
    const std::string cnonce = "f2/wE4q74E6zIJEtWaHKaf5wv/H5QzzpXusqGemxURZJ";
    const struct {
        const char* password;
        std::string realm, nonce, algorithm, qop, cnonce, response;
    } cases[] = {
        // RFC 2069 (2.4, corrected), RFC 2617 (3.5), RFC 7616 (3.9.1)
        {"CircleOfLife", host, nonce, "", "", "", "1949323746fe6a43ef61f9606e7febea"},
        {"Circle Of Life", host, nonce, "", "auth", "0a4f113b", "6629fae49393a05397450978507c4ef1"},
        {"Circle of Life", other, longNonce, "MD5", "auth", cnonce,
         "8ca523f5e9506fed4657c9700eebdbec"},
        {"Circle of Life", other, longNonce, "SHA-256", "auth", cnonce,
         "753927fa0e85d155564e2e272a28d1802ca10daf4496794697cf8db5856cb6c1"},
    };
    for (const auto& each : cases) {
        const HttpChallenge challenge = {
            AuthorizationScheme::kDigest, each.realm, each.nonce, "", "", each.algorithm};
        EXPECT_EQ(DigestResponse({"Mufasa", each.password}, challenge, each.qop,
                                 {"GET", "/dir/index.html", each.cnonce, "00000001"}),
                  each.response);
    }
}

TEST(DigestAnswers, NeverUseACountTwice) {
    const Credentials credentials = {"u", "p"};
    CDigestAnswers answers(credentials);
    answers.Take("HTTP/1.1 401 No\r\nWWW-Authenticate: Digest nonce=n, qop=auth\r\n\r\n", {});
    std::mutex lock;
    std::set<std::string> counts;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 400; ++i) {
            threads.emplace_back([&] {
                const std::string field = answers.Next("POST", "/").field;
                const std::lock_guard guard(lock);
                counts.insert(field.substr(field.find("nc="), 11));
            });
        }
    }
    EXPECT_EQ(counts.size(), 400U);
    EXPECT_EQ(*counts.rbegin(), "nc=00000190");
}

TEST(DigestAnswers, AreGivenUnaskedAndAnewWhereThatHelps) {
    std::mutex lock;  // guards the two below
    std::vector<std::string> replies;
    std::string answered;
    client_test::CScriptedPeer peer([&](client_test::CPeerConnection& connection) {
        const std::string request = connection.Read(1);
        static const std::regex form(
            "\r\nHost: 127.0.0.1\r\nAuthorization: Digest username=\"u\", realm=\"r\", "
            "nonce=\"(N.)\", uri=\"/onvif/device_service\", algorithm=SHA-256, qop=auth, "
            "nc=0000000(.), cnonce=\"[0-9a-f]{32}\", response=\"[0-9a-f]{64}\", opaque=\"o\"\r\n");
        std::smatch found;
        const std::lock_guard guard(lock);
        answered += std::regex_search(request, found, form)              ? found.format(" $1:$2")
                    : request.find("Authorization") == std::string::npos ? " none"
                                                                         : request;
        if (!replies.empty()) {
            const std::string reply = replies.front();
            replies.erase(replies.begin());
            connection.Send(reply);
        }
    });
    const auto asks = [](const std::string& rest) {
        return "HTTP/1.1 401 Denied\r\nWWW-Authenticate: Digest realm=\"r\", algorithm=SHA-256, "
               "qop=\"auth-int, auth\", opaque=o, nonce=" +
               rest + "\r\n\r\n";
    };
    const std::string fine = "HTTP/1.1 200 OK\r\n\r\n" + client_test::Reply("PullMessagesResponse");
    const std::string basic =
        "HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic realm=r\r\n\r\n";
    const struct {
        std::vector<std::string> replies;
        int status;
        const char* answered;
    } cases[] = {
        // One session, in this order.
        {{basic}, 401, " none"},
        {{asks("N1"), asks("N2")}, 401, " none N1:1"},  // a wrong password
        {{asks("N2")}, 401, " N2:1"},
        {{fine}, 0, " N2:2"},
        {{asks("N3"), fine}, 0, " N2:3 N3:1"},  // too old, though the device does not say so
        {{asks("N4, stale=true"), asks("N5, stale=true"), fine}, 0, " N3:2 N4:1 N5:1"},
        {{asks("N6"), asks("N7, stale=true"), asks("N8, stale=true")}, 401, " N5:2 N6:1 N7:1"},
        {{basic}, 401, " N8:1"},
    };
    WIRELINK_Initial(1, 1, nullptr, 0);
    CHttpClient session("u", "p", "127.0.0.1", peer.Port(), {Extension::kHttpDigest});
    const auto exchange = [&](CHttpClient& by, const std::vector<std::string>& each) {
        {
            const std::lock_guard guard(lock);
            replies = each;
            answered.clear();
        }
        return by.Exchange({.envelope = BuildGetDeviceInformation({}), .serviceKey = "device"})
            .status;
    };
    for (const auto& each : cases) {
        EXPECT_EQ(exchange(session, each.replies), each.status) << each.answered;
        EXPECT_EQ(answered, each.answered);
    }
    CHttpClient literal("u", "p", "127.0.0.1", peer.Port());
    EXPECT_EQ(exchange(literal, {asks("N1"), fine}), 7);
    EXPECT_EQ(answered, " none");

    // Pulls: one more at once where that helps, but not for ever.
    const auto pull = [&](const std::string& reply) {
        session.BuildHttpRequest(session.PrepareRequest("<Get><pullMessages/></Get>").value());
        return ReadPull(session.ReadPullReply(reply)).outcome;
    };
    CPullPacing pacing;
    EXPECT_EQ(pull(fine), PullOutcome::kNoMessages);
    EXPECT_EQ(pull(asks("N9")), PullOutcome::kAskedAnew);
    EXPECT_EQ(pull(asks("NA")), PullOutcome::kRefused);
    EXPECT_EQ(pacing.Pause(PullOutcome::kAskedAnew, 1), 0U);
    EXPECT_EQ(pacing.Pause(PullOutcome::kAskedAnew, 1), 1000U);
    EXPECT_EQ(pacing.Pause(PullOutcome::kMessages, 1), 0U);
    EXPECT_EQ(pacing.Pause(PullOutcome::kAskedAnew, 1), 0U);
    WIRELINK_Quit();
}

}  // namespace
}  // namespace onvif_client
