#include "ScriptedSockets.h"

#include <algorithm>

#include "platform/Wirelink.h"

namespace onvif_client {

namespace {

struct Peer {
    std::string bytes;
    std::size_t pieceSize = 1;
    std::size_t given = 0;
    std::string sent;
};

Peer peer;

}  // namespace

void fuzz::SetPeer(std::string_view bytes, std::size_t pieceSize) {
    peer = {std::string(bytes), std::max<std::size_t>(pieceSize, 1), 0, {}};
}

const std::string& fuzz::SentToPeer() {
    return peer.sent;
}

std::uint32_t WIRELINK_AddConnect(std::uint32_t, const char*, unsigned short) {
    peer.given = 0;
    return 1;
}

bool WIRELINK_PopConnectResult(std::uint32_t, int& result, std::uint32_t) {
    result = 1;
    return true;
}

int WIRELINK_Send_Immediate(std::uint32_t, const char* data, std::uint32_t length, bool& error) {
    error = false;
    peer.sent.append(data, length);
    return static_cast<int>(length);
}

int WIRELINK_Recv_Immediate(std::uint32_t, char* buffer, std::uint32_t capacity, bool* closed) {
    const std::size_t wanted = std::min<std::size_t>(capacity, peer.pieceSize);
    const std::size_t received = peer.bytes.copy(buffer, wanted, peer.given);
    peer.given += received;
    if (closed != nullptr) {
        *closed = received == 0;
    }
    return static_cast<int>(received);
}

bool WIRELINK_DelConnect(std::uint32_t) {
    return true;
}
bool WIRELINK_DestroyHNetCommunication(std::uint32_t) {
    return true;
}
bool WIRELINK_RegisterNode(std::uint32_t, CSocketDataObserver*, CSocketDataObserver*, int, int) {
    return true;
}
bool WIRELINK_AwaitSendable(std::uint32_t, CSendableObserver*, std::uint32_t) {
    return true;
}
bool WIRELINK_Start(std::uint32_t) {
    return true;
}
bool WIRELINK_Stop(std::uint32_t) {
    return true;
}
bool WIRELINK_UnRegisterNode(std::uint32_t) {
    return true;
}
int WIRELINK_Send(std::uint32_t, const char*, std::uint32_t length) {
    return static_cast<int>(length);
}
std::uint32_t WIRELINK_GetLastError() {
    return 0;
}

}  // namespace onvif_client
