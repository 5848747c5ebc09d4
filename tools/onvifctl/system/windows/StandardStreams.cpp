#include "system/StandardStreams.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <csignal>
#include <iostream>
#include <memory>

#include "system/Interruption.h"
#include "system/windows/Utf16.h"

namespace onvifctl {

namespace {

/// The mode of a stream that is a console; nothing for one that is none.
std::optional<DWORD> ConsoleMode(HANDLE stream) {
    DWORD mode = 0;
    return GetConsoleMode(stream, &mode) != 0 ? std::optional(mode) : std::nullopt;
}

/// Has a console another mode while one lives.
class CConsoleMode {
 public:
    CConsoleMode(HANDLE console, DWORD before, DWORD meanwhile)
        : console_(console), before_(before), isSet_(SetConsoleMode(console, meanwhile) != 0) {}
    ~CConsoleMode() { SetConsoleMode(console_, before_); }
    CConsoleMode(const CConsoleMode&) = delete;
    CConsoleMode& operator=(const CConsoleMode&) = delete;

    bool IsSet() const { return isSet_; }

 private:
    const HANDLE console_;
    const DWORD before_;
    const bool isSet_;
};

bool WriteBytes(HANDLE stream, std::string_view bytes) {
    constexpr std::size_t kPiece = 1 << 20;
    while (!bytes.empty()) {
        DWORD written = 0;
        const auto size = static_cast<DWORD>(std::min(bytes.size(), kPiece));
        if (WriteFile(stream, bytes.data(), size, &written, nullptr) == 0 || written == 0) {
            return false;
        }
        bytes.remove_prefix(written);
    }
    return true;
}

/// Past the code page of the console. What controls it does so where it can; a change of the mode
/// for longer would be there for the next program, too.
bool WriteToConsole(HANDLE console, DWORD mode, std::string_view text) {
    constexpr std::size_t kPiece = 8000;  // older consoles take no more than 64 KB at once
    const CConsoleMode controlled(
        console, mode, mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
    const std::wstring wide = ToUtf16(text);
    for (std::size_t start = 0; start < wide.size();) {
        DWORD written = 0;
        const auto size = static_cast<DWORD>(std::min(wide.size() - start, kPiece));
        if (WriteConsoleW(console, wide.data() + start, size, &written, nullptr) == 0 ||
            written == 0) {
            return false;
        }
        start += written;
    }
    return true;
}

/// Lets a stream of the standard library write to a console, line by line.
class CConsoleBuffer : public std::streambuf {
 public:
    explicit CConsoleBuffer(DWORD stream) : console_(GetStdHandle(stream)) {}

 protected:
    int_type overflow(int_type next) override {
        if (traits_type::eq_int_type(next, traits_type::eof())) {
            return traits_type::not_eof(next);
        }
        const char c = traits_type::to_char_type(next);
        return xsputn(&c, 1) == 1 ? next : traits_type::eof();
    }

    std::streamsize xsputn(const char* text, std::streamsize size) override {
        waiting_.append(text, static_cast<std::size_t>(size));
        return waiting_.ends_with('\n') && sync() != 0 ? 0 : size;
    }

    int sync() override {
        const auto mode = ConsoleMode(console_);
        const bool written = mode && WriteToConsole(console_, *mode, waiting_);
        waiting_.clear();
        return written ? 0 : -1;
    }

 private:
    const HANDLE console_;
    std::string waiting_;
};

void Prepare(std::ostream& stream, FILE* file, DWORD handle) {
    if (ConsoleMode(GetStdHandle(handle))) {
        // For the streams' whole life, which ends after everything else.
        stream.rdbuf(std::make_unique<CConsoleBuffer>(handle).release());
    } else {
        _setmode(_fileno(file), _O_BINARY);
    }
}

/// A line, or nothing when Ctrl-C ended it.
std::optional<std::wstring> ReadLine(HANDLE console) {
    std::wstring line;
    wchar_t piece[256] = {};
    DWORD length = 0;
    while (!line.ends_with(L'\n')) {
        SetLastError(ERROR_SUCCESS);
        if (ReadConsoleW(console, piece, 256, &length, nullptr) == 0 || length == 0) {
            return GetLastError() == ERROR_OPERATION_ABORTED ? std::nullopt : std::optional(line);
        }
        line.append(piece, length);
    }
    line.erase(std::min(line.find_first_of(L"\r\n"), line.size()));
    return line;
}

HANDLE asked = nullptr;  // the console as it was before a password was asked for
DWORD shown = 0;

/// Ctrl-C at the prompt must not leave a console that shows nothing.
BOOL WINAPI ShowAgain(DWORD) {
    SetConsoleMode(asked, shown);
    return FALSE;  // what ends the tool comes next
}

}  // namespace

void PrepareStreams() {
    Prepare(std::cout, stdout, STD_OUTPUT_HANDLE);
    Prepare(std::cerr, stderr, STD_ERROR_HANDLE);
    if (!ConsoleMode(GetStdHandle(STD_INPUT_HANDLE))) {  // at a console Ctrl-Z ends a text
        _setmode(_fileno(stdin), _O_BINARY);
    }
}

bool InputIsTerminal() {
    return ConsoleMode(GetStdHandle(STD_INPUT_HANDLE)).has_value();
}

bool OutputIsTerminal() {
    return ConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE)).has_value();
}

bool ErrorsAreTerminal() {
    return ConsoleMode(GetStdHandle(STD_ERROR_HANDLE)).has_value();
}

bool WriteToOutput(std::string_view text) {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    const auto mode = ConsoleMode(output);
    return mode ? WriteToConsole(output, *mode, text) : WriteBytes(output, text);
}

std::optional<TerminalSize> SizeOfOutput() {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    const auto mode = ConsoleMode(output);
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    if (!mode || GetConsoleScreenBufferInfo(output, &info) == 0 ||
        !CConsoleMode(output, *mode, *mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING).IsSet()) {
        return std::nullopt;
    }
    const auto length = [](SHORT first, SHORT last) {
        return static_cast<std::size_t>(std::max(last - first + 1, 1));
    };
    return TerminalSize{length(info.srWindow.Top, info.srWindow.Bottom),
                        length(info.srWindow.Left, info.srWindow.Right)};
}

std::optional<std::string> AskForPassword(const std::string& prompt) {
    asked = GetStdHandle(STD_INPUT_HANDLE);
    const auto mode = ConsoleMode(asked);
    if (!mode) {
        return std::nullopt;
    }
    shown = *mode;
    SetConsoleCtrlHandler(ShowAgain, TRUE);
    std::cerr << prompt << std::flush;
    std::optional<std::wstring> password;
    {
        const DWORD line = ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT;
        const CConsoleMode hidden(asked, shown,
                                  (shown | line) & ~static_cast<DWORD>(ENABLE_ECHO_INPUT));
        password = ReadLine(asked);
    }
    SetConsoleCtrlHandler(ShowAgain, FALSE);
    std::cerr << '\n';
    if (!password) {
        EndBySignal(SIGINT);
    }
    return ToUtf8(password.value_or(L""));
}

}  // namespace onvifctl
