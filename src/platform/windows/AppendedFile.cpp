#include "platform/AppendedFile.h"

#include <windows.h>

#include "platform/windows/WideText.h"

namespace onvif_client {

namespace {

HANDLE Handle(SystemHandle handle) {
    return reinterpret_cast<HANDLE>(handle);
}

}  // namespace

CAppendedFile::CAppendedFile(const std::filesystem::path& path) {
    // Others may read, move and delete it, as the next file does with this one.
    constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    handle_ = reinterpret_cast<SystemHandle>(
        CreateFileW(path.c_str(), FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE, kShared,
                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
}

CAppendedFile::~CAppendedFile() {
    if (handle_ != kNoHandle) {
        CloseHandle(Handle(handle_));
    }
}

std::uint64_t CAppendedFile::Size() const {
    LARGE_INTEGER size = {};
    const bool sized = GetFileType(Handle(handle_)) == FILE_TYPE_DISK &&
                       GetFileSizeEx(Handle(handle_), &size) != 0;
    return sized ? static_cast<std::uint64_t>(size.QuadPart) : 0;
}

void CAppendedFile::Empty() const {
    // Who may only append may not cut: by a handle that may.
    wchar_t path[MAX_PATH * 4] = {};
    const DWORD length =
        GetFinalPathNameByHandleW(Handle(handle_), path, static_cast<DWORD>(std::size(path)), 0);
    if (length > 0 && length < std::size(path)) {
        const HANDLE emptied =
            CreateFileW(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                        nullptr, TRUNCATE_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (emptied != INVALID_HANDLE_VALUE) {
            CloseHandle(emptied);
        }
    }
}

std::filesystem::path PathOf(const std::string& utf8) {
    return WideText(utf8);
}

bool MoveFileTo(const std::filesystem::path& from, const std::filesystem::path& to) {
    return MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
}

}  // namespace onvif_client
