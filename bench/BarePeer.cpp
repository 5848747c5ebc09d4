#include "BarePeer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

[[noreturn]] void Answer(int listener, const std::string& reply) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    std::vector<char> request(65536);
    for (;;) {
        const int connection = accept(listener, nullptr, nullptr);
        if (connection >= 0 && recv(connection, request.data(), request.size(), 0) > 0) {
            send(connection, reply.data(), reply.size(), MSG_NOSIGNAL);
        }
        close(connection);
    }
}

}  // namespace

CBarePeer::CBarePeer(std::size_t replySize) {
    constexpr int kBacklog = 16;
    constexpr std::string_view kEnd = "</s:Envelope>";
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const endpoint = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener, endpoint, size) == 0 && listen(listener, kBacklog) == 0 &&
        getsockname(listener, endpoint, &size) == 0) {
        port_ = ntohs(address.sin_port);
        process_ = fork();
    }
    if (process_ == 0) {
        Answer(listener, std::string(replySize - kEnd.size(), ' ').append(kEnd));
    }
    close(listener);
    if (process_ < 0) {
        throw std::runtime_error("the bare peer cannot be started");
    }
}

CBarePeer::~CBarePeer() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
}
