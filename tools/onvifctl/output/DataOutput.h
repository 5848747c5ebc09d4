/// @file
/// The tool's standard output, which is for data alone: CStartedLibrary sends the library's traces
/// elsewhere.
#ifndef ONVIFCTL_OUTPUT_DATAOUTPUT_H
#define ONVIFCTL_OUTPUT_DATAOUTPUT_H

#include <optional>
#include <string>
#include <string_view>

#include "system/StandardStreams.h"

namespace onvifctl {

/// Standard output, past all buffers, or a text that is collected for it.
class CDataOutput {
 public:
    explicit CDataOutput(std::string* collected = nullptr) : collected_(collected) {}

    /// Byte for byte, but printable (Printable.h) on a terminal. Throws CFailure when the output is
    /// gone (a closed pipe, a full disk).
    void Write(std::string_view text) const;
    /// Byte for byte on a terminal, too: for texts of the tool's own that control it.
    void WriteToTerminal(std::string_view text) const;

    /// The present size of the terminal that the output is; nothing when it is none, or one that
    /// cannot be controlled.
    std::optional<TerminalSize> Terminal() const { return SizeOfOutput(); }

 private:
    std::string* const collected_;
    const bool isTerminal_ = OutputIsTerminal();
};

}  // namespace onvifctl

#endif
