#include "support/RawClient.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace client_test {

namespace {

bool Connect(int descriptor, std::uint16_t port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const timeval patience = {60, 0};
    const int soon = 1;
    setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &soon, sizeof soon);
    return connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
}

}  // namespace

CRawClient::CRawClient(std::uint16_t port)
    : descriptor_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)),
      connection_(descriptor_),
      connected_(Connect(descriptor_, port)) {}

CRawClient::~CRawClient() {
    close(descriptor_);
}

void CRawClient::EndSending() const {
    shutdown(descriptor_, SHUT_WR);
}

std::string CRawClient::ReadToEnd() const {
    std::string text;
    char block[512];
    ssize_t received = 0;
    while ((received = recv(descriptor_, block, sizeof block, 0)) > 0) {
        text.append(block, static_cast<std::size_t>(received));
    }
    const bool stillOpen = received < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
    return stillOpen ? text + "(open)" : text;
}

}  // namespace client_test
