/// @file
/// Lines written to files and streams without ever waiting for who reads them.
#ifndef ONVIF_CLIENT_PLATFORM_LINEOUTPUT_H
#define ONVIF_CLIENT_PLATFORM_LINEOUTPUT_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/SystemHandle.h"

namespace onvif_client {

/// What the process has as its standard output or error now; kNoHandle for none.
SystemHandle StandardOutput();
SystemHandle StandardError();

/// What a handle leads to, as two numbers of the system's; two zeros when it is closed.
using OpenFileId = std::pair<unsigned long long, unsigned long long>;
OpenFileId OpenFileOf(SystemHandle handle);
bool IsSocket(SystemHandle handle);
/// Whether it is a console that shows the bytes of the GBK code page (936).
bool ShowsGbk(SystemHandle handle);

/// The longest line that goes through whole: what POSIX systems promise of pipes.
constexpr std::size_t kLongestLine = 4096;

/// Writes at most kLongestLine bytes to a handle that others may share, whose flags stay as they
/// are. Waits for no reader of a pipe, socket or terminal, and raises no SIGPIPE.
/// @return how many of the bytes were taken: none or all, but for a terminal or disk that was full
///         in between.
std::size_t WriteAtOnce(SystemHandle handle, std::string_view bytes);

/// The lines of one place: each whole and at once, or not at all. Those that were turned away are
/// counted, and told in front of the next one that goes through. Not for two threads at once.
class CLineOutput {
 public:
    /// The line that tells of @p count others, with its line break.
    using MakeNote = std::function<std::string(unsigned long long count)>;

    explicit CLineOutput(MakeNote note) : note_(std::move(note)) {}

    /// @param line  with its line break; cut to kLongestLine bytes, the break included.
    void Put(SystemHandle handle, std::string line);
    /// Counts a line that has nowhere to go.
    void Drop() { ++dropped_; }

 private:
    bool Write(SystemHandle handle, const std::string& line);

    const MakeNote note_;
    unsigned long long dropped_ = 0;
    bool torn_ = false;  // the last one was cut off in the middle
};

}  // namespace onvif_client

#endif
