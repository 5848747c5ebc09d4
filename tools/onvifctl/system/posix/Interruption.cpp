#include "system/Interruption.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "ExitCode.h"

namespace onvifctl {

namespace {

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

// A handler can reach nothing but globals; a pipe lets it wake the wait on any thread.
int wake[2] = {-1, -1};

void Remember(int signal) {
    const int saved = errno;
    const auto byte = static_cast<unsigned char>(signal);
    [[maybe_unused]] const ssize_t written = write(wake[1], &byte, 1);
    errno = saved;
}

}  // namespace

void PrepareSignals() {
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
}

void EndBySignal(int signal) {
    raise(signal);
}

struct CInterruption::Meanings {
    std::array<struct sigaction, kSignals.size()> actions = {};
};

CInterruption::CInterruption() : before_(std::make_unique<Meanings>()) {
    if (pipe2(wake, O_CLOEXEC | O_NONBLOCK) != 0) {
        throw CFailure(ExitCode::kUsage, "no more files can be opened");
    }
    struct sigaction action = {};
    action.sa_handler = Remember;
    action.sa_flags = SA_RESTART;  // exchanges with the device go on
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals[i], &action, &before_->actions[i]);
    }
}

CInterruption::~CInterruption() {
    LetSignalsGo();
    close(wake[0]);
    close(wake[1]);
}

void CInterruption::Wake() const {
    Remember(0);
}

bool CInterruption::WasIgnored(int signal) const {
    const auto* place = std::find(kSignals.begin(), kSignals.end(), signal);
    return place != kSignals.end() &&
           before_->actions[static_cast<std::size_t>(place - kSignals.begin())].sa_handler ==
               SIG_IGN;
}

void CInterruption::LetSignalsGo() {
    for (std::size_t i = 0; holdsSignals_ && i < kSignals.size(); ++i) {
        sigaction(kSignals[i], &before_->actions[i], nullptr);
    }
    holdsSignals_ = false;
}

int CInterruption::Wait(std::chrono::milliseconds time) const {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + time;
    while (true) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        pollfd woken = {wake[0], POLLIN, 0};
        const int ready = poll(&woken, 1, static_cast<int>(std::max<std::int64_t>(left, 0)));
        unsigned char signal = 0;
        if (ready > 0 && read(wake[0], &signal, 1) == 1) {
            return signal;
        }
        if (ready == 0) {
            return 0;
        }
    }
}

}  // namespace onvifctl
