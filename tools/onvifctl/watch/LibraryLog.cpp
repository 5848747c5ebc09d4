#include "watch/LibraryLog.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string_view>
#include <system_error>

#include "system/Environment.h"
#include "system/FilePath.h"

namespace onvifctl {

namespace {

/// A name that nobody can know before.
std::filesystem::path NewFile() {
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    if (error) {
        return {};
    }
    std::random_device chance;
    std::string name = "onvifctl-" + std::to_string(ProcessId());
    for (int i = 0; i < 4; ++i) {
        name += "-" + std::to_string(chance());
    }
    return folder / (name + ".log");
}

/// Of "DATE TIME info OnvifEvent IP:PORT: the subscription is lost".
std::string LostDevice(std::string_view line) {
    constexpr std::string_view kBefore = " info OnvifEvent ";
    constexpr std::string_view kBehind = ": the subscription is lost";
    constexpr std::size_t kTime = sizeof "2026-11-21 22:57:16.284" - 1;
    if (line.size() <= kTime || line.substr(kTime, kBefore.size()) != kBefore ||
        !line.ends_with(kBehind)) {
        return "";
    }
    line.remove_prefix(kTime + kBefore.size());
    line.remove_suffix(kBehind.size());
    return std::string(line);
}

std::string TextBehind(const std::filesystem::path& path, std::uintmax_t start) {
    std::ifstream stream(path, std::ios::binary);
    stream.seekg(static_cast<std::streamoff>(start));
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string LevelOf(std::string_view line) {
    constexpr std::size_t kTime = sizeof "2026-11-21 22:57:16.284";
    const std::string_view rest = line.substr(std::min(kTime, line.size()));
    return std::string(rest.substr(0, rest.find(' ')));
}

}  // namespace

CLibraryLog::CLibraryLog(bool verbose) : shown_(Variable("ONVIF_CLIENT_LOG")) {
    if (!Variable("ONVIF_CLIENT_LOG_FILE").empty()) {
        return;
    }
    path_ = NewFile();
    if (!std::ofstream(path_)) {
        path_.clear();
        return;
    }
    std::error_code ignored;  // the library's lines disclose no password
    std::filesystem::permissions(
        path_, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write, ignored);
    if (shown_.empty()) {
        shown_ = verbose ? "info" : "error";
    }
    SetVariable("ONVIF_CLIENT_LOG", "info");
    SetVariable("ONVIF_CLIENT_LOG_FILE", TextOf(path_));
}

CLibraryLog::~CLibraryLog() {
    if (IsFollowed()) {
        TakeLosses();
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
        for (int number = 1; std::filesystem::remove(OldFile(number), ignored); ++number) {
        }
    }
}

std::filesystem::path CLibraryLog::OldFile(int number) const {
    std::filesystem::path old = path_;
    return old.replace_extension(std::to_string(number) + ".log");
}

std::string CLibraryLog::ReadOn() {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path_, error);
    if (error || size == read_) {
        return "";
    }
    std::string text;
    if (size < read_) {  // another file has taken its place
        text = TextBehind(OldFile(1), read_);
        read_ = 0;
    }
    const std::string more = TextBehind(path_, read_);
    read_ += more.size();
    return text + more;
}

std::vector<std::string> CLibraryLog::TakeLosses() {
    std::vector<std::string> losses;
    rest_ += ReadOn();
    std::size_t start = 0;
    std::string shown;
    for (std::size_t end = rest_.find('\n'); end != std::string::npos;
         end = rest_.find('\n', start)) {
        std::string line = rest_.substr(start, end - start);
        start = end + 1;
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        if (const std::string device = LostDevice(line); !device.empty()) {
            losses.push_back(device);
        }
        const std::string level = LevelOf(line);
        if (shown_ != "off" && (shown_ != "error" || level == "error")) {
            shown += line + "\n";
        }
    }
    rest_.erase(0, start);
    if (!shown.empty()) {
        std::cerr << shown;
    }
    return losses;
}

}  // namespace onvifctl
