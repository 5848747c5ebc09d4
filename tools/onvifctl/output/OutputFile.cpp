#include "output/OutputFile.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <optional>

#include "system/Environment.h"
#include "system/FilePath.h"
#include "system/Interruption.h"

namespace onvifctl {

namespace {

namespace fs = std::filesystem;

std::mutex oneAtATime;  // held while a file is put into its place; interruptions are single, too

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
    const std::lock_guard guard(oneAtATime);
    fs::path temporary = target;
    temporary += "." + std::to_string(ProcessId()) + ".part";
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
        EndBySignal(signal);
    }
    return written;
}

}  // namespace

void WriteWholeFile(const std::string& file, std::string_view bytes) {
    const fs::path path = PathOf(file);
    std::error_code error;
    const std::optional<fs::path> target = FileToReplace(path, error);
    const bool written =
        target ? !error && Replace(*target, bytes) : Write(path, bytes, [] { return false; });
    if (!written) {
        throw CFailure(ExitCode::kNoOutput, "cannot write '" + file + "'");
    }
}

void EndAtOnce(ExitCode code) {
    const std::lock_guard guard(oneAtATime);
    std::_Exit(static_cast<int>(code));
}

}  // namespace onvifctl
