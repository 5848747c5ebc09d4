#include "system/SharedFile.h"

#include <windows.h>

#include <algorithm>

#include "system/windows/Utf16.h"

namespace onvifctl {

namespace {

constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

class CFile {
 public:
    /// One that is there already. A pipe would take the attempt for its one reader.
    CFile(const std::string& path, DWORD access, DWORD flags)
        : handle_(path.starts_with(R"(\\.\)")
                      ? INVALID_HANDLE_VALUE
                      : CreateFileW(ToUtf16(path).c_str(), access, kShared, nullptr, OPEN_EXISTING,
                                    flags, nullptr)) {}
    ~CFile() {
        if (handle_ != INVALID_HANDLE_VALUE) {
            CloseHandle(handle_);
        }
    }
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;

    HANDLE Get() const { return handle_; }

    /// Nothing when it is no regular file.
    std::optional<std::uint64_t> Size() const {
        LARGE_INTEGER size = {};
        const bool regular = handle_ != INVALID_HANDLE_VALUE &&
                             GetFileType(handle_) == FILE_TYPE_DISK &&
                             GetFileSizeEx(handle_, &size) != 0;
        return regular ? std::optional(static_cast<std::uint64_t>(size.QuadPart)) : std::nullopt;
    }

 private:
    const HANDLE handle_;
};

}  // namespace

std::optional<std::string> ReadOn(const std::string& path, std::uint64_t& offset) {
    const CFile file(path, GENERIC_READ, FILE_ATTRIBUTE_NORMAL);
    const auto size = file.Size();
    if (!size) {
        return std::nullopt;
    }
    offset = *size < offset ? 0 : offset;
    LARGE_INTEGER place = {};
    place.QuadPart = static_cast<LONGLONG>(offset);
    SetFilePointerEx(file.Get(), place, nullptr, FILE_BEGIN);
    std::string bytes(static_cast<std::size_t>(*size - offset), '\0');
    std::size_t filled = 0;
    DWORD read = 1;
    while (filled < bytes.size() && read > 0) {
        constexpr std::size_t kPiece = 1 << 20;
        const auto piece = static_cast<DWORD>(std::min(bytes.size() - filled, kPiece));
        read = ReadFile(file.Get(), bytes.data() + filled, piece, &read, nullptr) != 0 ? read : 0;
        filled += read;
    }
    bytes.resize(filled);
    offset += filled;
    return bytes;
}

std::optional<std::uint64_t> SizeOfFile(const std::string& path) {
    return CFile(path, GENERIC_READ, FILE_ATTRIBUTE_NORMAL).Size();
}

bool IsWritableFile(const std::string& path) {
    constexpr DWORD kAccess = FILE_APPEND_DATA | FILE_READ_ATTRIBUTES;
    return CFile(path, kAccess, FILE_ATTRIBUTE_NORMAL).Size().has_value();
}

struct CScratchFile::Handle : CFile {
    using CFile::CFile;
};

CScratchFile::CScratchFile() {
    wchar_t folder[MAX_PATH + 1] = {};
    wchar_t file[MAX_PATH + 1] = {};
    if (GetTempPathW(MAX_PATH, folder) == 0 || GetTempFileNameW(folder, L"onv", 0, file) == 0) {
        return;
    }
    handle_ = std::make_unique<Handle>(ToUtf8(file), GENERIC_READ | DELETE,
                                       FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE);
    if (handle_->Size()) {
        path_ = ToUtf8(file);
    }
}

CScratchFile::~CScratchFile() {
    handle_.reset();
    // Where it has become large, the library has moved it and made a new one.
    const std::size_t dot = path_.rfind('.');
    for (const char* number : {"", ".1", ".2", ".3"}) {
        if (dot != std::string::npos) {
            std::string old = path_;
            DeleteFileW(ToUtf16(old.insert(dot, number)).c_str());
        }
    }
}

}  // namespace onvifctl
