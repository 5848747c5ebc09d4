#include "camera_sim/soap/Times.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "camera_sim/soap/Values.h"

namespace camera_sim {
namespace {

using std::chrono::milliseconds;

constexpr std::string_view kDigits = "0123456789";
constexpr std::size_t kLongestDuration = 32;
constexpr milliseconds kLongest = std::chrono::hours(24) * 36525;

struct Unit {
    char letter;
    bool ofTime;  ///< stands behind the T
    milliseconds size;
};
constexpr std::array kUnits = {
    Unit{'Y', false, std::chrono::hours(24) * 365}, Unit{'M', false, std::chrono::hours(24) * 30},
    Unit{'D', false, std::chrono::hours(24)},       Unit{'H', true, std::chrono::hours(1)},
    Unit{'M', true, std::chrono::minutes(1)},       Unit{'S', true, std::chrono::seconds(1)},
};

/// Takes digits off the front of @p text.
std::optional<int> TakeNumber(std::string_view& text) {
    const auto end = text.find_first_not_of(kDigits);
    if (end == 0 || end == std::string_view::npos) {
        return std::nullopt;
    }
    const auto number = ToInt(text.substr(0, end));
    text.remove_prefix(end);
    return number;
}

/// Takes a decimal fraction off the front of @p text, if there is one.
std::optional<milliseconds> TakeFraction(std::string_view& text) {
    if (!text.starts_with('.')) {
        return milliseconds(0);
    }
    const auto end = text.find_first_not_of(kDigits, 1);
    if (end == 1 || end == std::string_view::npos || text[end] != 'S') {
        return std::nullopt;
    }
    std::string digits(text.substr(1, end - 1));
    digits.resize(3, '0');
    text.remove_prefix(end);
    return milliseconds(ToInt(digits).value_or(0));
}

/// The number at a fixed place of a text, or nothing.
std::optional<int> Digits(std::string_view text, std::size_t position, std::size_t count) {
    if (position + count > text.size()) {
        return std::nullopt;
    }
    const std::string_view digits = text.substr(position, count);
    return digits.find_first_not_of("0123456789") == std::string_view::npos ? ToInt(digits)
                                                                            : std::nullopt;
}

/// What a dateTime's zone ("Z", "+01:00" or none, which is taken for UTC) is ahead of UTC.
std::optional<std::chrono::minutes> ParseZone(std::string_view text) {
    constexpr int kMostHours = 14;
    if (text.empty() || text == "Z") {
        return std::chrono::minutes(0);
    }
    const auto h = Digits(text, 1, 2), m = Digits(text, 4, 2);
    const bool west = text.front() == '-';
    if ((!west && text.front() != '+') || text.size() != 6 || text[3] != ':' || !h || !m ||
        *m > 59 || *h * 60 + *m > kMostHours * 60) {
        return std::nullopt;
    }
    const std::chrono::minutes ahead(*h * 60 + *m);
    return west ? -ahead : ahead;
}

}  // namespace

std::optional<milliseconds> ParseDuration(std::string_view text) {
    if (!text.starts_with('P')) {
        return std::nullopt;
    }
    text.remove_prefix(1);
    milliseconds sum{0};
    bool inTime = false;
    bool hasField = false;
    auto unit = kUnits.begin();
    while (!text.empty()) {
        if (text.starts_with('T') && !inTime) {
            inTime = true;
            hasField = false;
            text.remove_prefix(1);
            continue;
        }
        const auto number = TakeNumber(text);
        const auto fraction = number ? TakeFraction(text) : std::nullopt;
        if (!fraction) {
            return std::nullopt;
        }
        while (unit != kUnits.end() && (unit->letter != text.front() || unit->ofTime != inTime)) {
            ++unit;
        }
        if (unit == kUnits.end() || *number > kLongest / unit->size) {
            return std::nullopt;
        }
        sum += *number * unit->size + *fraction;
        if (sum > kLongest) {
            return std::nullopt;
        }
        ++unit;
        hasField = true;
        text.remove_prefix(1);
    }
    return hasField ? std::optional(sum) : std::nullopt;
}

bool IsDuration(std::string_view text) {
    if (!text.starts_with('P') || text.size() > kLongestDuration) {
        return false;
    }
    text.remove_prefix(1);
    std::string_view units = "DT";
    bool hasField = false;
    bool inTime = false;
    while (!text.empty()) {
        if (text.starts_with('T') && !inTime) {
            inTime = true;
            hasField = false;
            units = "HMS";
            text.remove_prefix(1);
            continue;
        }
        const auto end = text.find_first_not_of("0123456789");
        if (end == 0 || end == std::string_view::npos) {
            return false;
        }
        std::string_view unit = text.substr(end);
        if (inTime && unit.starts_with('.')) {
            const auto fractionEnd = unit.find_first_not_of("0123456789", 1);
            if (fractionEnd == 1 || fractionEnd == std::string_view::npos ||
                unit[fractionEnd] != 'S') {
                return false;
            }
            unit.remove_prefix(fractionEnd);
        }
        const auto position = units.find(unit.front());
        if (position == std::string_view::npos || unit.front() == 'T') {
            return false;
        }
        units.remove_prefix(position + 1);
        text = unit.substr(1);
        hasField = true;
    }
    return hasField;
}

std::string FormatDuration(milliseconds duration) {
    const auto count = duration.count();
    std::string text = "PT" + std::to_string(count / 1000);
    if (count % 1000 != 0) {
        text += "." + std::to_string(1000 + count % 1000).substr(1);
    }
    return text + "S";
}

std::optional<std::chrono::sys_seconds> ParseDateTime(std::string_view text) {
    using namespace std::chrono;
    constexpr std::string_view kShape = "0000-00-00T00:00:00";
    for (std::size_t i = 0; i < kShape.size(); ++i) {
        if (kShape[i] != '0' && (i >= text.size() || text[i] != kShape[i])) {
            return std::nullopt;
        }
    }
    const auto y = Digits(text, 0, 4), mo = Digits(text, 5, 2), d = Digits(text, 8, 2);
    const auto h = Digits(text, 11, 2), mi = Digits(text, 14, 2), s = Digits(text, 17, 2);
    if (!y || !mo || !d || !h || !mi || !s || *h > 23 || *mi > 59 || *s > 60) {
        return std::nullopt;
    }

    std::string_view rest = text.substr(kShape.size());
    if (rest.starts_with('.')) {
        const auto end = std::min(rest.find_first_not_of(kDigits, 1), rest.size());
        if (end == 1) {
            return std::nullopt;
        }
        rest.remove_prefix(end);
    }
    const auto zone = ParseZone(rest);
    const year_month_day date{year(*y), month(static_cast<unsigned>(*mo)),
                              day(static_cast<unsigned>(*d))};
    if (!zone || !date.ok()) {
        return std::nullopt;
    }
    return sys_days(date) + hours(*h) + minutes(*mi) + seconds(*s) - *zone;
}

std::string FormatUtc(std::chrono::sys_seconds time) {
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(time - day);
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return text.data();
}

std::string FormatUtc(std::chrono::sys_time<milliseconds> time) {
    const auto second = std::chrono::floor<std::chrono::seconds>(time);
    std::string text = FormatUtc(second);
    text.insert(text.size() - 1, "." + std::to_string(1000 + (time - second).count()).substr(1));
    return text;
}

}  // namespace camera_sim
