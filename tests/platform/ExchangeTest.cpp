#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <thread>

#include "platform/Wirelink.h"
#include "support/Await.h"
#include "support/ClosedPort.h"
#include "support/DroppingPort.h"
#include "support/ScriptedPeer.h"

namespace onvif_client {
namespace {

using client_test::CPeerConnection;
using client_test::CScriptedPeer;

class Exchange : public testing::Test {
 protected:
    Exchange() { WIRELINK_Initial(1, 1, nullptr, 0); }
    ~Exchange() override { WIRELINK_Quit(); }

    /// What stands in the buffer after an exchange of "request".
    std::string Do(std::uint16_t port, std::size_t capacity = 100, const char* marker = ":End>",
                   unsigned int timeoutMs = 5000) {
        std::string buffer(capacity + 1, '\0');
        returned_ = WIRELINK_SimpleClientComm(
            "127.0.0.1", port, request_.data(), static_cast<unsigned int>(request_.size()),
            buffer.data(), static_cast<unsigned int>(capacity), marker, timeoutMs);
        return buffer.c_str();
    }

    std::string request_ = "request";
    int returned_ = 0;
};

TEST_F(Exchange, TheMarkerEndsTheReplyHoweverItIsCut) {
    const std::string reply = "<a><s:End>";
    for (std::size_t cut = 0; cut <= reply.size(); ++cut) {
        std::atomic<bool> asked = false;
        CScriptedPeer peer([&](CPeerConnection& connection) {
            asked = connection.Read(7) == "request";
            connection.Send(std::string_view(reply).substr(0, cut));
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            connection.Send(std::string_view(reply).substr(cut));
            connection.Send("behind<s:End>");
            connection.WaitForClose();  // the client goes first
        });
        EXPECT_EQ(Do(peer.Port()), reply) << cut;
        EXPECT_EQ(returned_, static_cast<int>(reply.size()));
        EXPECT_TRUE(asked);
    }
}

TEST_F(Exchange, EndsOtherwiseKeepWhatWasRead) {
    constexpr std::size_t kLong = 1 << 25;  // more than the buffers of the system take
    const struct {
        const char* what;
        std::string sent;
        bool closes;
        std::size_t capacity;
        unsigned int timeoutMs;
        std::string expected;
        std::size_t request = 7;
        std::size_t read = 7;  // of it
    } cases[] = {
        {"the peer closes", "half a reply", true, 100, 5000, "half a reply"},
        {"the peer closes at once", "", true, 100, 5000, ""},
        {"the buffer is full", "0123456789ABC:End>", false, 10, 5000, "0123456789"},
        {"the deadline", "half", false, 100, 50, "half"},
        {"silence", "", false, 100, 50, ""},
        {"the marker at the very end of the buffer", "12345:End>x", false, 10, 5000, "12345:End>"},
        {"a long request arrives whole", ":End>", true, 100, 60000, ":End>", kLong, kLong},
        {"the peer closes before its end", "", true, 100, 60000, "", kLong, 1},
        {"the peer reads no further", "", false, 100, 50, "", kLong, 1},
    };
    for (const auto& each : cases) {
        std::atomic<bool> ended = each.closes;
        CScriptedPeer peer([&](CPeerConnection& connection) {
            connection.Read(each.read);
            connection.Send(each.sent);
            client_test::WaitUntil([&] { return ended.load(); });
        });
        request_.resize(each.request);
        EXPECT_EQ(Do(peer.Port(), each.capacity, ":End>", each.timeoutMs), each.expected)
            << each.what;
        EXPECT_EQ(returned_ < 0, each.read < each.request) << each.what;
        ended = true;
    }
}

TEST_F(Exchange, ADrippingPeerDoesNotMoveTheDeadline) {
    CScriptedPeer peer([](CPeerConnection& connection) {
        while (connection.Send("x")) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    });
    EXPECT_EQ(Do(peer.Port(), 100000, ":End>", 100).find_first_not_of('x'), std::string::npos);
    EXPECT_GT(returned_, 0);
}

TEST_F(Exchange, BadArgumentsAndDeadPortsFailAtOnce) {
    const client_test::CClosedPort nobody;
    const std::uint16_t closed = nobody.Port();
    EXPECT_EQ(Do(closed), "");
    EXPECT_EQ(returned_, -1);
    const client_test::CDroppingPort slow;
    EXPECT_EQ(Do(slow.Port(), 100, ":End>", 50), "");
    EXPECT_EQ(returned_, -1);
    char buffer[10] = {};
    for (const char* ip : {static_cast<const char*>(nullptr), "", "localhost", "1.2.3", "::1"}) {
        EXPECT_EQ(WIRELINK_SimpleClientComm(ip, 80, "r", 1, buffer, 10, "m", 10), -1);
    }
    EXPECT_EQ(WIRELINK_SimpleClientComm("127.0.0.1", closed, nullptr, 0, buffer, 10, "m", 10), -1);
    EXPECT_EQ(WIRELINK_SimpleClientComm("127.0.0.1", closed, "r", 1, nullptr, 10, "m", 10), -1);
    EXPECT_EQ(WIRELINK_SimpleClientComm("127.0.0.1", closed, "r", 1, buffer, 0, "m", 10), -1);
}

/// The first call takes a while.
class CSlowObserver final : public CReplyObserver {
 public:
    std::uint32_t OnReply(const char*, std::uint32_t) override {
        if (++entered == 1) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            ended = true;
        }
        return kReplyGoesOn;
    }

    std::atomic<int> entered = 0;
    std::atomic<bool> ended = false;
};

TEST_F(Exchange, QuitBreaksExchangesOffUntilTheNextInitial) {
    std::atomic<int> asked = 0;
    CScriptedPeer peer([&](CPeerConnection& connection) {
        connection.Read(7);
        ++asked;
        connection.Send("x");
        connection.WaitForClose();
    });
    CSlowObserver observer;
    {
        std::array<std::jthread, 4> threads;
        for (std::jthread& each : threads) {
            each = std::jthread([&] {
                WIRELINK_ObservedClientComm("127.0.0.1", peer.Port(), "request", 7, &observer,
                                            600000);
            });
        }
        client_test::WaitUntil([&] { return observer.entered == 4; });
        WIRELINK_Quit();
        EXPECT_TRUE(observer.ended) << "it waits for whoever is inside";
        WIRELINK_Quit();
    }
    EXPECT_EQ(Do(peer.Port()), "");
    EXPECT_EQ(returned_, -1);
    EXPECT_EQ(asked, 4);
    WIRELINK_Initial(1, 1, nullptr, 0);
    CScriptedPeer answering([](CPeerConnection& connection) { connection.Send("<s:End>"); });
    EXPECT_EQ(Do(answering.Port()), "<s:End>");
}

}  // namespace
}  // namespace onvif_client
