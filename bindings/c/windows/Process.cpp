#include "Process.h"

#include <windows.h>

#include <string>

namespace onvif_client_c {

namespace {

std::wstring Wide(const char* text) {
    const int size = MultiByteToWideChar(CP_UTF8, 0, text, -1, nullptr, 0);
    std::wstring wide(size > 0 ? static_cast<std::size_t>(size) : 1, L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text, -1, wide.data(), size);
    return wide;
}

}  // namespace

unsigned long ProcessId() {
    return GetCurrentProcessId();
}

bool SetVariable(const char* name, const char* value) {
    const BOOL set = SetEnvironmentVariableW(Wide(name).c_str(),
                                             value == nullptr ? nullptr : Wide(value).c_str());
    return set != FALSE || (value == nullptr && GetLastError() == ERROR_ENVVAR_NOT_FOUND);
}

}  // namespace onvif_client_c
