#include "platform/Environment.h"

#include <windows.h>

#include "platform/windows/WideText.h"

namespace onvif_client {

std::string EnvironmentText(const char* name, const char* otherwise) {
    const std::wstring wideName = WideText(name);
    std::wstring value;
    // Another thread may make it longer between two calls.
    for (DWORD size = 1; size > value.size();) {
        value.resize(size);
        SetLastError(ERROR_SUCCESS);
        size = GetEnvironmentVariableW(wideName.c_str(), value.data(), size);
        if (size == 0 && GetLastError() == ERROR_ENVVAR_NOT_FOUND) {
            return otherwise;
        }
        if (size < value.size()) {
            value.resize(size);
            break;
        }
    }
    return Utf8Text(value);
}

}  // namespace onvif_client
