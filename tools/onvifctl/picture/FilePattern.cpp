#include "picture/FilePattern.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <ctime>
#include <set>
#include <utility>

#include "ExitCode.h"
#include "system/Environment.h"

namespace onvifctl {

namespace {

std::string TimeNow() {
    const std::tm now = LocalTime(std::time(nullptr));
    std::array<char, 64> text = {};
    std::strftime(text.data(), text.size(), "%Y%m%d-%H%M%S", &now);
    return text.data();
}

}  // namespace

std::string SafeFileName(const std::string& camera) {
    std::string name = camera;
    std::replace_if(
        name.begin(), name.end(),
        [](unsigned char c) {
            return c < 0x80 && std::isalnum(c) == 0 && c != '-' && c != '_' && c != '.';
        },
        '_');
    if (name.starts_with('.')) {
        name[0] = '_';
    }
    return name;
}

void CheckFileNames(const std::vector<std::string>& cameras) {
    std::set<std::string> names;
    for (const std::string& camera : cameras) {
        std::string name = SafeFileName(camera);
        std::transform(name.begin(), name.end(), name.begin(),  // some systems take them for one
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        if (!names.insert(name).second) {
            throw CFailure(ExitCode::kUsage,
                           "two of the cameras would have the files of '" + name + "'");
        }
    }
}

CFilePattern::CFilePattern(std::string pattern) : pattern_(std::move(pattern)) {
    for (std::size_t i = 0; i < pattern_.size(); ++i) {
        if (pattern_[i] == '%') {
            const char letter = ++i < pattern_.size() ? pattern_[i] : '\0';
            if (letter == '\0' || std::string("hti%").find(letter) == std::string::npos) {
                throw CFailure(ExitCode::kUsage,
                               "'" + pattern_ + "': a % is followed by h, t, i or %");
            }
            letters_ += letter;
        }
    }
}

std::string CFilePattern::Name(const std::string& camera, unsigned int index) const {
    std::string name;
    for (std::size_t i = 0; i < pattern_.size(); ++i) {
        if (pattern_[i] != '%') {
            name += pattern_[i];
            continue;
        }
        switch (pattern_[++i]) {
            case 'h':
                name += SafeFileName(camera);
                break;
            case 't':
                name += TimeNow();
                break;
            case 'i':
                name += std::to_string(index);
                break;
            default:
                name += '%';
        }
    }
    return name;
}

}  // namespace onvifctl
