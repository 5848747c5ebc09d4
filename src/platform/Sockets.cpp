#include "platform/Sockets.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace onvif_client {

CDescriptor::~CDescriptor() {
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
}

std::optional<sockaddr_in> Ipv4Address(const char* ip, std::uint16_t port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    if (ip == nullptr || inet_pton(AF_INET, ip, &address.sin_addr) != 1) {
        return std::nullopt;
    }
    return address;
}

CDescriptor MakeTcpSocket() {
    return CDescriptor(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

ConnectState StartConnecting(int descriptor, const sockaddr_in& address) {
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
        return ConnectState::kEstablished;
    }
    return errno == EINPROGRESS ? ConnectState::kConnecting : ConnectState::kFailed;
}

ConnectState ConnectOutcome(int descriptor) {
    int error = 0;
    socklen_t size = sizeof error;
    const bool stands =
        getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
    return stands ? ConnectState::kEstablished : ConnectState::kFailed;
}

bool WouldHaveWaited() {
    return errno == EAGAIN || errno == EWOULDBLOCK;
}

}  // namespace onvif_client
