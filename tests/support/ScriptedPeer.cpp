#include "support/ScriptedPeer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <utility>

namespace client_test {

std::string CPeerConnection::Read(std::size_t length) const {
    std::string bytes;
    char block[4096];
    while (bytes.size() < length) {
        const ssize_t received = recv(descriptor_, block, sizeof block, 0);
        if (received <= 0) {
            break;
        }
        bytes.append(block, static_cast<std::size_t>(received));
    }
    return bytes;
}

bool CPeerConnection::Send(std::string_view bytes) const {
    while (!bytes.empty()) {
        const ssize_t sent = send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

void CPeerConnection::WaitForClose() const {
    char block[4096];
    while (recv(descriptor_, block, sizeof block, 0) > 0) {
    }
}

CScriptedPeer::CScriptedPeer(Script script)
    : script_(std::move(script)), listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (bind(listener_, reinterpret_cast<sockaddr*>(&address), size) == 0 &&
        listen(listener_, 128) == 0 &&
        getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size) == 0) {
        port_ = ntohs(address.sin_port);
    }
    accepting_ = std::jthread([this] { Accept(); });
}

CScriptedPeer::~CScriptedPeer() {
    {
        const std::lock_guard guard(lock_);
        ended_ = true;
        shutdown(listener_, SHUT_RDWR);
        for (const int descriptor : open_) {
            shutdown(descriptor, SHUT_RDWR);
        }
    }
    accepting_.join();
    scripts_.clear();
    close(listener_);
}

void CScriptedPeer::Accept() {
    for (;;) {
        const int descriptor = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        const std::lock_guard guard(lock_);
        if (descriptor < 0 || ended_) {
            if (descriptor >= 0) {
                close(descriptor);
            }
            return;
        }
        open_.push_back(descriptor);
        scripts_.emplace_back([this, descriptor] {
            CPeerConnection connection(descriptor);
            script_(connection);
            const std::lock_guard finished(lock_);
            open_.remove(descriptor);
            close(descriptor);
        });
    }
}

}  // namespace client_test
