#include "StandardStreams.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <iostream>

#include "ExitCode.h"

namespace onvifctl {

CDataOutput::CDataOutput(bool verbose) : descriptor_(dup(STDOUT_FILENO)) {
    std::fflush(stdout);
    const int elsewhere = verbose ? dup(STDERR_FILENO) : open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (elsewhere >= 0) {
        dup2(elsewhere, STDOUT_FILENO);
        close(elsewhere);
    }
}

CDataOutput::~CDataOutput() {
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
}

void CDataOutput::Write(std::string_view text) const {
    while (!text.empty()) {
        const ssize_t written = write(descriptor_, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            throw CFailure(ExitCode::kUsage, "cannot write to standard output");
        }
    }
}

std::optional<std::string> AskForPassword(const std::string& prompt) {
    termios shown = {};
    if (isatty(STDIN_FILENO) == 0 || tcgetattr(STDIN_FILENO, &shown) != 0) {
        return std::nullopt;
    }
    termios hidden = shown;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    std::cerr << prompt << std::flush;
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
    std::string password;
    std::getline(std::cin, password);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &shown);
    std::cerr << '\n';
    return password;
}

}  // namespace onvifctl
