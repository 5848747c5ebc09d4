/// @file
/// The library's log as a source of news: it alone knows of the subscription behind an observer,
/// which a device may refuse while it answers everything else.
#ifndef ONVIFCTL_WATCH_LIBRARYLOG_H
#define ONVIFCTL_WATCH_LIBRARYLOG_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "system/SharedFile.h"

namespace onvifctl {

/// Has the library log to a scratch file, and follows it. Before the library is started,
/// and for one thread. What the user would have seen on standard error still goes there. A log file
/// that the user has asked for is the user's, and nothing is learned from it.
class CLibraryLog {
 public:
    /// @p verbose: all lines are the user's, unless the environment says otherwise.
    explicit CLibraryLog(bool verbose);
    /// Shows what is left. The library must have been stopped.
    ~CLibraryLog();
    CLibraryLog(const CLibraryLog&) = delete;
    CLibraryLog& operator=(const CLibraryLog&) = delete;

    /// Whether a loss can be told at all.
    bool IsFollowed() const { return file_ && !file_->Path().empty(); }

    /// Reads on. @return "IP:PORT" of each device whose subscription was lost since the last call.
    std::vector<std::string> TakeLosses();

 private:
    std::optional<CScratchFile> file_;
    std::uint64_t read_ = 0;  // so many bytes of the file
    std::string shown_;       // the levels that the user sees
    std::string rest_;        // of a line that is not whole yet
};

}  // namespace onvifctl

#endif
