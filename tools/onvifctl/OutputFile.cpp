#include "OutputFile.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "ExitCode.h"

namespace onvifctl {

namespace {

namespace fs = std::filesystem;

bool Write(const fs::path& path, std::string_view bytes) {
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    return !stream.fail();
}

}  // namespace

void WriteWholeFile(const std::string& file, std::string_view bytes) {
    std::error_code error;
    const fs::file_status present = fs::status(file, error);
    error.clear();  // a file that is not there yet is no error
    bool written = false;
    if (fs::exists(present) && !fs::is_regular_file(present)) {
        written = Write(file, bytes);
    } else {
        // A link stays one: what it points to is replaced.
        const fs::path target = fs::exists(present) ? fs::canonical(file, error) : fs::path(file);
        const fs::path temporary = target.string() + "." + std::to_string(getpid()) + ".part";
        written = !error && Write(temporary, bytes);
        if (written) {
            fs::rename(temporary, target, error);
            written = !error;
        }
        if (!written) {
            fs::remove(temporary, error);
        }
    }
    if (!written) {
        throw CFailure(ExitCode::kNoOutput, "cannot write '" + file + "'");
    }
}

}  // namespace onvifctl
