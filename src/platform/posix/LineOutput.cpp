#include "platform/LineOutput.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <ctime>
#include <string>

namespace onvif_client {

namespace {

static_assert(kLongestLine <= PIPE_BUF);

/// Keeps SIGPIPE from this thread while it writes, and takes away the one that its own write
/// raised.
class CPipeSignalGuard {
 public:
    CPipeSignalGuard() {
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        foreign_ = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
    }
    ~CPipeSignalGuard() {
        const timespec atOnce = {};
        while (raised_ && !foreign_ && sigtimedwait(&pipe_, nullptr, &atOnce) < 0 &&
               errno == EINTR) {
        }
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    CPipeSignalGuard(const CPipeSignalGuard&) = delete;
    CPipeSignalGuard& operator=(const CPipeSignalGuard&) = delete;

    void Raised() { raised_ = true; }

 private:
    sigset_t pipe_;
    sigset_t before_;
    bool foreign_;
    bool raised_ = false;
};

std::size_t Taken(ssize_t written) {
    return written > 0 ? static_cast<std::size_t>(written) : 0;
}

int Number(SystemHandle handle) {
    return static_cast<int>(handle);
}

std::size_t Write(int descriptor, std::string_view bytes) {
    CPipeSignalGuard guard;
    ssize_t written = 0;
    do {
        written = write(descriptor, bytes.data(), bytes.size());
    } while (written < 0 && errno == EINTR);
    if (written < 0 && errno == EPIPE) {
        guard.Raised();
    }
    return Taken(written);
}

/// Where it cannot be opened anew (a pipe of another user): a pipe that polls as writable has room
/// for PIPE_BUF bytes, unless somebody else is quicker.
std::size_t WriteIfReady(int descriptor, std::string_view bytes) {
    pollfd ready = {descriptor, POLLOUT, 0};
    return poll(&ready, 1, 0) == 1 && ready.revents == POLLOUT ? Write(descriptor, bytes) : 0;
}

/// By an open file of our own, which may be non-blocking: that of the descriptor belongs to the
/// application and to all who have inherited it.
std::size_t WriteByOwnFile(int descriptor, std::string_view bytes) {
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    const int own = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (own < 0) {
        return errno == ENXIO ? 0 : WriteIfReady(descriptor, bytes);  // a pipe without a reader
    }
    // Another thread may have put something else there since.
    const bool same = OpenFileOf(own) == OpenFileOf(descriptor);
    const std::size_t taken = same ? Write(own, bytes) : 0;
    close(own);
    return taken;
}

/// The far side of a pseudo-terminal becomes another one when it is opened anew.
bool IsTerminalToOpen(int descriptor) {
    unsigned int number = 0;
    return isatty(descriptor) != 0 && ioctl(descriptor, TIOCGPTN, &number) != 0;
}

}  // namespace

SystemHandle StandardOutput() {
    return STDOUT_FILENO;
}

SystemHandle StandardError() {
    return STDERR_FILENO;
}

OpenFileId OpenFileOf(SystemHandle handle) {
    struct stat file = {};
    if (fstat(Number(handle), &file) != 0) {
        return {};
    }
    return {file.st_dev, file.st_ino};
}

bool IsSocket(SystemHandle handle) {
    struct stat file = {};
    return fstat(Number(handle), &file) == 0 && S_ISSOCK(file.st_mode);
}

bool ShowsGbk(SystemHandle) {
    return false;
}

std::size_t WriteAtOnce(SystemHandle handle, std::string_view bytes) {
    const int descriptor = Number(handle);
    struct stat file = {};
    const int flags = fcntl(descriptor, F_GETFL);
    if (flags < 0 || fstat(descriptor, &file) != 0) {
        return 0;
    }
    if (S_ISSOCK(file.st_mode)) {
        return Taken(send(descriptor, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL));
    }
    if (S_ISREG(file.st_mode) || (flags & O_NONBLOCK) != 0) {
        return Write(descriptor, bytes);
    }
    if (S_ISFIFO(file.st_mode) || IsTerminalToOpen(descriptor)) {
        return WriteByOwnFile(descriptor, bytes);
    }
    return WriteIfReady(descriptor, bytes);
}

}  // namespace onvif_client
