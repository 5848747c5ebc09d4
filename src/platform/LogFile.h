/// @file
/// The file that log lines go to, and the older ones beside it.
#ifndef ONVIF_CLIENT_PLATFORM_LOGFILE_H
#define ONVIF_CLIENT_PLATFORM_LOGFILE_H

#include <cstddef>
#include <filesystem>
#include <string>

#include "platform/AppendedFile.h"

namespace onvif_client {

/// A file that is appended to: 5 MiB, then three old ones ("log.txt", "log.1.txt", ...). Made for
/// its owner alone and not inherited by other programs. Opening and writing wait for no reader of a
/// pipe, which keeps its one file. Not for two threads at once.
class CLogFile {
 public:
    /// Makes missing folders, too. UTF-8.
    explicit CLogFile(const std::string& path);

    /// False when the file could not be opened; nothing else may be called then.
    bool IsOpen() const { return static_cast<bool>(file_); }
    /// The handle for a line of @p size bytes; valid until the next call.
    SystemHandle HandleFor(std::size_t size);

 private:
    void Rotate();

    const std::filesystem::path path_;
    CAppendedFile file_;
};

}  // namespace onvif_client

#endif
