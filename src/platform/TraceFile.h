/// @file
/// The file that exchanges with devices are written to, where the environment names one.
///
/// ONVIF_CLIENT_TRACE_FILE is read when the library is started, or at the first exchange. The file
/// is of a log file's size and number (LogFile.h), and for its owner alone. Only a regular file is
/// written to, which nothing waits for. Any thread; nothing here throws.
#ifndef ONVIF_CLIENT_PLATFORM_TRACEFILE_H
#define ONVIF_CLIENT_PLATFORM_TRACEFILE_H

#include <cstdint>
#include <string_view>

namespace onvif_client {

enum class TraceFile {
    kNone,     ///< none is named
    kRefused,  ///< the one that is named cannot be had
    kWritten,
};

TraceFile StateOfTraceFile();

inline bool TracesExchanges() {
    return StateOfTraceFile() == TraceFile::kWritten;
}

/// What begins each entry, and no other line.
inline constexpr std::string_view kEntryMark = "== ";

/// Writes an entry in one piece: the mark, the local time @p millisecondsAgo, and the text, which
/// ends with a line break.
void WriteTraceEntry(std::uint32_t millisecondsAgo, std::string_view text);

}  // namespace onvif_client

#endif
