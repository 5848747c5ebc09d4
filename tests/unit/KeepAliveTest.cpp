#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <sstream>
#include <thread>
#include <vector>

#include "client/HttpClient.h"
#include "commands/DeviceRequests.h"
#include "common/HttpPersistence.h"
#include "platform/Wirelink.h"
#include "support/Await.h"
#include "support/ScriptedPeer.h"
#include "unit/Texts.h"

namespace onvif_client {
namespace {

using client_test::CPeerConnection;
using client_test::WaitUntil;

TEST(Persistence, IsWhatTheHeadOfAReplySays) {
    const std::pair<const char*, std::uint32_t> cases[] = {
        {"HTTP/1.1 200 OK\r\nContent-Length: 5", 5000},
        {"HTTP/1.1 200 OK\r\nconnection: Keep-Alive\r\nKEEP-ALIVE: timeout=60, max=9", 5000},
        {"HTTP/1.1 200 OK\r\nKeep-Alive: max=9, Timeout = 3", 2500},
        {"HTTP/1.1 200 OK\r\nKeep-Alive: timeout=0", 0},
        {"HTTP/1.1 200 OK\r\nKeep-Alive: timeout=soon", 0},
        {"HTTP/1.1 200 OK\r\nKeep-Alive: timeout=5, max=0", 0},
        {"HTTP/1.1 200 OK\r\nConnection: TE, Close", 0},
        {"HTTP/1.1 200 OK\r\nConnection: keep-alive\r\nConnection: close", 0},
        {"HTTP/1.0 200 OK\r\nContent-Length: 5", 0},
        {"HTTP/1.0 200 OK\r\nConnection: keep-alive", 5000},
        {"HTTP/1.0 200 OK\r\nConnection: keep-alive\r\nTransfer-Encoding: chunked", 0},
        {"HTTP/1.1 200 OK\r\nContent-Length: 5\r\nContent-Length: 6", 0},
        {"HTTP/1.1 200 OK\r\nContent-Length: 5\r\nTransfer-Encoding: chunked", 0},
        {"HTTP/2 200", 0},
        {"", 0},
    };
    for (const auto& [head, milliseconds] : cases) {
        EXPECT_EQ(PersistsForMs(std::string(head) + "\r\n\r\nConnection: close", 5000),
                  milliseconds)
            << head;
    }
}

TEST(Persistence, OnlyOperationsThatReadAreRepeated) {
    const std::pair<std::string, bool> cases[] = {
        {BuildGetDeviceInformation({}), true},
        {std::string(BareClockEnvelope()), true},
        {BuildLoginClockSetting({}, {}), false},
        {"<s:Envelope><s:Body xmlns='x'>\n<Getting/></s:Body>", true},
        {"<s:Envelope><s:Body><Get:Setting/></s:Body>", false},
        {"<s:Envelope><s:Header><Get/></s:Header><s:Body><a:Unset/></s:Body>", false},
        {"<Get/>", false},
        {"<s:Body", false},
        {"", false},
    };
    for (const auto& [envelope, reads] : cases) {
        EXPECT_EQ(OnlyReads(envelope), reads) << envelope;
    }
}

/// A device that does to the requests of its n-th connection what the n-th course says, and at the
/// end of the course waits for the other side to close. Letters: a: answers; x: closes without an
/// answer; c: answers and closes, and says nothing of that; n: says that it closes, but does not;
/// k: answers in chunks; u: without a length; b: with a byte too many; h: with half of a longer
/// body; d: asks for Digest; t: keeps for a second; s: stays silent.
class KeepAlive : public testing::Test {
 protected:
    KeepAlive() { WIRELINK_Initial(1, 1, nullptr, 0); }
    ~KeepAlive() override { WIRELINK_Quit(); }

    static std::string Answer(char letter) {
        const std::string body = client_test::Reply("r");
        const std::string length = "Content-Length: " + std::to_string(body.size()) + "\r\n";
        const std::string ok = "HTTP/1.1 200 OK\r\n";
        const std::string chunks = "Transfer-Encoding: chunked\r\n\r\n";
        std::ostringstream size;
        size << std::hex << body.size() << "\r\n";
        switch (letter) {
            case 'n':
                return ok + length + "Connection: close\r\n\r\n" + body;
            case 'k':
                return ok + chunks + size.str() + body + "\r\n0\r\n\r\n";
            case 'u':
                return ok + "\r\n" + body;
            case 'b':
                return ok + length + "\r\n" + body + "\n";
            case 'h':
                return ok + "Content-Length: 9999\r\n\r\n" + body;
            case 'd':
                return "HTTP/1.1 401 No\r\nContent-Length: 0\r\n"
                       "WWW-Authenticate: Digest realm=\"r\", nonce=\"n\"\r\n\r\n";
            case 't':
                return ok + length + "Keep-Alive: timeout=1\r\n\r\n" + body;
            default:
                return ok + length + "\r\n" + body;
        }
    }

    void Serve(CPeerConnection& connection) {
        const std::size_t number = ++connections_;
        const std::string course = number > courses_.size() ? "a" : courses_[number - 1];
        for (const char letter : course) {
            std::string request;
            bool more = true;
            while (more && request.find("</s:Envelope>") == std::string::npos) {
                const std::string read = connection.Read(1);
                request += read;
                more = !read.empty();
            }
            if (!more) {
                break;
            }
            {
                const std::lock_guard guard(lock_);
                log_ += std::to_string(number) + (OnlyReads(request) ? "G" : "S") +
                        (request.find("Connection: keep-alive") == std::string::npos ? "" : "k");
            }
            if (letter == 's') {
                break;
            }
            if (letter == 'x') {
                return Close(connection);
            }
            connection.Send(Answer(letter));
            if (letter == 'c') {
                return Close(connection);
            }
        }
        connection.WaitForClose();
        ++closed_;
    }
    void Close(CPeerConnection& connection) {
        { const CPeerConnection gone = std::move(connection); }
        ++closed_;
    }

    std::string Log() {
        const std::lock_guard guard(lock_);
        return std::exchange(log_, {});
    }

    static std::string Ask(CHttpClient& session, char what, std::uint32_t timeoutMs = 60000) {
        const Reply reply =
            session.Exchange({.envelope = what == 'S' ? BuildLoginClockSetting({}, {})
                                                      : BuildGetDeviceInformation({}),
                              .serviceKey = "device",
                              .timeoutMs = timeoutMs});
        return reply.status == 0 ? "+ " : "- ";
    }

    std::vector<std::string> courses_;
    std::mutex lock_;
    std::string log_;
    std::atomic<std::size_t> connections_ = 0;
    std::atomic<int> closed_ = 0;
    client_test::CScriptedPeer peer_{[this](CPeerConnection& connection) { Serve(connection); }};
};

constexpr CExtensions kKeeping = {Extension::kHttpFraming, Extension::kKeepAlive};

TEST_F(KeepAlive, AnswersOfOneConnectionServeRequestAfterRequest) {
    const struct {
        const char* what;
        // G: a Get, S: a Set, w: waits until one connection more is closed
        std::string requests;
        std::vector<std::string> courses;
        std::string log;
        CExtensions extensions = kKeeping;
    } cases[] = {
        {"without", "GG", {"aa", "a"}, "1G+ 2G+ ", {Extension::kHttpFraming}},
        {"kept", "GGG", {"aka"}, "1Gk+ 1Gk+ 1Gk+ "},
        {"announced end", "GG", {"nn", "a"}, "1Gk+ 2Gk+ "},
        {"no length", "GG", {"uu", "a"}, "1Gk+ 2Gk+ "},
        {"bytes behind the reply", "GG", {"bb", "a"}, "1Gk+ 2Gk+ "},
        {"a reply that is longer", "GG", {"hh", "a"}, "1Gk+ 2Gk+ "},
        {"closed meanwhile", "GwGG", {"c", "aa"}, "1Gk+ 2Gk+ 2Gk+ "},
        {"one that has served", "GGwG", {"ac", "a"}, "1Gk+ 1Gk+ 2Gk+ "},
        {"the first kept one fails: no more", "GGG", {"ax", "aa", "a"}, "1Gk+ 1Gk2G+ 3G+ "},
        {"a later one fails", "GGGG", {"aax", "aa"}, "1Gk+ 1Gk+ 1Gk2Gk+ 2Gk+ "},
        {"a Set waits for proof", "GSG", {"aa", "aa"}, "1Gk+ 2Sk+ 2Gk+ "},
        {"a Set once it is there", "GGSS", {"aaaa"}, "1Gk+ 1Gk+ 1Sk+ 1Sk+ "},
        {"a Set is not repeated", "GGSG", {"aax", "a"}, "1Gk+ 1Gk+ 1Sk- 2Gk+ "},
        {"a Set, closed before", "GGwS", {"ac", "a"}, "1Gk+ 1Gk+ 2Sk+ "},
        {"a challenge",
         "GG",
         {"daa"},
         "1Gk1Gk+ 1Gk+ ",
         {Extension::kHttpFraming, Extension::kKeepAlive, Extension::kHttpDigest}},
    };
    for (const auto& each : cases) {
        courses_ = each.courses;
        connections_ = 0;
        closed_ = 0;
        auto session =
            std::make_unique<CHttpClient>("u", "p", "127.0.0.1", peer_.Port(), each.extensions);
        std::string log;
        int closed = 0;
        for (const char request : each.requests) {
            if (request == 'w') {
                WaitUntil([&] { return closed_ > closed; });
                continue;
            }
            closed = closed_;
            const std::string outcome = Ask(*session, request);
            log += Log() + outcome;
        }
        session.reset();
        WaitUntil([&] { return closed_ == static_cast<int>(connections_); });
        EXPECT_EQ(log, each.log) << each.what;
    }
}

TEST_F(KeepAlive, SilenceOverTheFirstKeptConnectionEndsTheKeeping) {
    courses_ = {"as", "a", "a"};
    CHttpClient session("u", "p", "127.0.0.1", peer_.Port(), kKeeping);
    std::string outcomes;
    for (const std::uint32_t timeoutMs : {60000U, 50U, 60000U, 60000U}) {
        outcomes += Ask(session, 'G', timeoutMs);
    }
    EXPECT_EQ(outcomes + Log(), "+ - + + 1Gk1Gk2G3G");
}

TEST_F(KeepAlive, TwoIdleConnectionsAreKeptAndClosedInTime) {
    {
        CHttpClient session("u", "p", "127.0.0.1", peer_.Port(), kKeeping);
        courses_.assign(4, "aaaa");
        const auto together = [&] {
            std::vector<std::jthread> threads;
            for (int i = 0; i < 4; ++i) {
                threads.emplace_back([&] { Ask(session, 'G'); });
            }
        };
        // However the four fall upon each other, two are the most that stay.
        together();
        const auto open = [&] { return static_cast<int>(connections_) - closed_; };
        WaitUntil([&] { return open() <= 2; });
        EXPECT_GE(open(), 1);
        WIRELINK_Quit();
        WaitUntil([&] { return open() == 0; });
        WIRELINK_Initial(1, 1, nullptr, 0);
        courses_.assign(connections_ + 1, "t");
        Ask(session, 'G');  // for half a second
        WaitUntil([&] { return open() == 0; });
        courses_.assign(connections_ + 1, "a");
        Ask(session, 'G');
        EXPECT_EQ(open(), 1);
    }
    WaitUntil([&] { return static_cast<int>(connections_) == closed_; });
}

/// A device that serves one connection at a time, as long as that stays open.
TEST_F(KeepAlive, AQuickLoginGivesWayWhereADeviceServesOneConnectionAtATime) {
    const std::string body = client_test::Reply(
        "GetServicesResponse{Service{Namespace=/ver10/media/wsdl XAddr=x} "
        "Service{Namespace=/ver10/imaging/wsdl XAddr=x} Service{Namespace=/ptz/wsdl XAddr=x}} "
        "GetProfilesResponse{Profiles(token=P){VideoSourceConfiguration{SourceToken=S} "
        "PTZConfiguration(token=Z)}} "
        "GetSystemDateAndTimeResponse{SystemDateAndTime{UTCDateTime{Time{Hour=8 Minute=1 Second=1} "
        "Date{Year=2019 Month=3 Day=7}}}}");
    std::mutex served;
    std::atomic<bool> clockServed = false;
    client_test::CScriptedPeer peer([&](CPeerConnection& connection) {
        const auto read = [&connection] {
            std::string request = "?";
            for (std::string more = request;
                 !more.empty() && request.find("</s:Envelope>") == request.npos; request += more) {
                more = connection.Read(1);
            }
            return request.find("</s:Envelope>") != request.npos ? request : "";
        };
        std::string request = read();
        const bool isClock = request.find("GetSystemDateAndTime") != request.npos;
        WaitUntil([&] { return isClock || clockServed; });
        const std::lock_guard guard(served);
        for (; !request.empty(); request = read()) {
            {
                const std::lock_guard logging(lock_);
                const std::size_t name = request.find("<tds:Get", request.find("<s:Body"));
                log_ += name == request.npos ? "." : request.substr(name + 8, 1);
            }
            clockServed = true;
            connection.Send("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) +
                            "\r\n\r\n" + body);
        }
    });
    CHttpClient session("u", "p", "127.0.0.1", peer.Port(),
                        {Extension::kHttpFraming, Extension::kKeepAlive, Extension::kKeepClock,
                         Extension::kQuickLogin});
    EXPECT_EQ(session.Login(), 0);
    // The clock, the list once - it was answered in its time -, capabilities, profiles, two
    // options.
    EXPECT_EQ(Log(), "SS....");
}

}  // namespace
}  // namespace onvif_client
