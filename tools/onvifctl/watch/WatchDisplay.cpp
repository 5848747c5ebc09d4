#include "watch/WatchDisplay.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <set>

#include "CommandLine.h"
#include "documents/ResultTable.h"
#include "output/Printable.h"
#include "system/Environment.h"

namespace onvifctl {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// "2026-11-21T14:05:09.123", by LocalTime or UtcTime.
std::string TimeText(std::chrono::system_clock::time_point time, std::tm (*split)(std::time_t)) {
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

std::string JsonLine(const AlarmChange& change, const std::string& camera) {
    using Json = nlohmann::ordered_json;
    Json line = {{"time", TimeText(change.time, UtcTime) + "Z"}, {"camera", camera}};
    if (change.input) {
        line["kind"] = "alarm-input";
        line["input"] = *change.input;
    } else {
        line["kind"] = "motion";
    }
    line["state"] = change.active;
    // What is not UTF-8 must not end the watch.
    return line.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string Padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

void TellWhatWentWrong(const AlarmNews& news) {
    for (const LoginOutcome& login : news.logins) {
        if (login.Failed()) {
            Tell(login.message);
        }
    }
    if (news.lost > 0) {
        Tell(std::to_string(news.lost) + " changes were lost: the output takes them too slowly");
    }
}

class CJsonDisplay : public CWatchDisplay {
 public:
    CJsonDisplay(const CDataOutput& output, const std::vector<std::string>& cameras)
        : output_(output), cameras_(cameras) {}

    void Show(const AlarmNews& news) override {
        TellWhatWentWrong(news);
        for (const AlarmChange& change : news.changes) {
            output_.Write(JsonLine(change, cameras_[change.camera]));
        }
    }

 private:
    const CDataOutput& output_;
    const std::vector<std::string>& cameras_;
};

class CLineDisplay : public CWatchDisplay {
 public:
    CLineDisplay(const CDataOutput& output, const std::vector<std::string>& cameras)
        : output_(output) {
        std::size_t width = 0;
        for (const std::string& camera : cameras) {
            width = std::max(width, camera.size());
        }
        for (const std::string& camera : cameras) {
            cameras_.push_back(Padded(Printable(camera), width));
        }
    }

    void Show(const AlarmNews& news) override {
        TellWhatWentWrong(news);
        for (const AlarmChange& change : news.changes) {
            output_.Write(Line(change));
        }
    }

 private:
    std::string Line(const AlarmChange& change) const {
        constexpr std::size_t kKindWidth = sizeof "alarm-input-1" - 1;
        const std::string kind =
            change.input ? "alarm-input-" + std::to_string(*change.input) : "motion";
        return TimeText(change.time, LocalTime) + "  " + cameras_[change.camera] + "  " +
               Padded(kind, kKindWidth) + "  " + (change.active ? "active" : "inactive") + "\n";
    }

    const CDataOutput& output_;
    std::vector<std::string> cameras_;
};

/// A row per camera, redrawn in place. The cursor waits below the table; nothing of the terminal
/// is changed, so that there is nothing to restore, however the tool ends.
class CLiveTable : public CWatchDisplay {
 public:
    CLiveTable(const CDataOutput& output, const std::vector<std::string>& cameras)
        : output_(output) {
        for (const std::string& camera : cameras) {
            rows_.emplace_back().camera = Printable(camera);
        }
        Draw();
    }

    void Show(const AlarmNews& news) override {
        Note(news);
        if (HasToTell(news)) {
            output_.WriteToTerminal(BackToTop());
            drawn_ = 0;
            TellWhatWentWrong(news);
            Draw();
        } else if (stale_ && Clock::now() >= nextDraw_) {
            Draw();
        }
    }

    milliseconds Patience() const override {
        return stale_ ? std::chrono::ceil<milliseconds>(nextDraw_ - Clock::now())
                      : CWatchDisplay::Patience();
    }

    void Finish() override {
        if (stale_) {
            Draw();
        }
    }

    /// Whether the heading, the rows and the cursor's line fit.
    static bool Fits(std::size_t cameras, const TerminalSize& size) {
        return cameras + 2 <= size.rows;
    }

 private:
    struct Row {
        std::string camera;
        std::string remark = "logging in";  // in place of the states, unless empty
        bool motion = false;
        std::set<unsigned int> inputs;  // the active ones
        std::string lastChange;
    };

    static bool HasToTell(const AlarmNews& news) {
        return news.lost > 0 ||
               std::any_of(news.logins.begin(), news.logins.end(),
                           [](const LoginOutcome& login) { return login.Failed(); });
    }

    void Note(const AlarmNews& news) {
        for (const LoginOutcome& login : news.logins) {
            rows_[login.camera].remark = login.Failed() ? "not watched" : "";
        }
        for (const AlarmChange& change : news.changes) {
            Row& row = rows_[change.camera];
            row.remark.clear();
            row.lastChange = TimeText(change.time, LocalTime);
            if (!change.input) {
                row.motion = change.active;
            } else if (change.active) {
                row.inputs.insert(*change.input);
            } else {
                row.inputs.erase(*change.input);
            }
        }
        stale_ = stale_ || !news.logins.empty() || !news.changes.empty();
    }

    std::string Table() const {
        std::vector<std::vector<std::string>> cells = {
            {"CAMERA", "MOTION", "ALARM INPUT", "LAST CHANGE"}};
        for (const Row& row : rows_) {
            std::string inputs;
            for (const unsigned int input : row.inputs) {
                inputs += (inputs.empty() ? "" : ",") + std::to_string(input);
            }
            if (!row.remark.empty()) {
                cells.push_back({row.camera, row.remark});
            } else {
                cells.push_back({row.camera, row.motion ? "active" : "-",
                                 inputs.empty() ? "-" : inputs + " active", row.lastChange});
            }
        }
        return AlignColumns(cells);
    }

    std::string BackToTop() const {
        return drawn_ == 0 ? "" : "\x1b[" + std::to_string(drawn_) + "A\r\x1b[J";
    }

    /// Cuts what is wider or, by now, higher than the terminal: the way back up would miss the top.
    void Draw() {
        const TerminalSize size = output_.Terminal().value_or(TerminalSize{1, 1});
        std::string text = BackToTop();
        const std::string table = Table();
        drawn_ = 0;
        std::size_t start = 0;
        while (start < table.size() && drawn_ + 1 < size.rows) {
            const std::size_t end = table.find('\n', start);
            text += table.substr(start, std::min(end - start, size.columns - 1)) + "\n";
            start = end + 1;
            ++drawn_;
        }
        output_.WriteToTerminal(text);
        stale_ = false;
        nextDraw_ = Clock::now() + kShortestPause;
    }

    static constexpr milliseconds kShortestPause{100};

    const CDataOutput& output_;
    std::vector<Row> rows_;
    std::size_t drawn_ = 0;  // lines above the cursor that are the table's
    bool stale_ = false;
    Clock::time_point nextDraw_;
};

bool SuitsATable(const CDataOutput& output, std::size_t cameras) {
    const auto size = output.Terminal();
    return size && CLiveTable::Fits(cameras, *size);
}

}  // namespace

std::unique_ptr<CWatchDisplay> MakeWatchDisplay(WatchFormat format, const CDataOutput& output,
                                                const std::vector<std::string>& cameras) {
    if (format == WatchFormat::kJson) {
        return std::make_unique<CJsonDisplay>(output, cameras);
    }
    if (format == WatchFormat::kLive && SuitsATable(output, cameras.size())) {
        return std::make_unique<CLiveTable>(output, cameras);
    }
    return std::make_unique<CLineDisplay>(output, cameras);
}

}  // namespace onvifctl
