/// @file
/// The file that log lines go to, and the older ones beside it.
#ifndef ONVIF_CLIENT_PLATFORM_LOGFILE_H
#define ONVIF_CLIENT_PLATFORM_LOGFILE_H

#include <cstddef>
#include <string>

namespace onvif_client {

/// A file that is appended to: 5 MiB, then three old ones ("log.txt", "log.1.txt", ...). Made for
/// its owner alone and not inherited by other programs. Opening and writing wait for no reader of a
/// pipe, which keeps its one file. Not for two threads at once.
class CLogFile {
 public:
    /// Makes missing folders, too.
    explicit CLogFile(std::string path);
    ~CLogFile();
    CLogFile(const CLogFile&) = delete;
    CLogFile& operator=(const CLogFile&) = delete;

    /// False when the file could not be opened; nothing else may be called then.
    bool IsOpen() const { return descriptor_ >= 0; }
    /// The descriptor for a line of @p size bytes; valid until the next call.
    int DescriptorFor(std::size_t size);

 private:
    void Rotate();

    const std::string path_;
    int descriptor_ = -1;
};

}  // namespace onvif_client

#endif
