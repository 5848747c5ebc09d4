#include "system/Environment.h"

#include <windows.h>

#include <shellapi.h>

#include <memory>

#include "system/windows/Utf16.h"

namespace onvifctl {

std::vector<std::string> Arguments(int, const char* const*) {
    // What main is given has lost every character that the system's code page lacks, and has file
    // names in the place of '*' and '?'.
    int count = 0;
    const std::unique_ptr<LPWSTR, decltype(&LocalFree)> words(
        CommandLineToArgvW(GetCommandLineW(), &count), &LocalFree);
    std::vector<std::string> arguments;
    for (int i = 1; words != nullptr && i < count; ++i) {
        arguments.push_back(ToUtf8(words.get()[i]));
    }
    return arguments;
}

void SetVariable(const std::string& name, const std::string& value) {
    SetEnvironmentVariableW(ToUtf16(name).c_str(), ToUtf16(value).c_str());
}

void SetMissingVariable(const std::string& name, const std::string& value) {
    SetLastError(ERROR_SUCCESS);
    if (GetEnvironmentVariableW(ToUtf16(name).c_str(), nullptr, 0) == 0 &&
        GetLastError() == ERROR_ENVVAR_NOT_FOUND) {
        SetVariable(name, value);
    }
}

// Not by std::getenv, which knows them only in the system's code page.
std::string Variable(const std::string& name) {
    const std::wstring wide = ToUtf16(name);
    std::wstring value(GetEnvironmentVariableW(wide.c_str(), nullptr, 0), L'\0');
    const auto size = static_cast<DWORD>(value.size());
    value.resize(GetEnvironmentVariableW(wide.c_str(), value.data(), size));
    return ToUtf8(value);
}

unsigned long ProcessId() {
    return GetCurrentProcessId();
}

std::tm LocalTime(std::time_t time) {
    std::tm parts = {};
    localtime_s(&parts, &time);
    return parts;
}

std::tm UtcTime(std::time_t time) {
    std::tm parts = {};
    gmtime_s(&parts, &time);
    return parts;
}

}  // namespace onvifctl
