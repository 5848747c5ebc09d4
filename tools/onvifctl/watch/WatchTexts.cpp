#include "watch/WatchTexts.h"

#include <array>
#include <cstdio>

#include "CommandLine.h"

namespace onvifctl {

std::string TimeText(std::chrono::system_clock::time_point time, std::tm (*split)(std::time_t)) {
    using std::chrono::milliseconds;
    const auto since = std::chrono::floor<milliseconds>(time.time_since_epoch());
    const auto seconds = std::chrono::floor<std::chrono::seconds>(since);
    const std::tm parts = split(seconds.count());
    std::array<char, 32> day = {};
    std::array<char, 8> fraction = {};
    std::strftime(day.data(), day.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    std::snprintf(fraction.data(), fraction.size(), ".%03d",
                  static_cast<int>((since - seconds).count()));
    return std::string(day.data()) + fraction.data();
}

std::string TextOf(const ConnectionChange& change, const std::string& camera) {
    switch (change.state) {
        case WatchState::kLost:
            return "lost: " + ReasonBeside(change, camera);
        case WatchState::kGivenUp:
            return "not watched: " + ReasonBeside(change, camera);
        case WatchState::kWatched:
        case WatchState::kBack:
            break;
    }
    return "back";
}

std::string ReasonBeside(const ConnectionChange& change, const std::string& camera) {
    const std::size_t end = change.reason.find(' ');
    return end != std::string::npos && camera.starts_with(change.reason.substr(0, end))
               ? change.reason.substr(end + 1)
               : change.reason;
}

void TellOfLost(const WatchNews& news) {
    if (news.lost > 0) {
        Tell(std::to_string(news.lost) + " changes were lost: the output takes them too slowly");
    }
}

}  // namespace onvifctl
