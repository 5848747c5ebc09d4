/// @file
/// The tool's standard streams. Standard output is for data alone: CStartedLibrary sends the
/// library's traces elsewhere.
#ifndef ONVIFCTL_STANDARDSTREAMS_H
#define ONVIFCTL_STANDARDSTREAMS_H

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
    /// Throws CFailure when the output is gone (a closed pipe, a full disk).
    void Write(std::string_view text) const;

    /// The present size of the terminal that the output is; nothing when it is none.
    std::optional<TerminalSize> Terminal() const;
};

/// Asks on the terminal without showing what is typed; nothing when there is no terminal.
std::optional<std::string> AskForPassword(const std::string& prompt);

}  // namespace onvifctl

#endif
