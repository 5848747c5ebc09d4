#include "system/FilePath.h"

#include "system/Environment.h"

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

bool OthersMayRead(const fs::path& path) {
    std::error_code error;
    const fs::perms reading = fs::perms::group_read | fs::perms::others_read;
    const fs::file_status status = fs::status(path, error);
    return fs::exists(status) && (status.permissions() & reading) != fs::perms::none;
}

fs::path SettingsFolder() {
    const std::string own = Variable("XDG_CONFIG_HOME");
    const std::string home = Variable("HOME");
    return !own.empty() || home.empty() ? PathOf(own) : PathOf(home) / ".config";
}

}  // namespace onvifctl
