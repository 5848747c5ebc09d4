#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "client/HttpClient.h"
#include "platform/Clock.h"
#include "platform/Wirelink.h"
#include "support/DroppingPort.h"
#include "support/ScriptedPeer.h"
#include "support/System.h"

namespace onvif_client {
namespace {

using client_test::CPeerConnection;
using client_test::CScriptedPeer;
using client_test::SetVariable;

/// Time that passes where it is to, by sleeping only: waits of seconds take milliseconds. Or by
/// looking, where somebody waits without sleeping.
class CSleptClock final : public IClock {
 public:
    std::uint32_t TickCount() const override { return slept_ += perLook; }
    std::int64_t CalendarSeconds() const override { return 0; }
    void Sleep(std::uint32_t milliseconds) const override {
        slept_ += passes ? milliseconds : 0;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    std::uint32_t Slept() const { return slept_; }
    bool passes = false;
    std::uint32_t perLook = 0;

 private:
    mutable std::atomic<std::uint32_t> slept_ = 0;
};

/// What a device does with one connection.
struct Answer {
    std::vector<std::string> pieces;
    bool closes = true;
};

[[maybe_unused]] const bool kLogIsOrdinary =
    SetVariable("ONVIF_CLIENT_LOG", nullptr) && SetVariable("ONVIF_CLIENT_LOG_FILE", nullptr);

const std::string kOk = "HTTP/1.1 200 OK\r\nContent-Length: ";
const std::string kUnauthorized = "HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: ";

class SnapshotDownload : public testing::Test {
 protected:
    SnapshotDownload() { WIRELINK_Initial(1, 1, nullptr, 0); }
    ~SnapshotDownload() override { WIRELINK_Quit(); }

    /// The picture that a device gives which treats its connections so, one after the other;
    /// "(none)" for no data.
    std::string Fetch(const std::vector<Answer>& answers) {
        requests_.clear();
        CScriptedPeer peer([&](CPeerConnection& connection) {
            const std::string request = connection.Read(kShortestRequest);
            const std::size_t number = Note(request);
            if (number < answers.size()) {
                for (const std::string& piece : answers[number].pieces) {
                    connection.Send(piece);
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                }
                if (!answers[number].closes) {
                    connection.WaitForClose();
                }
            }
        });
        return FetchFrom(peer.Port());
    }

    std::string FetchFrom(std::uint16_t port) {
        ResponseBuffer picture;
        session_->DownloadPicture("http://elsewhere.invalid:" + std::to_string(port) + "/p",
                                  picture);
        return picture.data == nullptr
                   ? "(none)"
                   : std::string(picture.data.get(), static_cast<std::size_t>(picture.size));
    }

    /// How many requests came before.
    std::size_t Note(const std::string& request) {
        const std::lock_guard guard(lock_);
        requests_.push_back(request);
        return requests_.size() - 1;
    }

    static constexpr std::size_t kShortestRequest = 60;
    CSleptClock clock_;
    const CScopedClock replaced_{clock_};
    std::optional<CHttpClient> session_{std::in_place, "user", "pass", "127.0.0.1", 80};
    std::mutex lock_;  // guards requests_ while a peer lives: each connection has its thread
    std::vector<std::string> requests_;  // of one connection after the other
};

TEST_F(SnapshotDownload, GivesWhatTheDeviceSends) {
    std::string large;
    while (large.size() < 20'000'000) {
        large += "a picture of 40 bytes, again and again..";
    }
    const std::string header = kOk + "4\r\nX: y\r\n\r\n";
    const struct {
        std::string picture;
        std::vector<Answer> answers;
    } cases[] = {
        {"pict", {{{header + "pict"}, false}}},
        {"pict", {{{header, "pi", "ct"}, false}}},
        {"pict",
         {{{header.substr(0, 5), header.substr(5, header.size() - 7),
            header.substr(header.size() - 2) + "p", "ict"},
           false}}},
        {"pict", {{{header + "picture"}, false}}},            // too long, at once
        {"pict", {{{header + "pic", "ture"}, false}}},        // too long, later
        {"pi", {{{header + "pi"}}}},                          // shorter than stated
        {"picture", {{{"HTTP/1.1 200 OK\r\n\r\npicture"}}}},  // no length
        {std::string(1048576, 'x'),
         {{{"HTTP/1.1 200 OK\r\n\r\n" + std::string(1048577, 'x')}, false}}},
        {large, {{{kOk + "20000000\r\n\r\n", large}, false}}},
        {"x", {{{kOk + "67108864\r\n\r\nx"}}}},
        {"(none)", {{{kOk + "67108865\r\n\r\nx"}}}},  // more than is taken
        {"pict", {{{"HTTP/1.1 404 Not Found\r\n\r\n"}}, {{header + "pict"}}}},
        {"pict", {{{kUnauthorized + "Bearer x\r\n\r\n"}}, {{header + "pict"}}}},
        {"pict", {{{}}, {{header + "pict"}}}},  // closes without a word
        {"pict", {{{"HTTP/1.1 200 OK\r\n" + std::string(70000, 'h')}, false}, {{header + "pict"}}}},
        {"(none)", {{{kUnauthorized + "Basic\r\n\r\n"}}, {{kUnauthorized + "Basic\r\n\r\n"}}}},
        // A third request would bring it.
        {"(none)",
         {{{kUnauthorized + "Digest realm=\"r\", nonce=\"1\"\r\n\r\n"}},
          {{kUnauthorized + "Digest realm=\"r\", nonce=\"2\", stale=true\r\n\r\n"}},
          {{header + "pict"}}}},
    };
    for (const auto& each : cases) {
        const std::string picture = Fetch(each.answers);
        EXPECT_TRUE(picture == each.picture)
            << picture.substr(0, 20) << " " << picture.size() << " for "
            << testing::PrintToString(each.answers.front().pieces).substr(0, 200);
        EXPECT_EQ(requests_.size(), std::min<std::size_t>(each.answers.size(), 2));
    }
}

TEST_F(SnapshotDownload, PutsChunksTogether) {
    const std::string chunks =
        "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
    const std::string large(3'000'000, 'x');
    std::string most;
    most.resize(67'108'864, 'y');
    const std::pair<std::string, std::string> cases[] = {
        {chunks + "4\r\npict\r\n3\r\nure\r\n0\r\n\r\n", "picture"},
        {chunks + "2dc6c0\r\n" + large + "\r\n0\r\n", large},
        {chunks + "4\r\npict\r\nure", "pict"},
        {chunks + "ffffffffffffffff\r\n" + most + "more", most},
    };
    for (const auto& [reply, picture] : cases) {
        EXPECT_NE(Fetch({{{reply}}}), picture) << "the frames are in it";
        session_.emplace("user", "pass", "127.0.0.1", std::uint16_t{80},
                         CExtensions{Extension::kHttpFraming});
        EXPECT_TRUE(Fetch({{{reply}, picture.size() < 5}}) == picture) << reply.substr(0, 100);
        session_.emplace("user", "pass", "127.0.0.1", std::uint16_t{80});
    }
}

TEST_F(SnapshotDownload, AnswersDigestWhereItCanAndBasicUntilThen) {
    const std::string tooLong = "Digest nonce=n, realm=" + std::string(512, 'r');
    const std::string digest = "Digest realm=\"r\", nonce=\"n\"";
    const std::string basicAnswer = "Basic dXNlcjpwYXNz\r\n";
    const std::string digestAnswer = "Digest username=\"user\",realm=\"r\",nonce=\"n\",uri=\"/p\"";
    const std::string strange = "credentials with texts that cannot be answered";
    const struct {
        std::string challenge;
        std::string answer;
        std::string refusal;
        CExtensions begins = {};  // a new session, with these
    } cases[] = {
        // One session, in this order.
        {"Basic realm=\"r\"", basicAnswer, ""},
        {tooLong + ", Basic realm=\"r\"", basicAnswer, ""},
        {"Digest realm=r, nonce=n, algorithm=SHA-256, Basic realm=r", basicAnswer, ""},
        {tooLong, "", strange},
        {"Basic realm=\"r\"", "", "Basic credentials after Digest"},
        {"Digest nonce=n, realm=\"r\n\"", "", strange},
        {"Digest nonce=\"n\r\", realm=r", "", strange},
        {digest + ", opaque=" + '\0', "", strange},
        {tooLong + "\r\nWWW-Authenticate: Basic realm=\"r\", " + digest, digestAnswer, ""},
        {tooLong + ", Basic realm=\"r\"", "", "Basic credentials after Digest"},
        {"Digest realm=r, nonce=n, algorithm=SHA-256, Basic realm=r",
         "uri=\"/p\", algorithm=SHA-256, response=",
         "",
         {Extension::kHttpDigest}},
        {"Basic realm=\"r\"",
         "",
         "Basic credentials, which are switched off (no-basic)",
         {Extension::kNoBasic}},
        {"Basic realm=\"r\", " + digest, digestAnswer, ""},
    };
    for (const auto& each : cases) {
        if (each.begins != CExtensions()) {
            session_.emplace("user", "pass", "127.0.0.1", std::uint16_t{80}, each.begins);
        }
        const bool answered = each.refusal.empty();
        const std::string line = "info HttpClient no picture: device 127.0.0.1 asks for ";
        testing::internal::CaptureStderr();
        EXPECT_EQ(Fetch({{{kUnauthorized + each.challenge + "\r\n\r\n"}}, {{kOk + "1\r\n\r\nx"}}}),
                  answered ? "x" : "(none)");
        const std::string log = testing::internal::GetCapturedStderr();
        EXPECT_EQ(log.substr(std::min(log.find("info"), log.size())),
                  answered ? "" : line + each.refusal + "\n");
        ASSERT_EQ(requests_.size(), answered ? 2U : 1U) << each.challenge;
        EXPECT_EQ(requests_[0].find("Authorization"), std::string::npos);
        EXPECT_NE(requests_[0].find("\r\nHost: elsewhere.invalid:"), std::string::npos);
        EXPECT_NE(requests_.back().find(each.answer), std::string::npos) << requests_.back();
    }
}

TEST_F(SnapshotDownload, EndsWithoutADevice) {
    clock_.passes = true;
    EXPECT_EQ(Fetch({{{}, false}, {{}, false}}), "(none)");  // silent
    EXPECT_GT(clock_.Slept(), 10000U);
    EXPECT_LT(clock_.Slept(), 12000U);
    EXPECT_EQ(FetchFrom(1), "(none)");  // nobody listens
    clock_.perLook = 1000;
    const std::uint32_t before = clock_.Slept();
    EXPECT_EQ(FetchFrom(client_test::CDroppingPort().Port()), "(none)");
    EXPECT_LE(clock_.Slept() - before, 16000U) << "what cannot be sent to is not read from";
    WIRELINK_Quit();
    EXPECT_EQ(FetchFrom(1), "(none)");
}

}  // namespace
}  // namespace onvif_client
