#include "system/FilePath.h"

#include <windows.h>

#include <memory>

#include "system/Environment.h"

namespace onvifctl {

namespace fs = std::filesystem;

namespace {

fs::path PastLinks(HANDLE file, const fs::path& path) {
    std::wstring name(GetFinalPathNameByHandleW(file, nullptr, 0, 0), L'\0');
    name.resize(GetFinalPathNameByHandleW(file, name.data(), static_cast<DWORD>(name.size()), 0));
    return name.empty() ? path : fs::path(name);
}

}  // namespace

std::optional<fs::path> FileToReplace(const fs::path& path, std::error_code& error) {
    error.clear();
    if (path.native().starts_with(LR"(\\.\)")) {
        return std::nullopt;  // a pipe would take the question for its one reader
    }
    const HANDLE file =
        CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return path;
    }
    const std::unique_ptr<void, decltype(&CloseHandle)> owned(file, &CloseHandle);
    return GetFileType(file) == FILE_TYPE_DISK ? std::optional(PastLinks(file, path))
                                               : std::nullopt;
}

bool OthersMayRead(const fs::path&) {
    return false;
}

fs::path SettingsFolder() {
    return PathOf(Variable("APPDATA"));
}

}  // namespace onvifctl
