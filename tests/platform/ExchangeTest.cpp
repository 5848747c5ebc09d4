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
        returned_ =
            WIRELINK_SimpleClientComm("127.0.0.1", port, "request", 7, buffer.data(),
                                      static_cast<unsigned int>(capacity), marker, timeoutMs);
        return buffer.c_str();
    }

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
    const struct {
        const char* what;
        std::string sent;
        bool closes;
        std::size_t capacity;
        unsigned int timeoutMs;
        std::string expected;
    } cases[] = {
        {"the peer closes", "half a reply", true, 100, 5000, "half a reply"},
        {"the peer closes at once", "", true, 100, 5000, ""},
        {"the buffer is full", "0123456789ABC:End>", false, 10, 5000, "0123456789"},
        {"the deadline", "half", false, 100, 50, "half"},
        {"silence", "", false, 100, 50, ""},
        {"the marker at the very end of the buffer", "12345:End>x", false, 10, 5000, "12345:End>"},
    };
    for (const auto& each : cases) {
        CScriptedPeer peer([&](CPeerConnection& connection) {
            connection.Read(7);
            connection.Send(each.sent);
            if (!each.closes) {
                connection.WaitForClose();
            }
        });
        EXPECT_EQ(Do(peer.Port(), each.capacity, ":End>", each.timeoutMs), each.expected)
            << each.what;
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

TEST_F(Exchange, QuitBreaksExchangesOffUntilTheNextInitial) {
    std::atomic<int> waiting = 0;
    CScriptedPeer peer([&](CPeerConnection& connection) {
        connection.Read(7);
        ++waiting;
        connection.WaitForClose();
    });
    std::array<std::string, 4> replies;
    {
        std::array<std::jthread, 4> threads;
        for (std::size_t i = 0; i < threads.size(); ++i) {
            threads[i] = std::jthread([&, i] {
                char buffer[16] = {};
                WIRELINK_SimpleClientComm("127.0.0.1", peer.Port(), "request", 7, buffer, 15,
                                          ":End>", 600000);
                replies[i] = buffer;
            });
        }
        client_test::WaitUntil([&] { return waiting == 4; });
        WIRELINK_Quit();
        WIRELINK_Quit();
    }
    EXPECT_EQ(Do(peer.Port()), "");
    EXPECT_EQ(returned_, -1);
    EXPECT_EQ(waiting, 4);
    WIRELINK_Initial(1, 1, nullptr, 0);
    CScriptedPeer answering([](CPeerConnection& connection) { connection.Send("<s:End>"); });
    EXPECT_EQ(Do(answering.Port()), "<s:End>");
}

}  // namespace
}  // namespace onvif_client
