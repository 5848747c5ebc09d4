#include "platform/Sockets.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <climits>
#include <utility>

namespace onvif_client {

namespace {

SOCKET Number(SystemHandle descriptor) {
    return static_cast<SOCKET>(descriptor);
}

sockaddr_in SystemAddress(const Ipv4Endpoint& endpoint) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(endpoint.port);
    address.sin_addr.s_addr = endpoint.address;
    return address;
}

bool WouldHaveWaited() {
    return WSAGetLastError() == WSAEWOULDBLOCK;
}

ConnectState FailureOf(int error) {
    return error == WSAECONNREFUSED ? ConnectState::kRefused : ConnectState::kFailed;
}

/// What the functions of the system count bytes in.
int Bounded(std::size_t size) {
    return static_cast<int>(std::min<std::size_t>(size, INT_MAX));
}

Moved Outcome(int bytes, std::size_t& moved) {
    moved = static_cast<std::size_t>(std::max(bytes, 0));
    if (bytes > 0) {
        return Moved::kSome;
    }
    return bytes < 0 && WouldHaveWaited() ? Moved::kWouldWait : Moved::kEnded;
}

/// One that does not block and that child processes do not inherit.
CDescriptor MakeSocket(int type, int protocol) {
    CDescriptor made(static_cast<SystemHandle>(WSASocketW(
        AF_INET, type, protocol, nullptr, 0, WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT)));
    u_long nonBlocking = 1;
    if (made && ioctlsocket(Number(made.Get()), static_cast<long>(FIONBIO), &nonBlocking) != 0) {
        return CDescriptor(kNoHandle);
    }
    return made;
}

bool SetTrue(SystemHandle descriptor, int option) {
    const BOOL value = TRUE;
    return setsockopt(Number(descriptor), SOL_SOCKET, option, reinterpret_cast<const char*>(&value),
                      sizeof value) == 0;
}

bool Bind(SystemHandle descriptor, const Ipv4Endpoint& endpoint) {
    const sockaddr_in address = SystemAddress(endpoint);
    // Without it another program could listen on the same port and take what comes.
    return SetTrue(descriptor, SO_EXCLUSIVEADDRUSE) &&
           bind(Number(descriptor), reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
               0;
}

/// A datagram socket that is connected to itself: what it sends it can read.
CDescriptor MakeLoop() {
    CDescriptor loop = MakeSocket(SOCK_DGRAM, IPPROTO_UDP);
    const Ipv4Endpoint anywhere = {htonl(INADDR_LOOPBACK), 0};
    if (!loop || !Bind(loop.Get(), anywhere)) {
        return CDescriptor(kNoHandle);
    }
    const Ipv4Endpoint itself = {anywhere.address, LocalPort(loop.Get())};
    return StartConnecting(loop.Get(), itself) == ConnectState::kEstablished
               ? std::move(loop)
               : CDescriptor(kNoHandle);
}

}  // namespace

bool StartSockets() {
    WSADATA ignored;
    return WSAStartup(MAKEWORD(2, 2), &ignored) == 0;
}

void EndSockets() {
    WSACleanup();
}

std::optional<Ipv4Endpoint> Ipv4Address(const char* ip, std::uint16_t port) {
    in_addr address = {};
    if (ip == nullptr || inet_pton(AF_INET, ip, &address) != 1) {
        return std::nullopt;
    }
    return Ipv4Endpoint{address.s_addr, port};
}

CDescriptor MakeTcpSocket() {
    CDescriptor made = MakeSocket(SOCK_STREAM, IPPROTO_TCP);
    // Urgent bytes would count as a failure of the connection, again and again.
    return made && SetTrue(made.Get(), SO_OOBINLINE) ? std::move(made) : CDescriptor(kNoHandle);
}

ConnectState StartConnecting(SystemHandle descriptor, const Ipv4Endpoint& endpoint) {
    const sockaddr_in address = SystemAddress(endpoint);
    if (connect(Number(descriptor), reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
        0) {
        return ConnectState::kEstablished;
    }
    return WouldHaveWaited() ? ConnectState::kConnecting : FailureOf(WSAGetLastError());
}

ConnectState ConnectOutcome(SystemHandle descriptor) {
    int error = 0;
    int size = sizeof error;
    if (getsockopt(Number(descriptor), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error),
                   &size) != 0) {
        return ConnectState::kFailed;
    }
    return error == 0 ? ConnectState::kEstablished : FailureOf(error);
}

bool FailsWithoutBecomingWritable() {
    return true;
}

bool Listen(SystemHandle descriptor, const Ipv4Endpoint& endpoint) {
    return Bind(descriptor, endpoint) && listen(Number(descriptor), SOMAXCONN) == 0;
}

std::uint16_t LocalPort(SystemHandle descriptor) {
    sockaddr_in address = {};
    int size = sizeof address;
    const int got = getsockname(Number(descriptor), reinterpret_cast<sockaddr*>(&address), &size);
    return got == 0 ? ntohs(address.sin_port) : std::uint16_t{0};
}

CDescriptor AcceptTcp(SystemHandle listener, bool& again) {
    // It does not block either, as the listener does not.
    CDescriptor accepted(static_cast<SystemHandle>(accept(Number(listener), nullptr, nullptr)));
    again = !accepted && (WouldHaveWaited() || WSAGetLastError() == WSAECONNRESET);
    if (accepted) {
        SetHandleInformation(reinterpret_cast<HANDLE>(accepted.Get()), HANDLE_FLAG_INHERIT, 0);
    }
    return accepted;
}

bool WaitsEndWithoutClosing() {
    return false;
}

CDescriptor Duplicate(SystemHandle descriptor) {
    WSAPROTOCOL_INFOW shared;
    if (WSADuplicateSocketW(Number(descriptor), GetCurrentProcessId(), &shared) != 0) {
        return CDescriptor(kNoHandle);
    }
    return CDescriptor(static_cast<SystemHandle>(
        WSASocketW(FROM_PROTOCOL_INFO, FROM_PROTOCOL_INFO, FROM_PROTOCOL_INFO, &shared, 0,
                   WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT)));
}

Moved SendNow(SystemHandle descriptor, std::string_view data, std::size_t& sent) {
    if (data.empty()) {
        sent = 0;
        return Moved::kSome;
    }
    return Outcome(send(Number(descriptor), data.data(), Bounded(data.size()), 0), sent);
}

Moved ReceiveNow(SystemHandle descriptor, char* buffer, std::size_t capacity,
                 std::size_t& received) {
    return Outcome(recv(Number(descriptor), buffer, Bounded(capacity), 0), received);
}

void AcknowledgeAtOnce(SystemHandle descriptor) {
    constexpr DWORD kAckFrequency = _WSAIOW(IOC_VENDOR, 23);  // SIO_TCP_SET_ACK_FREQUENCY
    int everySegment = 1;
    DWORD ignored = 0;
    WSAIoctl(Number(descriptor), kAckFrequency, &everySegment, sizeof everySegment, nullptr, 0,
             &ignored, nullptr, nullptr);
}

void ShutDown(SystemHandle descriptor) {
    shutdown(Number(descriptor), SD_BOTH);
}

CWakeUp::CWakeUp() : descriptor_(MakeLoop()) {}

void CWakeUp::Set() const {
    const char byte = 0;
    send(Number(descriptor_.Get()), &byte, 1, 0);
}

Waited WaitFor(SystemHandle descriptor, Readiness what, int waitMs, const CWakeUp* wakeUp) {
    // select, as WSAPoll tells of no connection that failed before Windows 10 2004.
    constexpr int kMillisecondsInASecond = 1000;
    fd_set readable = {};
    fd_set writable = {};
    fd_set failed = {};
    if (what == Readiness::kReadable) {
        FD_SET(Number(descriptor), &readable);
    } else {
        FD_SET(Number(descriptor), &writable);
        FD_SET(Number(descriptor), &failed);  // where a connection that was not made is told
    }
    if (wakeUp != nullptr) {
        FD_SET(Number(wakeUp->descriptor_.Get()), &readable);
    }
    timeval time = {waitMs / kMillisecondsInASecond,
                    waitMs % kMillisecondsInASecond * kMillisecondsInASecond};
    const int ready = select(0, &readable, &writable, &failed, waitMs < 0 ? nullptr : &time);
    if (ready > 0) {
        const bool woken =
            wakeUp != nullptr && FD_ISSET(Number(wakeUp->descriptor_.Get()), &readable) != 0;
        return woken ? Waited::kWoken : Waited::kReady;
    }
    return ready < 0 ? Waited::kFailed : Waited::kInVain;
}

}  // namespace onvif_client
