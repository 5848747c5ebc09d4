#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/Connections.h"
#include "platform/Listener.h"
#include "platform/Wirelink.h"
#include "support/Await.h"
#include "support/ClosedPort.h"
#include "support/RawClient.h"
#include "support/ScriptedPeer.h"
#include "support/System.h"

namespace onvif_client {
namespace {

using client_test::CClosedPort;
using client_test::CPeerConnection;
using client_test::CRawClient;
using client_test::CScriptedPeer;
using client_test::WaitUntil;

/// Keeps what it hears; may do something about it.
class CKeepingObserver final : public CSocketDataObserver {
 public:
    std::uint32_t OnData(std::uint32_t handle, const char* data, std::uint32_t length,
                         std::uint32_t* wanted) override {
        inside_ = ++running_ == 1;
        *wanted = 0;
        {
            const std::lock_guard guard(lock_);
            heard_.append(data, length);
        }
        if (onData) {
            onData(handle);
        }
        --running_;
        ++calls;
        return length;
    }
    std::string Heard() const {
        const std::lock_guard guard(lock_);
        return heard_;
    }
    bool AlwaysAlone() const { return inside_; }
    bool Runs() const { return running_ > 0; }

    std::function<void(std::uint32_t)> onData;
    std::atomic<int> calls = 0;

 private:
    mutable std::mutex lock_;
    std::string heard_;
    std::atomic<int> running_ = 0;
    std::atomic<bool> inside_ = true;
};

class Connections : public testing::Test {
 protected:
    Connections() { WIRELINK_Initial(1, 1, nullptr, 0); }
    ~Connections() override { WIRELINK_Quit(); }

    static std::uint32_t Connect(std::uint16_t port) {
        const std::uint32_t handle = WIRELINK_AddConnect(0, "127.0.0.1", port);
        int result = 0;
        WaitUntil([&] { return !WIRELINK_PopConnectResult(handle, result, 0) || result != 0; });
        EXPECT_EQ(result, 1);
        return handle;
    }
};

/// Keeps whether the last connection that it heard of takes bytes.
class CRoomObserver final : public CSendableObserver {
 public:
    void OnSendable(std::uint32_t, bool ready) override { heard_ = ready ? 1 : 0; }
    /// What it hears of the wait: 1 there is room, 0 there is none.
    int Await(std::uint32_t handle, std::uint32_t timeoutMs) {
        heard_ = -1;
        EXPECT_TRUE(WIRELINK_AwaitSendable(handle, this, timeoutMs));
        return Heard();
    }
    int Heard() const {
        WaitUntil([&] { return heard_ >= 0; });
        return heard_;
    }
    void Forget() { heard_ = -1; }

 private:
    std::atomic<int> heard_ = -1;
};

TEST_F(Connections, AFullSystemIsToldFromABrokenConnection) {
    constexpr std::uint32_t kLongMs = 60000;
    std::atomic<bool> reads = false;
    CScriptedPeer peer([&](CPeerConnection& connection) {
        WaitUntil([&] { return reads.load(); });
        connection.WaitForClose();
    });
    const std::string block(1 << 20, 'x');
    CRoomObserver room;
    const std::uint32_t handle = WIRELINK_AddConnect(0, "127.0.0.1", peer.Port());
    EXPECT_EQ(room.Await(handle, kLongMs), 1);
    while (WIRELINK_Send(handle, block.data(), static_cast<std::uint32_t>(block.size())) > 0) {
    }
    EXPECT_EQ(WIRELINK_GetLastError(), kWirelinkWouldBlock);
    EXPECT_EQ(room.Await(handle, 30), 0);
    bool broken = true;
    const auto began = std::chrono::steady_clock::now();
    while (WIRELINK_Send_Immediate(handle, "x", 1, broken) > 0) {
    }
    EXPECT_GE(std::chrono::steady_clock::now() - began, std::chrono::milliseconds(100));
    EXPECT_FALSE(broken) << "it waits for room, in vain";
    room.Forget();
    EXPECT_TRUE(WIRELINK_AwaitSendable(handle, &room, kLongMs));
    EXPECT_FALSE(WIRELINK_AwaitSendable(handle, &room, kLongMs)) << "one wait at a time";
    reads = true;
    EXPECT_EQ(room.Heard(), 1);
    EXPECT_TRUE(WIRELINK_DelConnect(handle));
    EXPECT_EQ(room.Await(handle, kLongMs), 0);
    EXPECT_EQ(WIRELINK_Send(handle, "x", 1), -1);
    EXPECT_NE(WIRELINK_GetLastError(), kWirelinkWouldBlock);
    EXPECT_EQ(WIRELINK_Send_Immediate(handle, "x", 1, broken), 0);
    EXPECT_TRUE(broken);
}

TEST_F(Connections, DeadHandlesFailQuietly) {
    CScriptedPeer peer([](CPeerConnection& connection) { connection.WaitForClose(); });
    const std::uint32_t dead = Connect(peer.Port());
    EXPECT_TRUE(WIRELINK_DestroyHNetCommunication(dead));
    EXPECT_GT(Connect(peer.Port()), dead);
    CKeepingObserver observer;
    CRoomObserver room;
    for (const std::uint32_t handle : {dead, 0U, 4000000000U}) {
        int result = 7;
        bool flag = false;
        char byte = 0;
        EXPECT_FALSE(WIRELINK_PopConnectResult(handle, result, 0));
        EXPECT_EQ(result, 0);
        EXPECT_FALSE(WIRELINK_DelConnect(handle));
        EXPECT_EQ(WIRELINK_Send_Immediate(handle, "x", 1, flag), 0);
        EXPECT_TRUE(flag);
        EXPECT_EQ(WIRELINK_Recv_Immediate(handle, &byte, 1, nullptr), 0);
        EXPECT_FALSE(WIRELINK_RegisterNode(handle, &observer, &observer, 1, 1));
        EXPECT_FALSE(WIRELINK_AwaitSendable(handle, &room, 0));
        EXPECT_FALSE(WIRELINK_Start(handle));
        EXPECT_FALSE(WIRELINK_Stop(handle));
        EXPECT_FALSE(WIRELINK_UnRegisterNode(handle));
        EXPECT_EQ(WIRELINK_Send(handle, "x", 1), -1);
        EXPECT_FALSE(WIRELINK_DestroyHNetCommunication(handle));
    }
    EXPECT_EQ(WIRELINK_AddConnect(0, "nonsense", 80), 0U);
}

TEST_F(Connections, DataComesInOrderToOneCallbackAtATime) {
    std::string all;
    for (int i = 0; i < 20000; ++i) {
        all += std::to_string(i) + " ";
    }
    CScriptedPeer peer([&](CPeerConnection& connection) {
        for (std::size_t at = 0; at < all.size(); at += 1000) {
            connection.Send(std::string_view(all).substr(at, 1000));
        }
        connection.WaitForClose();
    });
    std::vector<CKeepingObserver> observers(8);
    std::vector<std::uint32_t> handles;
    for (CKeepingObserver& observer : observers) {
        handles.push_back(Connect(peer.Port()));
        EXPECT_TRUE(WIRELINK_RegisterNode(handles.back(), &observer, &observer, 1, 1));
        EXPECT_FALSE(WIRELINK_RegisterNode(handles.back(), &observer, &observer, 1, 1));
        EXPECT_TRUE(WIRELINK_Start(handles.back()));
    }
    for (std::size_t i = 0; i < observers.size(); ++i) {
        WaitUntil([&] { return observers[i].Heard().size() >= all.size(); });
        EXPECT_TRUE(observers[i].Heard() == all);
        EXPECT_TRUE(observers[i].AlwaysAlone());
        EXPECT_TRUE(WIRELINK_Stop(handles[i]));
        EXPECT_TRUE(WIRELINK_DestroyHNetCommunication(handles[i]));
    }
}

TEST_F(Connections, NoCallbackFollowsItsUnregistration) {
    CScriptedPeer peer([](CPeerConnection& connection) {
        while (connection.Send("x")) {
        }
    });
    for (int round = 0; round < 20; ++round) {
        auto observer = std::make_unique<CKeepingObserver>();
        const bool inside = round % 2 == 0;
        if (inside) {
            observer->onData = [](std::uint32_t handle) {
                EXPECT_TRUE(WIRELINK_UnRegisterNode(handle));
            };
        }
        const std::uint32_t handle = Connect(peer.Port());
        WIRELINK_RegisterNode(handle, observer.get(), observer.get(), 1, 1);
        WIRELINK_Start(handle);
        WaitUntil([&] { return observer->calls > 0; });
        EXPECT_EQ(WIRELINK_UnRegisterNode(handle), !inside);
        const int calls = observer->calls;
        WIRELINK_DestroyHNetCommunication(handle);
        EXPECT_EQ(observer->calls, calls);
        observer.reset();  // a callback from here on would be found by the sanitizers
    }
}

TEST_F(Connections, UnregisteringWaitsForTheCallbackWhileTheLayerStopsToo) {
    CScriptedPeer peer([](CPeerConnection& connection) {
        connection.Send("x");
        connection.WaitForClose();
    });
    std::atomic<bool> entered = false;
    std::atomic<bool> unregistering = false;
    std::atomic<bool> ended = false;
    CKeepingObserver observer;
    observer.onData = [&](std::uint32_t) {
        entered = true;
        WaitUntil([&] { return unregistering.load(); });
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        ended = true;
    };
    const std::uint32_t handle = Connect(peer.Port());
    WIRELINK_RegisterNode(handle, &observer, &observer, 1, 1);
    WIRELINK_Start(handle);
    WaitUntil([&] { return entered.load(); });
    std::jthread quitting(WIRELINK_Quit);
    int result = 1;
    WaitUntil([&] { return !WIRELINK_PopConnectResult(handle, result, 0) || result != 1; });
    unregistering = true;
    WIRELINK_UnRegisterNode(handle);
    EXPECT_TRUE(ended);
}

TEST_F(Connections, WhatThePeerHasClosedTakesNoProcessorTime) {
    CScriptedPeer peer([](CPeerConnection& connection) { connection.Send("x"); });
    CKeepingObserver observer;
    const std::uint32_t handles[] = {Connect(peer.Port()), Connect(peer.Port())};
    for (const std::uint32_t handle : handles) {
        EXPECT_TRUE(WIRELINK_RegisterNode(handle, &observer, &observer, 1, 1));
        EXPECT_TRUE(WIRELINK_Start(handle));
    }
    WaitUntil([&] { return observer.calls == 2; });
    const auto before = client_test::ProcessorTime();
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    EXPECT_LT(client_test::ProcessorTime() - before, std::chrono::milliseconds(100));
    EXPECT_EQ(observer.calls, 2);
    for (const std::uint32_t handle : handles) {
        WIRELINK_DestroyHNetCommunication(handle);
    }
}

class CIdleListener final : public CListenSocketObserver {
 public:
    void OnAccept(std::uint32_t) override {
        ++calls;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        ++ended;
    }

    std::atomic<int> calls = 0;
    std::atomic<int> ended = 0;
};

/// Whoever is broken off comes back at once and says nothing.
class CReturningPosters final : public CListenSocketObserver {
 public:
    void OnAccept(std::uint32_t handle) override {
        bool closed = ++calls == 0;
        WaitUntil([&] {
            char byte = 0;
            return WIRELINK_Recv_Immediate(handle, &byte, 1, &closed) == 0 && closed;
        });
        second.emplace(port);
    }

    const std::uint16_t port = CClosedPort().Port();
    std::atomic<int> calls = 0;
    std::optional<CRawClient> second;
};

TEST_F(Connections, QuitWaitsForNoPosterThatComesMeanwhile) {
    CScriptedPeer peer([](CPeerConnection& connection) { connection.WaitForClose(); });
    for (int round = 0; round < 5; ++round) {
        WIRELINK_Initial(1, 1, nullptr, 0);
        CReturningPosters posters;
        EXPECT_TRUE(WIRELINK_StartListen(posters.port, &posters, 0, true));
        const CRawClient first(posters.port);
        WaitUntil([&] { return posters.calls > 0; });
        for (int i = 0; i < 100; ++i) {
            Connect(peer.Port());
        }
        WIRELINK_Quit();
        EXPECT_EQ(posters.calls, 1);
    }
}

TEST_F(Connections, ChildProcessesInheritNoSocket) {
    const std::size_t before = client_test::Held().inheritable;
    CIdleListener observer;
    const auto listener = CListener::Make("127.0.0.1", 0, &observer);
    Connect(listener->Port());
    WaitUntil([&] { return observer.calls > 0; });
    EXPECT_EQ(client_test::Held().inheritable, before);
    listener->Stop();
    EXPECT_EQ(observer.ended, 1) << "a stop waits for the callback";
}

TEST_F(Connections, TheEnvironmentChoosesWhereToListen) {
    constexpr const char* kVariable = "ONVIF_CLIENT_LISTEN_ADDRESS";
    CIdleListener observer;
    const std::pair<const char*, bool> cases[] = {
        {"127.0.0.1", true}, {"127.0.0.2", true},  {"192.0.2.1", false}, {"127.1", false},
        {"::1", false},      {"localhost", false}, {"", false}};
    for (const auto& [address, listens] : cases) {
        client_test::SetVariable(kVariable, address);
        EXPECT_EQ(WIRELINK_StartListen(0, &observer, 0, true), listens) << address;
        EXPECT_EQ(WIRELINK_StopListen(0), listens) << address;
    }
    client_test::SetVariable(kVariable, "127.0.0.1");
}

TEST_F(Connections, QuitMayComeFromACallbackOrFromManyThreads) {
    CScriptedPeer peer([](CPeerConnection& connection) {
        while (connection.Send("x")) {
        }
    });
    for (int round = 0; round < 10; ++round) {
        WIRELINK_Initial(1, 1, nullptr, 0);
        CKeepingObserver observer;
        observer.onData = [round](std::uint32_t) {
            if (round % 2 == 0) {
                WIRELINK_Quit();
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(3));
            if (round % 2 != 0) {
                WIRELINK_Initial(1, 1, nullptr, 0);  // while the others quit
            }
        };
        std::vector<std::uint32_t> handles;
        for (int i = 0; i < 4; ++i) {
            handles.push_back(Connect(peer.Port()));
            WIRELINK_RegisterNode(handles.back(), &observer, &observer, 1, 1);
        }
        for (const std::uint32_t handle : handles) {
            WIRELINK_Start(handle);
        }
        WaitUntil([&] { return !observer.Heard().empty(); });
        {
            std::jthread first(WIRELINK_Quit);
            std::jthread second(WIRELINK_Quit);
        }
        EXPECT_FALSE(observer.Runs());
        EXPECT_EQ(WIRELINK_AddConnect(0, "127.0.0.1", peer.Port()), 0U);
        EXPECT_FALSE(WIRELINK_DestroyHNetCommunication(handles.front()));
    }
}

}  // namespace
}  // namespace onvif_client
