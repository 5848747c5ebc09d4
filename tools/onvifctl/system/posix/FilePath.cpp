#include "system/FilePath.h"

namespace onvifctl {

namespace fs = std::filesystem;

std::optional<fs::path> FileToReplace(const fs::path& path, std::error_code& error) {
    const fs::file_status present = fs::status(path, error);
    error.clear();  // a file that is not there yet is no error
    if (!fs::exists(present)) {
        return path;
    }
    return fs::is_regular_file(present) ? std::optional(fs::canonical(path, error)) : std::nullopt;
}

}  // namespace onvifctl
