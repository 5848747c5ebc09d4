/// @file
/// The standard streams, and the terminal that they may be.
#ifndef ONVIFCTL_SYSTEM_STANDARDSTREAMS_H
#define ONVIFCTL_SYSTEM_STANDARDSTREAMS_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace onvifctl {

/// Before anything is read or written: texts are UTF-8 and what is no terminal is binary, in the
/// streams of the standard library, too.
void PrepareStreams();

bool InputIsTerminal();
bool OutputIsTerminal();
bool ErrorsAreTerminal();

/// Writes all of it to standard output, past all buffers.
/// @return false when the output is gone.
bool WriteToOutput(std::string_view text);

struct TerminalSize {
    std::size_t rows;
    std::size_t columns;
};

/// The present size of standard output; nothing when it is no terminal that obeys ANSI sequences.
std::optional<TerminalSize> SizeOfOutput();

/// Asks on the terminal without showing what is typed; nothing when there is no terminal.
std::optional<std::string> AskForPassword(const std::string& prompt);

}  // namespace onvifctl

#endif
