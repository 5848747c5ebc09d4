#include "system/System.h"

#include <windows.h>
// These need that one before them.
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <array>
#include <csignal>
#include <memory>

namespace {

std::string ToUtf8(const wchar_t* text) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (size <= 0) {
        return {};
    }
    std::string converted(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, converted.data(), size, nullptr, nullptr);
    converted.pop_back();  // the zero at the end
    return converted;
}

struct FreeLocal {
    void operator()(wchar_t** words) const { LocalFree(words); }
};

}  // namespace

std::vector<std::string> ProgramWords(int argc, char** argv) {
    int count = 0;
    // What main gets is in the code page of the machine, without the characters that it lacks.
    const std::unique_ptr<wchar_t*, FreeLocal> wide(CommandLineToArgvW(GetCommandLineW(), &count));
    if (!wide) {
        return {argv + 1, argv + argc};
    }
    std::vector<std::string> words;
    for (int i = 1; i < count; ++i) {
        words.push_back(ToUtf8(wide.get()[i]));
    }
    return words;
}

void WriteLinesAsTheyAre() {
    // By default a line's end becomes two characters.
    _setmode(STDOUT_FILENO, _O_BINARY);
}

std::size_t AllowManyDescriptors() {
    return 0;
}

std::span<const int> EndSignals() {
    // SIGBREAK: Ctrl-Break, or the console's window is closed.
    static constexpr std::array kSignals = {SIGINT, SIGTERM, SIGBREAK};
    return kSignals;
}
