#include <algorithm>
#include <climits>
#include <utility>

#include "platform/ConnectionWatch.h"
#include "platform/KeptTable.h"
#include "platform/LastError.h"
#include "platform/OrNothing.h"
#include "platform/SocketLayer.h"
#include "platform/Wirelink.h"

namespace onvif_client {

namespace {

constexpr int kSendWaitMs = 100;
constexpr std::uint32_t kWirelinkBroken = 0x20000001;

/// What an int can count.
std::size_t Bounded(std::uint32_t length) {
    return std::min<std::size_t>(length, INT_MAX);
}

/// The watch of a connection, made when there is none; null when none is to be had.
std::shared_ptr<CConnectionWatch> Watch(std::uint32_t handle) {
    CConnectionTable& connections = CConnectionTable::Instance();
    auto connection = connections.Find(handle);
    auto watch = connections.FindWatch(handle);
    if (connection == nullptr || watch != nullptr) {
        return watch;
    }
    watch = CConnectionWatch::Make(std::move(connection), handle);
    // Another thread may have been faster.
    return watch != nullptr && connections.AddWatch(handle, watch) ? watch
                                                                   : connections.FindWatch(handle);
}

}  // namespace

std::uint32_t WIRELINK_AddConnect(std::uint32_t, const char* ip, unsigned short port) {
    const auto address = Ipv4Address(ip, port);
    const CSocketLayer::CVisit visit = CSocketLayer::Instance().Enter();
    lastError = 0;
    if (!visit || !address) {
        return 0;
    }
    CDescriptor descriptor = MakeTcpSocketForUse();
    if (!descriptor) {
        lastError = kWirelinkNoSocket;
        return 0;
    }
    return OrNothing([&] {
        auto connection =
            std::make_shared<CConnection>(std::move(descriptor), ConnectState::kConnecting);
        if (StartConnecting(connection->Descriptor(), *address) > ConnectState::kEstablished) {
            connection->Break();
        }
        return CConnectionTable::Instance().Add(std::move(connection));
    });
}

bool WIRELINK_PopConnectResult(std::uint32_t handle, int& result, std::uint32_t) {
    result = 0;
    const auto connection = CConnectionTable::Instance().Find(handle);
    if (connection == nullptr) {
        return false;
    }
    const ConnectState state = connection->Poll();
    if (state != ConnectState::kConnecting) {
        result = state == ConnectState::kEstablished ? 1 : -1;
    }
    return true;
}

bool WIRELINK_DelConnect(std::uint32_t handle) {
    const auto connection = CConnectionTable::Instance().Find(handle);
    if (connection == nullptr) {
        return false;
    }
    connection->Break();
    return true;
}

int WIRELINK_Send_Immediate(std::uint32_t handle, const char* data, std::uint32_t length,
                            bool& error) {
    error = true;
    const auto connection = CConnectionTable::Instance().Find(handle);
    if (connection == nullptr || data == nullptr) {
        return 0;
    }
    connection->Poll();
    return static_cast<int>(connection->Send({data, Bounded(length)}, kSendWaitMs, error));
}

int WIRELINK_Recv_Immediate(std::uint32_t handle, char* buffer, std::uint32_t capacity,
                            bool* closed) {
    bool ended = true;
    std::size_t received = 0;
    const auto connection = CConnectionTable::Instance().Find(handle);
    if (connection != nullptr && buffer != nullptr) {
        connection->Poll();
        received = connection->Receive(buffer, Bounded(capacity), ended);
    }
    if (closed != nullptr) {
        *closed = ended;
    }
    return static_cast<int>(received);
}

bool WIRELINK_AwaitSendable(std::uint32_t handle, CSendableObserver* observer,
                            std::uint32_t timeoutMs) {
    const CSocketLayer::CVisit visit = CSocketLayer::Instance().Enter();
    const auto watch = visit && observer != nullptr ? Watch(handle) : nullptr;
    return watch != nullptr && watch->AwaitSendable(observer, timeoutMs);
}

bool WIRELINK_RegisterNode(std::uint32_t handle, CSocketDataObserver* observer,
                           CSocketDataObserver*, int, int) {
    const CSocketLayer::CVisit visit = CSocketLayer::Instance().Enter();
    const auto connection = CConnectionTable::Instance().Find(handle);
    if (!visit || observer == nullptr || connection == nullptr ||
        connection->Poll() != ConnectState::kEstablished) {
        return false;
    }
    const auto watch = Watch(handle);
    return watch != nullptr && watch->Register(observer);
}

bool WIRELINK_Start(std::uint32_t handle) {
    const auto watch = CConnectionTable::Instance().FindWatch(handle);
    return watch != nullptr && watch->Start();
}

bool WIRELINK_Stop(std::uint32_t handle) {
    const auto watch = CConnectionTable::Instance().FindWatch(handle);
    return watch != nullptr && watch->Stop();
}

bool WIRELINK_UnRegisterNode(std::uint32_t handle) {
    const auto watch = CConnectionTable::Instance().FindWatch(handle);
    return watch != nullptr && watch->UnRegister();
}

int WIRELINK_Send(std::uint32_t handle, const char* data, std::uint32_t length) {
    const auto connection = CConnectionTable::Instance().Find(handle);
    bool broken = true;
    std::size_t sent = 0;
    if (connection != nullptr && data != nullptr) {
        sent = connection->Send({data, Bounded(length)}, 0, broken);
    }
    if (sent > 0 || (length == 0 && !broken)) {
        return static_cast<int>(sent);
    }
    lastError = broken ? kWirelinkBroken : kWirelinkWouldBlock;
    return -1;
}

std::uint32_t WIRELINK_GetLastError() {
    return lastError;
}

bool WIRELINK_DestroyHNetCommunication(std::uint32_t handle) {
    const ConnectionEntry entry = CConnectionTable::Instance().Take(handle);
    EndConnection(entry);
    return entry.connection != nullptr;
}

}  // namespace onvif_client
