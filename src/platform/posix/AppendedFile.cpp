#include "platform/AppendedFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace onvif_client {

CAppendedFile::CAppendedFile(const std::filesystem::path& path) {
    constexpr int kFlags = O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | kFlags, S_IRUSR | S_IWUSR);
    // A named pipe that nobody reads yet opens for who could read it himself.
    handle_ = descriptor < 0 && errno == ENXIO ? open(path.c_str(), O_RDWR | kFlags) : descriptor;
}

CAppendedFile::~CAppendedFile() {
    if (handle_ != kNoHandle) {
        close(static_cast<int>(handle_));
    }
}

std::uint64_t CAppendedFile::Size() const {
    struct stat file = {};
    const bool sized = fstat(static_cast<int>(handle_), &file) == 0 && S_ISREG(file.st_mode);
    return sized && file.st_size > 0 ? static_cast<std::uint64_t>(file.st_size) : 0;
}

void CAppendedFile::Empty() const {
    [[maybe_unused]] const int emptied = ftruncate(static_cast<int>(handle_), 0);
}

std::filesystem::path PathOf(const std::string& utf8) {
    return utf8;
}

bool MoveFileTo(const std::filesystem::path& from, const std::filesystem::path& to) {
    return std::rename(from.c_str(), to.c_str()) == 0;
}

}  // namespace onvif_client
