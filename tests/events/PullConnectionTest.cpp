#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "events/EventDeviceRecord.h"
#include "events/PullConnection.h"
#include "platform/Clock.h"
#include "platform/Wirelink.h"
#include "support/Await.h"
#include "support/ClosedPort.h"
#include "support/DroppingPort.h"
#include "support/ScriptedPeer.h"
#include "support/System.h"

namespace onvif_client {
namespace {

using client_test::CPeerConnection;
using client_test::CScriptedPeer;
using client_test::Held;
using client_test::WaitUntil;

class CNoSessions final : public ISessionSource {
 public:
    CHttpClient* Acquire(std::uint32_t) override { return nullptr; }
    bool Release(std::uint32_t) override { return false; }
};

/// Counts what becomes of pulls.
class CCountingSink final : public IPullSink {
 public:
    bool Pulls() const override {
        ++blocks;
        return true;
    }
    void OnPullAnswer(const PullAnswer&) override { ++answers; }
    void OnNoConnection() override { ++ways; }

    mutable std::atomic<int> blocks = 0;
    std::atomic<int> answers = 0;
    std::atomic<int> ways = 0;  // that were not there
};

class PullConnection : public testing::Test {
 protected:
    PullConnection() { WIRELINK_Initial(1, 1, nullptr, 0); }
    ~PullConnection() override { WIRELINK_Quit(); }

    void Pull(std::uint16_t port, std::string text = "GET") {
        parser_.Reset();
        connection_.Begin({"127.0.0.1", port, std::move(text)});
    }

    CNoSessions sessions_;
    CCountingSink sink_;
    CEventParse parser_{sink_, sessions_, 1};
    CPullConnection connection_{sink_, parser_};
};

TEST_F(PullConnection, ThereIsNoWayAfterThreeTries) {
    const client_test::CClosedPort closed;
    const client_test::CDroppingPort dropping;
    ASSERT_TRUE(dropping.Drops());
    Pull(closed.Port());  // what Asio makes once, is then there
    WaitUntil([&] { return sink_.ways == 1; });
    const std::size_t before = Held().sockets;
    Pull(closed.Port());
    WaitUntil([&] { return sink_.ways == 2 && Held().sockets <= before; });
    const auto began = std::chrono::steady_clock::now();
    Pull(dropping.Port());
    EXPECT_EQ(sink_.ways, 2) << "nobody waits for it";
    WaitUntil([&] { return sink_.ways == 3 && Held().sockets <= before; });
    EXPECT_GE(std::chrono::steady_clock::now() - began, std::chrono::milliseconds(1800));
    Pull(dropping.Port());
    EXPECT_TRUE(connection_.Exists());
    connection_.Close();
    WaitUntil([&] { return Held().sockets <= before; });
    EXPECT_EQ(sink_.ways, 3) << "given up by its owner";
}

TEST_F(PullConnection, ADeviceThatComesBackIsReachedByALaterTry) {
    client_test::CDroppingPort port;
    ASSERT_TRUE(port.Drops());
    const std::string request(8191, 'x');
    Pull(port.Port(), request);
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    port.Answer();
    const client_test::CPeerSocket device = port.Accept();
    EXPECT_EQ(device.Read(request.size()), request);
    EXPECT_TRUE(device.Send("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"));
    WaitUntil([&] { return sink_.answers == 1; });
    EXPECT_EQ(sink_.ways, 0);
}

TEST_F(PullConnection, TheEndOfTheConnectionEndsAReplyWithoutLength) {
    CEventParse parser(sink_, sessions_, 2, {Extension::kHttpFraming});
    CPullConnection connection(sink_, parser);
    const CScriptedPeer peer([&](CPeerConnection& device) {
        device.Read(3);
        device.Send("HTTP/1.1 200 OK\r\n\r\nbody");
        WaitUntil([&] { return sink_.blocks > 0; });
        EXPECT_EQ(sink_.answers, 0);
    });
    connection.Begin({"127.0.0.1", peer.Port(), "GET"});
    WaitUntil([&] { return sink_.answers == 1; });
}

TEST_F(PullConnection, GoesOverTheConnectionOfTheOneBefore) {
    const std::string kept = "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n";
    const struct {
        std::string answer;
        CExtensions extensions;
        bool trusted;
        std::size_t connections;  // for four pulls
    } cases[] = {
        {kept, {Extension::kHttpFraming, Extension::kKeepAlive}, true, 1},
        {kept, {Extension::kHttpFraming, Extension::kKeepAlive}, false, 4},
        {kept, {Extension::kHttpFraming}, true, 4},
        {kept + "b", {Extension::kHttpFraming, Extension::kKeepAlive}, true, 4},
        {"HTTP/1.1 200 OK\r\nContent-Length: 0\r\nConnection: close\r\n\r\n",
         {Extension::kHttpFraming, Extension::kKeepAlive},
         true,
         4},
        {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n",
         {Extension::kHttpFraming, Extension::kKeepAlive},
         true,
         1},
    };
    for (const auto& each : cases) {
        std::atomic<std::size_t> connections = 0;
        const CScriptedPeer peer([&](CPeerConnection& device) {
            ++connections;
            while (device.Read(3) == "GET") {
                device.Send(each.answer);
            }
        });
        EventDeviceRecord record(sessions_, 1, nullptr, "", "", each.extensions);
        for (int pulls = 0; pulls < 4; ++pulls) {
            record.EndPull();
            record.OnNoConnection();  // so that the answer shows
            record.BeginPull({"127.0.0.1", peer.Port(), "GET", each.trusted});
            WaitUntil([&] { return record.Answers(); });
        }
        EXPECT_EQ(connections, each.connections) << &each - cases;
    }
}

TEST_F(PullConnection, OneThatClosesWithoutAReplyIsReplacedAtOnce) {
    std::atomic<int> connections = 0;
    const CScriptedPeer peer([&](CPeerConnection& device) {
        const bool isFirst = ++connections == 1;
        for (int i = 0; device.Read(3) == "GET" && !(isFirst && i > 0); ++i) {
            device.Send("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
        }
    });
    EventDeviceRecord record(sessions_, 1, nullptr, "", "",
                             {Extension::kHttpFraming, Extension::kKeepAlive});
    const struct {
        bool answered;
        int connections;
    } pulls[] = {{true, 1}, {false, 1}, {true, 2}, {true, 3}};
    for (const auto& each : pulls) {
        record.EndPull();
        record.OnNoConnection();
        record.BeginPull({"127.0.0.1", peer.Port(), "GET", true});
        WaitUntil([&] { return each.answered ? record.Answers() : record.TakePull(TickCount()); });
        EXPECT_EQ(connections, each.connections) << "what has failed once is not tried again";
    }
}

TEST_F(PullConnection, WhatCannotBecomeAReplyIsReadNoFurther) {
    const std::pair<std::string, int> cases[] = {
        // what is sent over and over, and how many blocks of at most 16 KiB it takes
        {"HTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\n", 1},
        {"HTTP/1.1 200 OK\r\nContent-Length: 10000000000\r\n\r\n", 1},
        {std::string(1024, 'x'), 1025},
        {"HTTP/1.1 100 Continue\r\n\r\n" + std::string(1000, 'x'), 1025},
        {"HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n", 2},  // one reply, and what is behind
    };
    for (const auto& each : cases) {
        const std::string& text = each.first;
        std::atomic<bool> sends = true;
        CScriptedPeer peer([&](CPeerConnection& connection) {
            while (sends && connection.Send(text)) {
                std::this_thread::yield();
            }
        });
        const int before = sink_.blocks;
        Pull(peer.Port());
        int seen = -1;
        WaitUntil([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            return std::exchange(seen, sink_.blocks.load()) == seen && seen > before;
        });
        EXPECT_LE(seen - before, each.second) << text.substr(0, 40);
        sends = false;
        connection_.Close();
    }
    EXPECT_EQ(sink_.answers, 1);
}

}  // namespace
}  // namespace onvif_client
