#include "system/DatagramSocket.h"

#include <winsock2.h>
#include <ws2tcpip.h>
// Needs the above.
#include <iphlpapi.h>

#include "ExitCode.h"
#include "system/windows/Utf16.h"

namespace onvifctl {

namespace {

constexpr std::size_t kMostBytes = 65536;
constexpr int kBuffered = 4 * 1024 * 1024;  // many devices answer at the same time

SOCKET Number(std::intptr_t socket) {
    return static_cast<SOCKET>(socket);
}

SOCKET MakeSocket() {
    WSADATA details = {};
    static const int started = WSAStartup(MAKEWORD(2, 2), &details);
    const SOCKET made = started != 0 ? INVALID_SOCKET
                                     : WSASocketW(AF_INET, SOCK_DGRAM, IPPROTO_UDP, nullptr, 0,
                                                  WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT);
    u_long on = 1;
    ioctlsocket(made, static_cast<long>(FIONBIO), &on);
    return made;
}

sockaddr_in Endpoint(const std::string& dotted, std::uint16_t port) {
    sockaddr_in endpoint = {};
    endpoint.sin_family = AF_INET;
    endpoint.sin_port = htons(port);
    inet_pton(AF_INET, dotted.c_str(), &endpoint.sin_addr);
    return endpoint;
}

std::string Dotted(const sockaddr& address) {
    char dotted[INET_ADDRSTRLEN] = {};
    const auto& ipv4 = reinterpret_cast<const sockaddr_in&>(address);
    inet_ntop(AF_INET, &ipv4.sin_addr, dotted, sizeof dotted);
    return dotted;
}

template <typename T>
void Set(SOCKET socket, int level, int option, const T& value) {
    setsockopt(socket, level, option, reinterpret_cast<const char*>(&value), sizeof value);
}

}  // namespace

std::vector<NetworkInterface> NetworkInterfaces() {
    constexpr ULONG kUnneeded =
        GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST | GAA_FLAG_SKIP_DNS_SERVER;
    ULONG size = 64 * 1024;
    std::vector<IP_ADAPTER_ADDRESSES> room;
    ULONG result = ERROR_BUFFER_OVERFLOW;
    while (result == ERROR_BUFFER_OVERFLOW) {
        room.resize(size / sizeof room[0] + 1);
        result = GetAdaptersAddresses(AF_INET, kUnneeded, nullptr, room.data(), &size);
    }
    std::vector<NetworkInterface> interfaces;
    for (const auto* each = result == NO_ERROR ? room.data() : nullptr; each != nullptr;
         each = each->Next) {
        const bool multicasts =
            each->OperStatus == IfOperStatusUp && (each->Flags & IP_ADAPTER_NO_MULTICAST) == 0;
        for (const auto* one = each->FirstUnicastAddress; one != nullptr; one = one->Next) {
            interfaces.push_back(
                {ToUtf8(each->FriendlyName), Dotted(*one->Address.lpSockaddr), multicasts});
        }
    }
    return interfaces;
}

CDatagramSocket::CDatagramSocket(const std::string& from)
    : socket_(static_cast<std::intptr_t>(MakeSocket())) {
    const sockaddr_in local = Endpoint(from.empty() ? "0.0.0.0" : from, 0);
    Set(Number(socket_), SOL_SOCKET, SO_RCVBUF, kBuffered);
    Set(Number(socket_), IPPROTO_IP, IP_MULTICAST_TTL, DWORD{1});
    Set(Number(socket_), IPPROTO_IP, IP_MULTICAST_IF, local.sin_addr);
    if (bind(Number(socket_), reinterpret_cast<const sockaddr*>(&local), sizeof local) != 0) {
        closesocket(Number(socket_));
        throw CFailure(ExitCode::kUnreachable, "no datagrams can be sent from " + from);
    }
}

CDatagramSocket::~CDatagramSocket() {
    if (socket_ != kNone) {
        closesocket(Number(socket_));
    }
}

bool CDatagramSocket::Send(const std::string& to, std::uint16_t port,
                           std::string_view bytes) const {
    const sockaddr_in peer = Endpoint(to, port);
    const int size = static_cast<int>(bytes.size());
    return sendto(Number(socket_), bytes.data(), size, 0, reinterpret_cast<const sockaddr*>(&peer),
                  sizeof peer) == size;
}

std::vector<std::string> CDatagramSocket::Receive(const std::vector<CDatagramSocket>& sockets,
                                                  std::chrono::milliseconds patience) {
    std::vector<WSAPOLLFD> polled;
    for (const CDatagramSocket& each : sockets) {
        polled.push_back({Number(each.socket_), POLLIN, 0});
    }
    std::vector<std::string> datagrams;
    if (WSAPoll(polled.data(), static_cast<ULONG>(polled.size()),
                static_cast<int>(patience.count())) <= 0) {
        return datagrams;
    }
    for (const WSAPOLLFD& each : polled) {
        std::string bytes(each.revents == 0 ? 0 : kMostBytes, '\0');
        // Fails also where one that was sent found nobody.
        const int size =
            bytes.empty() ? -1 : recv(each.fd, bytes.data(), static_cast<int>(bytes.size()), 0);
        if (size >= 0) {
            bytes.resize(static_cast<std::size_t>(size));
            datagrams.push_back(std::move(bytes));
        }
    }
    return datagrams;
}

}  // namespace onvifctl
