/// @file
/// Files that are read while somebody else writes to them.
#ifndef ONVIFCTL_SYSTEM_SHAREDFILE_H
#define ONVIFCTL_SYSTEM_SHAREDFILE_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace onvifctl {

/// The bytes of a regular file from @p offset on, which is moved to its end. A file that has become
/// shorter is read from its beginning. Nothing when it cannot be read. Hinders nobody.
std::optional<std::string> ReadOn(const std::string& path, std::uint64_t& offset);

/// Nothing when it is no regular file that can be read.
std::optional<std::uint64_t> SizeOfFile(const std::string& path);

/// Whether it is a regular file that can be written to.
bool IsWritableFile(const std::string& path);

/// An empty file of the process's own, which goes with it.
class CScratchFile {
 public:
    CScratchFile();
    ~CScratchFile();
    CScratchFile(const CScratchFile&) = delete;
    CScratchFile& operator=(const CScratchFile&) = delete;

    /// What others in this process open it by; empty when it could not be made.
    const std::string& Path() const { return path_; }

 private:
    struct Handle;
    std::unique_ptr<Handle> handle_;
    std::string path_;
};

}  // namespace onvifctl

#endif
