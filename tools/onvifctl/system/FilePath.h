/// @file
/// Paths. Their texts are UTF-8, which std::filesystem does not know by itself on every system.
#ifndef ONVIFCTL_SYSTEM_FILEPATH_H
#define ONVIFCTL_SYSTEM_FILEPATH_H

#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

namespace onvifctl {

inline std::filesystem::path PathOf(const std::string& text) {
    return std::u8string(text.begin(), text.end());
}

inline std::string TextOf(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

/// The file that a whole one can be put in the place of: what the path leads to past links, or the
/// path, when there is nothing yet. Nothing when it leads to something else, as a pipe or a device.
std::optional<std::filesystem::path> FileToReplace(const std::filesystem::path& path,
                                                   std::error_code& error);

/// Whether others than its owner may read a file, as far as the system tells by a simple question:
/// never on Windows.
bool OthersMayRead(const std::filesystem::path& path);

/// The folder of the user's own settings; empty when nothing names it.
std::filesystem::path SettingsFolder();

}  // namespace onvifctl

#endif
