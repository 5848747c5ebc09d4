#include "watch/LibraryLog.h"

#include <algorithm>
#include <iostream>
#include <string_view>

#include "system/Environment.h"

namespace onvifctl {

namespace {

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
    file_.emplace();
    if (!IsFollowed()) {
        return;
    }
    if (shown_.empty()) {
        shown_ = verbose ? "info" : "error";
    }
    SetVariable("ONVIF_CLIENT_LOG", "info");
    SetVariable("ONVIF_CLIENT_LOG_FILE", file_->Path());
}

CLibraryLog::~CLibraryLog() {
    if (IsFollowed()) {
        TakeLosses();
    }
}

std::vector<std::string> CLibraryLog::TakeLosses() {
    std::vector<std::string> losses;
    rest_ += ReadOn(file_->Path(), read_).value_or("");
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
