/// @file
/// A file as the system has it, for the log. Internal to this folder.
#ifndef ONVIF_CLIENT_PLATFORM_APPENDEDFILE_H
#define ONVIF_CLIENT_PLATFORM_APPENDEDFILE_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>

#include "platform/SystemHandle.h"

namespace onvif_client {

/// An open file whose every write goes to its end. Made for its owner alone where files have owners
/// of their own, and not inherited by other programs. Opening waits for no reader of a pipe.
class CAppendedFile {
 public:
    /// None.
    CAppendedFile() = default;
    /// Made when it is not there.
    explicit CAppendedFile(const std::filesystem::path& path);
    ~CAppendedFile();
    CAppendedFile(CAppendedFile&& other) noexcept
        : handle_(std::exchange(other.handle_, kNoHandle)) {}
    CAppendedFile& operator=(CAppendedFile&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }

    explicit operator bool() const { return handle_ != kNoHandle; }
    SystemHandle Get() const { return handle_; }
    /// 0 for what has no size: a pipe, a terminal.
    std::uint64_t Size() const;
    void Empty() const;

 private:
    SystemHandle handle_ = kNoHandle;
};

/// The path that a text of the environment names.
std::filesystem::path PathOf(const std::string& utf8);

/// Puts a file into the place of another.
bool MoveFileTo(const std::filesystem::path& from, const std::filesystem::path& to);

}  // namespace onvif_client

#endif
