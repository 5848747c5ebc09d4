// Device service: the time that the camera has.
#include <algorithm>
#include <array>

#include "camera_sim/services/Services.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

/// What a POSIX time zone adds to UTC; nothing when it is malformed. Rules for daylight saving
/// may follow; they are accepted and not evaluated.
struct ZoneOffset {
    std::chrono::seconds value{0};
    bool hasRules = false;
};

std::optional<ZoneOffset> ReadTimeZone(std::string_view zone) {
    constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    constexpr std::size_t kShortestName = 3;
    constexpr std::size_t kLongestZone = 64;
    const bool printable =
        std::all_of(zone.begin(), zone.end(), [](char c) { return c > ' ' && c <= '~'; });
    if (!printable || zone.size() > kLongestZone) {
        return std::nullopt;
    }
    std::size_t nameEnd = zone.find_first_not_of(kLetters);
    if (zone.starts_with('<')) {
        nameEnd = zone.find('>') + 1;  // 0 when there is none
    }
    if (nameEnd == std::string_view::npos || nameEnd < kShortestName) {
        return std::nullopt;
    }
    zone.remove_prefix(nameEnd);
    const bool east = zone.starts_with('-');
    if (zone.starts_with('-') || zone.starts_with('+')) {
        zone.remove_prefix(1);
    }

    std::array<int, 3> fields{};  // hours, minutes, seconds
    constexpr std::array kLimits = {24, 59, 59};
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const std::size_t end = std::min(zone.find_first_not_of("0123456789"), zone.size());
        const auto number = end > 2 ? std::nullopt : ToInt(zone.substr(0, end));
        if (!number || *number > kLimits[i]) {
            return std::nullopt;
        }
        fields[i] = *number;
        zone.remove_prefix(end);
        if (!zone.starts_with(':')) {
            break;
        }
        zone.remove_prefix(1);
    }
    // POSIX counts westwards.
    const std::chrono::seconds west = std::chrono::hours(fields[0]) +
                                      std::chrono::minutes(fields[1]) +
                                      std::chrono::seconds(fields[2]);
    return ZoneOffset{east ? west : -west, !zone.empty()};
}

void WriteDateTime(CXmlWriter& out, std::string_view name, std::chrono::sys_seconds time) {
    const auto days = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(days);
    const std::chrono::hh_mm_ss clock(time - days);
    const Scope element(out, Ns::kSchema, name);
    {
        const Scope timeElement(out, Ns::kSchema, "Time");
        out.Element(Ns::kSchema, "Hour", static_cast<int>(clock.hours().count()));
        out.Element(Ns::kSchema, "Minute", static_cast<int>(clock.minutes().count()));
        out.Element(Ns::kSchema, "Second", static_cast<int>(clock.seconds().count()));
    }
    const Scope dateElement(out, Ns::kSchema, "Date");
    out.Element(Ns::kSchema, "Year", static_cast<int>(date.year()));
    out.Element(Ns::kSchema, "Month", static_cast<int>(static_cast<unsigned>(date.month())));
    out.Element(Ns::kSchema, "Day", static_cast<int>(static_cast<unsigned>(date.day())));
}

Answer GetSystemDateAndTime(Call& call) {
    const CameraClock& clock = call.state.clock;
    const auto now = call.systemTime + clock.offset;
    const Scope element(call.out, Ns::kDevice, "SystemDateAndTime");
    call.out.Element(Ns::kSchema, "DateTimeType", clock.type);
    call.out.Element(Ns::kSchema, "DaylightSavings", clock.daylightSavings);
    const auto zone = ReadTimeZone(clock.timeZone);
    {
        const Scope timeZone(call.out, Ns::kSchema, "TimeZone");
        call.out.Element(Ns::kSchema, "TZ", clock.timeZone);
    }
    WriteDateTime(call.out, "UTCDateTime", now);
    if (zone && !zone->hasRules) {
        WriteDateTime(call.out, "LocalDateTime", now + zone->value);
    }
    return kDone;
}

std::optional<std::chrono::sys_seconds> ReadDateTime(const XmlElement* element) {
    using namespace std::chrono;
    const XmlElement* time = Child(element, "Time");
    const XmlElement* date = Child(element, "Date");
    const auto h = ToInt(ChildText(time, "Hour")), mi = ToInt(ChildText(time, "Minute")),
               s = ToInt(ChildText(time, "Second"));
    const auto y = ToInt(ChildText(date, "Year")), mo = ToInt(ChildText(date, "Month")),
               d = ToInt(ChildText(date, "Day"));
    if (!h || !mi || !s || !y || !mo || !d) {
        return std::nullopt;
    }
    const auto within = [](int value, int low, int high) { return value >= low && value <= high; };
    if (!within(*h, 0, 23) || !within(*mi, 0, 59) || !within(*s, 0, 61) ||
        !within(*y, 1970, 9999) || !within(*mo, 1, 12) || !within(*d, 1, 31)) {
        return std::nullopt;
    }
    const year_month_day calendarDay{year(*y), month(static_cast<unsigned>(*mo)),
                                     day(static_cast<unsigned>(*d))};
    if (!calendarDay.ok()) {
        return std::nullopt;
    }
    return sys_days(calendarDay) + hours(*h) + minutes(*mi) + seconds(*s);
}

struct ClockRefusal {
    std::string_view name;
    std::string_view code;
    std::string_view subcode;
    std::string_view reason;
};
constexpr std::array kRefusals = {
    ClockRefusal{"not-authorized", "Sender", "NotAuthorized", "Sender not Authorized"},
    ClockRefusal{"prohibited", "Sender", "OperationProhibited", "The operation is prohibited"},
    ClockRefusal{"failed", "Receiver", "Action", "Action Failed"},
};

// With type NTP the clock goes on as it is: no time server is there to move it.
Answer SetSystemDateAndTime(Call& call) {
    for (const ClockRefusal& refusal : kRefusals) {
        if (refusal.name == call.options.clockRefusal) {
            return SoapFault{std::string(refusal.code),
                             std::string(refusal.subcode),
                             {},
                             std::string(refusal.reason)};
        }
    }
    CameraClock clock = call.state.clock;
    clock.type = call.Argument("DateTimeType");
    if (clock.type != "Manual" && clock.type != "NTP") {
        return InvalidArgument({}, "DateTimeType is neither Manual nor NTP");
    }
    const auto daylightSavings = ToBool(call.Argument("DaylightSavings"));
    if (!daylightSavings) {
        return InvalidArgument({}, "DaylightSavings is neither true nor false");
    }
    clock.daylightSavings = *daylightSavings;
    if (const XmlElement* zone = Child(&call.request, "TimeZone")) {
        clock.timeZone = ChildText(zone, "TZ");
        if (!ReadTimeZone(clock.timeZone)) {
            return InvalidArgument("InvalidTimeZone", "The time zone is not a POSIX time zone");
        }
    }
    if (clock.type == "Manual") {
        const auto time = ReadDateTime(Child(&call.request, "UTCDateTime"));
        if (!time) {
            return InvalidArgument("InvalidDateTime", "UTCDateTime is missing or not a time");
        }
        clock.offset = *time - call.systemTime;
    }
    call.state.clock = std::move(clock);
    return kDone;
}

constexpr std::array kOperations = {
    Operation{"GetSystemDateAndTime", GetSystemDateAndTime},
    Operation{"SetSystemDateAndTime", SetSystemDateAndTime},
};

}  // namespace

std::vector<std::string> ClockRefusalNames() {
    std::vector<std::string> names;
    for (const ClockRefusal& refusal : kRefusals) {
        names.emplace_back(refusal.name);
    }
    return names;
}

std::span<const Operation> DeviceClockOperations() {
    return kOperations;
}

}  // namespace camera_sim
