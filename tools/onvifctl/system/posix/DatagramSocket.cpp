#include "system/DatagramSocket.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <memory>

#include "ExitCode.h"

namespace onvifctl {

namespace {

constexpr std::size_t kMostBytes = 65536;
constexpr int kBuffered = 4 * 1024 * 1024;  // many devices answer at the same time

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
void Set(int socket, int level, int option, const T& value) {
    setsockopt(socket, level, option, &value, sizeof value);
}

}  // namespace

std::vector<NetworkInterface> NetworkInterfaces() {
    constexpr unsigned int kNeeded = IFF_UP | IFF_MULTICAST;
    ifaddrs* first = nullptr;
    if (getifaddrs(&first) != 0) {
        return {};
    }
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owned(first, &freeifaddrs);
    std::vector<NetworkInterface> interfaces;
    for (const ifaddrs* each = first; each != nullptr; each = each->ifa_next) {
        if (each->ifa_addr != nullptr && each->ifa_addr->sa_family == AF_INET) {
            interfaces.push_back(
                {each->ifa_name, Dotted(*each->ifa_addr), (each->ifa_flags & kNeeded) == kNeeded});
        }
    }
    return interfaces;
}

CDatagramSocket::CDatagramSocket(const std::string& from)
    : socket_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    const int number = static_cast<int>(socket_);
    const sockaddr_in local = Endpoint(from.empty() ? "0.0.0.0" : from, 0);
    Set(number, SOL_SOCKET, SO_RCVBUF, kBuffered);
    Set(number, IPPROTO_IP, IP_MULTICAST_TTL, 1);
    Set(number, IPPROTO_IP, IP_MULTICAST_IF, local.sin_addr);
    if (bind(number, reinterpret_cast<const sockaddr*>(&local), sizeof local) != 0) {
        close(number);
        throw CFailure(ExitCode::kUnreachable, "no datagrams can be sent from " + from);
    }
}

CDatagramSocket::~CDatagramSocket() {
    if (socket_ != kNone) {
        close(static_cast<int>(socket_));
    }
}

bool CDatagramSocket::Send(const std::string& to, std::uint16_t port,
                           std::string_view bytes) const {
    const sockaddr_in peer = Endpoint(to, port);
    const ssize_t sent = sendto(static_cast<int>(socket_), bytes.data(), bytes.size(), 0,
                                reinterpret_cast<const sockaddr*>(&peer), sizeof peer);
    return sent == static_cast<ssize_t>(bytes.size());
}

std::vector<std::string> CDatagramSocket::Receive(const std::vector<CDatagramSocket>& sockets,
                                                  std::chrono::milliseconds patience) {
    std::vector<pollfd> polled;
    for (const CDatagramSocket& each : sockets) {
        polled.push_back({static_cast<int>(each.socket_), POLLIN, 0});
    }
    std::vector<std::string> datagrams;
    if (poll(polled.data(), polled.size(), static_cast<int>(patience.count())) <= 0) {
        return datagrams;
    }
    for (const pollfd& each : polled) {
        std::string bytes(each.revents == 0 ? 0 : kMostBytes, '\0');
        const ssize_t size = bytes.empty() ? -1 : recv(each.fd, bytes.data(), bytes.size(), 0);
        if (size >= 0) {
            bytes.resize(static_cast<std::size_t>(size));
            datagrams.push_back(std::move(bytes));
        }
    }
    return datagrams;
}

}  // namespace onvifctl
