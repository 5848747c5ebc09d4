/// @file
/// The tool's standard streams. The library writes traces to standard output; the tool keeps that
/// stream for data and sends the traces elsewhere.
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

/// The tool's own standard output. Construct it before the first call to the library.
class CDataOutput {
 public:
    /// From here on what others write to standard output goes to standard error (@p verbose) or
    /// nowhere.
    explicit CDataOutput(bool verbose);
    ~CDataOutput();
    CDataOutput(const CDataOutput&) = delete;
    CDataOutput& operator=(const CDataOutput&) = delete;

    /// Throws CFailure when the output is gone (a closed pipe, a full disk).
    void Write(std::string_view text) const;

    /// The present size of the terminal that the output is; nothing when it is none.
    std::optional<TerminalSize> Terminal() const;

 private:
    int descriptor_;
};

/// Asks on the terminal without showing what is typed; nothing when there is no terminal.
std::optional<std::string> AskForPassword(const std::string& prompt);

}  // namespace onvifctl

#endif
