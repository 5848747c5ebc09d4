#include "system/Program.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdio>

#include "system/windows/Utf16.h"

namespace onvifctl {

namespace {

/// As programs take their command line apart: quotes around, backslashes before quotes doubled.
std::string Quoted(const std::string& word) {
    std::string quoted = "\"";
    std::size_t backslashes = 0;
    for (const char c : word) {
        if (c == '"') {
            quoted.append(backslashes + 1, '\\');
        }
        backslashes = c == '\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    return quoted.append(backslashes, '\\') + '"';
}

}  // namespace

std::optional<std::string> FirstLineOf(const std::string& command) {
    FILE* output = _wpopen(ToUtf16(command).c_str(), L"rb");
    if (output == nullptr) {
        return std::nullopt;
    }
    std::array<char, 4096> line = {};
    const bool read = std::fgets(line.data(), line.size(), output) != nullptr;
    std::array<char, 4096> rest = {};  // the command need not notice that nobody wants more
    for (int i = 0; i < 16 && std::fread(rest.data(), 1, rest.size(), output) == rest.size(); ++i) {
    }
    if (_pclose(output) != 0) {
        return std::nullopt;
    }
    std::string text = read ? line.data() : "";
    text.erase(std::min(text.find_first_of("\r\n"), text.size()));
    return text;
}

std::optional<std::string> FindProgram(const std::string& name) {
    const std::wstring wide = ToUtf16(name);
    std::wstring path(SearchPathW(nullptr, wide.c_str(), L".exe", 0, nullptr, nullptr), L'\0');
    const auto size = static_cast<DWORD>(path.size());
    path.resize(SearchPathW(nullptr, wide.c_str(), L".exe", size, path.data(), nullptr));
    return path.empty() ? std::nullopt : std::optional(ToUtf8(path));
}

std::optional<int> ContinueAs(const std::string& program,
                              const std::vector<std::string>& arguments) {
    std::string line = Quoted(program);
    for (const std::string& argument : arguments) {
        line += " " + Quoted(argument);
    }
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started = {};
    if (CreateProcessW(ToUtf16(program).c_str(), ToUtf16(line).data(), nullptr, nullptr, FALSE, 0,
                       nullptr, nullptr, &startup, &started) == 0) {
        return std::nullopt;
    }
    CloseHandle(started.hThread);
    WaitForSingleObject(started.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(started.hProcess, &code);
    CloseHandle(started.hProcess);
    return static_cast<int>(code);
}

}  // namespace onvifctl
