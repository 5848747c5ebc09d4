#include "OutputFile.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>

#include "ExitCode.h"
#include "Interruption.h"

namespace onvifctl {

namespace {

namespace fs = std::filesystem;

/// Writes piece by piece until it is told to end.
/// @return true when everything is written.
bool Write(const fs::path& path, std::string_view bytes, const std::function<bool()>& ended) {
    constexpr std::size_t kPiece = 1 << 20;
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    while (stream && !bytes.empty() && !ended()) {
        const std::string_view piece = bytes.substr(0, kPiece);
        stream.write(piece.data(), static_cast<std::streamsize>(piece.size()));
        bytes.remove_prefix(piece.size());
    }
    stream.close();
    return bytes.empty() && !stream.fail();
}

/// Puts a whole file into the place of what is there, if anything.
bool Replace(const fs::path& target, std::string_view bytes) {
    const fs::path temporary = target.string() + "." + std::to_string(getpid()) + ".part";
    // A signal that ended the tool at once would leave the temporary file.
    CInterruption interruption;
    int signal = 0;
    const auto interrupted = [&interruption, &signal] {
        const int come = interruption.Wait(std::chrono::milliseconds(0));
        signal = interruption.WasIgnored(come) ? signal : std::max(signal, come);
        return signal != 0;
    };
    std::error_code error;
    bool written = Write(temporary, bytes, interrupted);
    if (written) {
        fs::rename(temporary, target, error);
        written = !error;
    }
    if (!written) {
        fs::remove(temporary, error);
    }
    interruption.LetSignalsGo();
    if (interrupted()) {
        std::raise(signal);
    }
    return written;
}

}  // namespace

void WriteWholeFile(const std::string& file, std::string_view bytes) {
    std::error_code error;
    const fs::file_status present = fs::status(file, error);
    error.clear();  // a file that is not there yet is no error
    bool written = false;
    if (fs::exists(present) && !fs::is_regular_file(present)) {
        written = Write(file, bytes, [] { return false; });
    } else {
        // A link stays one: what it points to is replaced.
        const fs::path target = fs::exists(present) ? fs::canonical(file, error) : fs::path(file);
        written = !error && Replace(target, bytes);
    }
    if (!written) {
        throw CFailure(ExitCode::kNoOutput, "cannot write '" + file + "'");
    }
}

}  // namespace onvifctl
