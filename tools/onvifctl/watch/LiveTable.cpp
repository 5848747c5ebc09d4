#include "watch/LiveTable.h"

#include <algorithm>
#include <set>

#include "output/Printable.h"
#include "system/Environment.h"
#include "watch/WatchTexts.h"

namespace onvifctl {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using WallTime = std::chrono::system_clock::time_point;

constexpr const char* kCut = "...";
constexpr std::size_t kCutWidth = 3;

bool BeginsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

std::size_t WidthOf(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), BeginsCharacter));
}

/// The first characters of a text.
std::string Head(const std::string& text, std::size_t width) {
    std::size_t end = 0;
    for (; end < text.size(); ++end) {
        if (BeginsCharacter(text[end]) && width-- == 0) {
            break;
        }
    }
    return text.substr(0, end);
}

std::string CutBehind(const std::string& text, std::size_t width) {
    return WidthOf(text) <= width ? text : Head(text, width - std::min(width, kCutWidth)) + kCut;
}

/// Names differ at their ends: the ports of one host, the last numbers of addresses.
std::string CutInFront(const std::string& text, std::size_t width) {
    const std::size_t whole = WidthOf(text);
    return whole <= width
               ? text
               : kCut +
                     text.substr(Head(text, whole + kCutWidth - std::max(width, kCutWidth)).size());
}

std::string Padded(std::string text, std::size_t width) {
    return text.append(std::max(width, WidthOf(text)) - WidthOf(text), ' ');
}

std::string DayOf(WallTime time) {
    return TimeText(time, LocalTime).substr(0, sizeof "2026-11-21" - 1);
}

/// "14:05:09", or "11-20 14:05" of another day.
std::string ShortTime(WallTime time, const std::string& today) {
    const std::string text = TimeText(time, LocalTime);
    return DayOf(time) == today ? text.substr(11, 8) : text.substr(5, 5) + " " + text.substr(11, 5);
}

struct Row {
    std::string camera;
    std::string remark = "logging in";  // in place of the states, unless empty
    std::optional<WallTime> lostSince{};
    bool motion = false;
    std::set<unsigned int> inputs{};  // the active ones
    std::optional<WallTime> lastChange{};
};

struct Cells {
    std::string camera;
    std::string motion;
    std::string inputs;
    std::string time;
    std::string remark{};  // in place of all but the camera
};

std::string TextOf(const std::set<unsigned int>& inputs) {
    constexpr std::size_t kLongest = 20;
    std::string text;
    for (const unsigned int input : inputs) {
        text += (text.empty() ? "" : ",") + std::to_string(input);
    }
    if (text.size() > kLongest) {
        text = std::to_string(inputs.size()) + " of them";
    }
    return text.empty() ? "-" : text + " active";
}

Cells CellsOf(const Row& row, const std::string& today) {
    Cells cells = {row.camera, row.motion ? "active" : "-", TextOf(row.inputs),
                   row.lastChange ? ShortTime(*row.lastChange, today) : ""};
    if (row.lostSince) {
        cells.remark = "lost since " + ShortTime(*row.lostSince, today) + ": ";
    }
    cells.remark += row.remark;
    return cells;
}

/// Lines of at most @p width characters. What does not fit is left out or cut visibly: the time of
/// the last change first, then parts of names and remarks.
std::vector<std::string> LayOut(const std::vector<Cells>& rows, std::size_t width) {
    constexpr std::size_t kGap = 2;
    Cells widest;
    for (const Cells& row : rows) {
        const auto widen = [](std::string& most, const std::string& text) {
            most.resize(std::max(most.size(), WidthOf(text)), ' ');
        };
        widen(widest.camera, row.camera);
        if (row.remark.empty()) {
            widen(widest.motion, row.motion);
            widen(widest.inputs, row.inputs);
            widen(widest.time, row.time);
        }
    }
    const std::size_t states = kGap + widest.motion.size() + kGap + widest.inputs.size();
    std::size_t camera = widest.camera.size();
    const bool timed = camera + states + kGap + widest.time.size() <= width;
    camera = std::min(camera, width - std::min(width, states));
    const std::string gap(kGap, ' ');
    std::vector<std::string> lines;
    for (const Cells& row : rows) {
        std::string line = Padded(CutInFront(row.camera, camera), camera) + gap;
        if (!row.remark.empty()) {
            line += CutBehind(row.remark, width - std::min(width, WidthOf(line)));
        } else {
            line += Padded(row.motion, widest.motion.size()) + gap +
                    Padded(row.inputs, widest.inputs.size()) + (timed ? gap + row.time : "");
        }
        line = Head(line, width);
        lines.push_back(line.substr(0, line.find_last_not_of(' ') + 1));
    }
    return lines;
}

/// A row per camera, redrawn in place. The cursor waits below the table; nothing of the terminal
/// is changed, so that there is nothing to restore, however the tool ends.
class CLiveTable : public CWatchDisplay {
 public:
    CLiveTable(const CDataOutput& output, const std::vector<std::string>& cameras)
        : output_(output) {
        for (const std::string& camera : cameras) {
            rows_.push_back({Printable(camera)});
        }
        Draw();
    }

    void Show(const WatchNews& news) override {
        for (const News& each : news.items) {
            Row& row = rows_[MomentOf(each).camera];
            std::visit([&row](const auto& one) { Note(row, one); }, each);
        }
        stale_ = stale_ || !news.items.empty() || DayOf(std::chrono::system_clock::now()) != day_;
        if (news.lost > 0) {
            output_.WriteToTerminal(BackToTop());
            drawn_ = 0;
            TellOfLost(news);
            Draw();
        } else if (stale_ && Clock::now() >= nextDraw_) {
            Draw();
        }
    }

    milliseconds Patience() const override {
        constexpr std::chrono::minutes kOneDayIsAnother(1);
        return stale_ ? std::chrono::ceil<milliseconds>(nextDraw_ - Clock::now())
                      : kOneDayIsAnother;
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
    static void Note(Row& row, const ConnectionChange& change) {
        Row now = {row.camera, Printable(ReasonBeside(change, row.camera))};
        if (change.state == WatchState::kLost) {
            now.lostSince = change.time;
        } else if (change.state == WatchState::kGivenUp) {
            now.remark = Printable(onvifctl::TextOf(change, row.camera));
        }
        row = now;
    }

    static void Note(Row& row, const AlarmChange& change) {
        row.lastChange = change.time;
        if (!change.input) {
            row.motion = change.active;
        } else if (change.active) {
            row.inputs.insert(*change.input);
        } else {
            row.inputs.erase(*change.input);
        }
    }

    static void Note(const Row&, const DeviceEvent&) {}  // none comes where states are shown

    std::string BackToTop() const {
        return drawn_ == 0 ? "" : "\x1b[" + std::to_string(drawn_) + "A\r\x1b[J";
    }

    /// Leaves out what is, by now, higher than the terminal: the way back up would miss the top.
    void Draw() {
        const TerminalSize size = output_.Terminal().value_or(TerminalSize{1, 1});
        day_ = DayOf(std::chrono::system_clock::now());
        std::vector<Cells> cells = {{"CAMERA", "MOTION", "ALARM INPUT", "LAST CHANGE"}};
        for (const Row& row : rows_) {
            cells.push_back(CellsOf(row, day_));
        }
        std::string text = BackToTop();
        drawn_ = 0;
        for (const std::string& line : LayOut(cells, size.columns - 1)) {
            if (drawn_ + 1 >= size.rows) {
                break;
            }
            text += line + "\n";
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
    std::string day_;        // when they were drawn
    bool stale_ = false;
    Clock::time_point nextDraw_;
};

}  // namespace

std::unique_ptr<CWatchDisplay> MakeLiveTable(const CDataOutput& output,
                                             const std::vector<std::string>& cameras) {
    const auto size = output.Terminal();
    return size && CLiveTable::Fits(cameras.size(), *size)
               ? std::make_unique<CLiveTable>(output, cameras)
               : nullptr;
}

}  // namespace onvifctl
