#include "system/StandardStreams.h"

#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <iostream>

namespace onvifctl {

namespace {

termios shown = {};  // the terminal as it was before a password was asked for

/// Ctrl-C at the prompt must not leave a terminal that shows nothing.
void ShowAgainAndEnd(int signal) {
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &shown);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

}  // namespace

void PrepareStreams() {}  // they are so

bool InputIsTerminal() {
    return isatty(STDIN_FILENO) != 0;
}

bool OutputIsTerminal() {
    return isatty(STDOUT_FILENO) != 0;
}

bool ErrorsAreTerminal() {
    return isatty(STDERR_FILENO) != 0;
}

bool WriteToOutput(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

std::optional<TerminalSize> SizeOfOutput() {
    const char* kind = std::getenv("TERM");
    const std::string_view known = kind == nullptr ? "" : kind;
    winsize size = {};
    if (known.empty() || known == "dumb" || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 ||
        size.ws_row == 0 || size.ws_col == 0) {
        return std::nullopt;
    }
    return TerminalSize{size.ws_row, size.ws_col};
}

std::optional<std::string> AskForPassword(const std::string& prompt) {
    if (isatty(STDIN_FILENO) == 0 || tcgetattr(STDIN_FILENO, &shown) != 0) {
        return std::nullopt;
    }
    const auto interrupted = std::signal(SIGINT, ShowAgainAndEnd);
    termios hidden = shown;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    std::cerr << prompt << std::flush;
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
    std::string password;
    std::getline(std::cin, password);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &shown);
    std::signal(SIGINT, interrupted);
    std::cerr << '\n';
    return password;
}

}  // namespace onvifctl
