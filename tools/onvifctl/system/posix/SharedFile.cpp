#include "system/SharedFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace onvifctl {

namespace {

/// An open file; a pipe or a terminal is waited for by nobody.
class CDescriptor {
 public:
    explicit CDescriptor(int number) : number_(number) {}
    ~CDescriptor() {
        if (number_ >= 0) {
            close(number_);
        }
    }
    CDescriptor(const CDescriptor&) = delete;
    CDescriptor& operator=(const CDescriptor&) = delete;

    int Number() const { return number_; }

    /// Nothing when it is no regular file.
    std::optional<std::uint64_t> Size() const {
        struct stat file = {};
        const bool regular = fstat(number_, &file) == 0 && S_ISREG(file.st_mode);
        return regular ? std::optional(static_cast<std::uint64_t>(file.st_size)) : std::nullopt;
    }

 private:
    const int number_;
};

CDescriptor Open(const std::string& path, int mode) {
    return CDescriptor(open(path.c_str(), mode | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
}

}  // namespace

std::optional<std::string> ReadOn(const std::string& path, std::uint64_t& offset) {
    const CDescriptor file = Open(path, O_RDONLY);
    const auto size = file.Size();
    if (!size) {
        return std::nullopt;
    }
    offset = *size < offset ? 0 : offset;
    std::string bytes(static_cast<std::size_t>(*size - offset), '\0');
    std::size_t filled = 0;
    ssize_t read = 1;
    while (filled < bytes.size() && (read > 0 || errno == EINTR)) {
        read = pread(file.Number(), bytes.data() + filled, bytes.size() - filled,
                     static_cast<off_t>(offset + filled));
        filled += static_cast<std::size_t>(std::max<ssize_t>(read, 0));
        if (read == 0) {
            break;  // it has become shorter since
        }
    }
    bytes.resize(filled);
    offset += filled;
    return bytes;
}

std::optional<std::uint64_t> SizeOfFile(const std::string& path) {
    return Open(path, O_RDONLY).Size();
}

bool IsWritableFile(const std::string& path) {
    return Open(path, O_WRONLY).Size().has_value();
}

struct CScratchFile::Handle : CDescriptor {
    using CDescriptor::CDescriptor;
};

CScratchFile::CScratchFile()
    : handle_(std::make_unique<Handle>(memfd_create("onvifctl", MFD_CLOEXEC))) {
    if (handle_->Number() >= 0) {
        path_ = "/proc/self/fd/" + std::to_string(handle_->Number());
    }
}

CScratchFile::~CScratchFile() = default;

}  // namespace onvifctl
