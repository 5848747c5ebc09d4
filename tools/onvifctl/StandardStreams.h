/// @file
/// The tool's standard streams. Standard output is for data alone: CStartedLibrary sends the
/// library's traces elsewhere.
#ifndef ONVIFCTL_STANDARDSTREAMS_H
#define ONVIFCTL_STANDARDSTREAMS_H

#include <unistd.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace onvifctl {

struct TerminalSize {
    std::size_t rows;
    std::size_t columns;
};

/// Standard output, past all buffers.
class CDataOutput {
 public:
    /// Byte for byte, but printable (Printable.h) on a terminal. Throws CFailure when the output is
    /// gone (a closed pipe, a full disk).
    void Write(std::string_view text) const;
    /// Byte for byte on a terminal, too: for texts of the tool's own that control it.
    void WriteToTerminal(std::string_view text) const;

    /// The present size of the terminal that the output is; nothing when it is none.
    std::optional<TerminalSize> Terminal() const;

 private:
    const bool isTerminal_ = isatty(STDOUT_FILENO) != 0;
};

/// Asks on the terminal without showing what is typed; nothing when there is no terminal.
std::optional<std::string> AskForPassword(const std::string& prompt);

}  // namespace onvifctl

#endif
