#include "watch/WatchDisplay.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "CommandLine.h"
#include "output/Printable.h"
#include "system/Environment.h"
#include "watch/LiveTable.h"
#include "watch/WatchTexts.h"

namespace onvifctl {

namespace {

using Json = nlohmann::ordered_json;

Json OrNull(const std::string& text) {
    return text.empty() ? Json() : Json(text);
}

Json ListOf(const DeviceEvent::Items& items) {
    Json list = Json::array();
    for (const auto& [name, value] : items) {
        list.push_back({{"name", name}, {"value", value}});
    }
    return list;
}

void AddTo(Json& line, const ConnectionChange& change) {
    const bool watched = change.state == WatchState::kWatched || change.state == WatchState::kBack;
    line["kind"] = "connection";
    line["state"] = watched ? "back" : "lost";
    line["reason"] = OrNull(change.reason);
    line["final"] = change.state == WatchState::kGivenUp;
}

void AddTo(Json& line, const AlarmChange& change) {
    line["kind"] = change.input ? "alarm-input" : "motion";
    if (change.input) {
        line["input"] = *change.input;
    }
    line["state"] = change.active;
}

void AddTo(Json& line, const DeviceEvent& event) {
    line["kind"] = "event";
    line["topic"] = event.topic;
    line["operation"] = OrNull(event.operation);
    line["deviceTime"] = OrNull(event.deviceTime);
    line["source"] = ListOf(event.source);
    line["key"] = ListOf(event.key);
    line["data"] = ListOf(event.data);
}

std::string Padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

constexpr std::size_t kKindWidth = sizeof "alarm-input-1" - 1;

std::string KindAndState(const ConnectionChange& change, const std::string& camera) {
    return Padded("connection", kKindWidth) + "  " + TextOf(change, camera);
}

std::string KindAndState(const AlarmChange& change, const std::string&) {
    const std::string kind =
        change.input ? "alarm-input-" + std::to_string(*change.input) : "motion";
    return Padded(kind, kKindWidth) + "  " + (change.active ? "active" : "inactive");
}

std::string KindAndState(const DeviceEvent& event, const std::string&) {
    constexpr std::size_t kOperationWidth = sizeof "Initialized" - 1;
    std::string text = event.topic + "  " + Padded(event.operation, kOperationWidth);
    for (const auto* items : {&event.source, &event.key, &event.data}) {
        const char* before = "  ";
        for (const auto& [name, value] : *items) {
            text += std::exchange(before, " ") + name + "=" + value;
        }
    }
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

/// A line for each news, of one form or the other.
class CLineDisplay : public CWatchDisplay {
 public:
    CLineDisplay(const CDataOutput& output, const std::vector<std::string>& cameras, bool json)
        : output_(output), json_(json) {
        std::size_t width = 0;
        for (const std::string& camera : cameras) {
            width = std::max(width, camera.size());
        }
        for (const std::string& camera : cameras) {
            cameras_.push_back(json ? camera : Padded(Printable(camera), width));
        }
    }

    void Show(const WatchNews& news) override {
        TellOfLost(news);
        for (const News& each : news.items) {
            const auto* connection = std::get_if<ConnectionChange>(&each);
            if (connection != nullptr) {
                if (connection->state == WatchState::kWatched) {
                    continue;
                }
                TellOf(*connection);
            }
            const std::string& camera = cameras_[MomentOf(each).camera];
            output_.Write(json_ ? JsonOf(each, camera) + "\n" : Line(each, camera));
        }
    }

 private:
    static std::string Line(const News& news, const std::string& camera) {
        const std::string text =
            std::visit([&camera](const auto& each) { return KindAndState(each, camera); }, news);
        return TimeText(MomentOf(news).time, LocalTime) + "  " + camera + "  " + Printable(text) +
               "\n";
    }

    /// For who has led the output elsewhere.
    void TellOf(const ConnectionChange& change) const {
        if (!toTerminal_ && !change.reason.empty()) {
            Tell(change.reason);
        }
    }

    const CDataOutput& output_;
    const bool json_;
    const bool toTerminal_ = OutputIsTerminal();
    std::vector<std::string> cameras_;
};

}  // namespace

std::string JsonOf(const News& news, const std::string& camera) {
    Json line = {{"camera", camera}, {"time", TimeText(MomentOf(news).time, UtcTime) + "Z"}};
    std::visit([&line](const auto& each) { AddTo(line, each); }, news);
    // What is not UTF-8 must not end the watch.
    return line.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::unique_ptr<CWatchDisplay> MakeWatchDisplay(WatchFormat format, const CDataOutput& output,
                                                const std::vector<std::string>& cameras) {
    if (format == WatchFormat::kLive) {
        if (auto table = MakeLiveTable(output, cameras)) {
            return table;
        }
    }
    return std::make_unique<CLineDisplay>(output, cameras, format == WatchFormat::kJson);
}

}  // namespace onvifctl
