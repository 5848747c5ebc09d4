#include "system/SocketWait.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>

#include "ExitCode.h"

namespace onvifctl {

CSocketWait::CSocketWait() {
    if (pipe2(wake_, O_CLOEXEC | O_NONBLOCK) != 0) {
        throw CFailure(ExitCode::kUsage, "no more files can be opened");
    }
}

CSocketWait::~CSocketWait() {
    close(wake_[0]);
    close(wake_[1]);
}

CSocketWait::Ready CSocketWait::Wait(int socket, bool forWriting,
                                     std::chrono::milliseconds patience) const {
    const auto events = static_cast<short>(forWriting ? POLLIN | POLLOUT : POLLIN);
    std::array<pollfd, 2> awaited = {pollfd{wake_[0], POLLIN, 0}, pollfd{socket, events, 0}};
    if (poll(awaited.data(), awaited.size(), static_cast<int>(patience.count())) <= 0) {
        return {false, false};
    }
    std::array<char, 64> bytes = {};
    while (read(wake_[0], bytes.data(), bytes.size()) > 0) {
    }
    const int seen = awaited[1].revents;
    return {(seen & (POLLIN | POLLERR | POLLHUP)) != 0, (seen & POLLOUT) != 0};
}

void CSocketWait::Wake() const {
    [[maybe_unused]] const ssize_t written = write(wake_[1], "", 1);
}

}  // namespace onvifctl
