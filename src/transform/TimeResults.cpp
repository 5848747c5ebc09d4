#include "transform/TimeResults.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "transform/Conversions.h"
#include "transform/DeviceResults.h"
#include "transform/XmlTransform.h"

namespace onvif_client {

namespace {

constexpr CopiedValue kTimeRows[] = {{"Hour", "hour"}, {"Minute", "minute"}, {"Second", "second"}};
constexpr CopiedValue kDateRows[] = {{"Year", "year"}, {"Month", "month"}, {"Day", "day"}};

const XMLElement* FindSystemDateAndTime(const XMLElement* envelope) {
    return FindElement(envelope, "Envelope/Body/GetSystemDateAndTimeResponse/SystemDateAndTime");
}

void CopyUtcDateTime(const XMLElement* utc, XMLElement* command) {
    XMLElement* copied = Append(command, "UTCDateTime");
    CopyValues(FirstChild(utc, "Time"), Append(copied, "time"), kTimeRows);
    CopyValues(FirstChild(utc, "Date"), Append(copied, "date"), kDateRows);
}

void CopyDateAndTime(const ReplyValues& reply, XMLElement* command) {
    constexpr CopiedValue kType[] = {{"DateTimeType", "type"}};
    constexpr CopiedValue kTimeZone[] = {{"TimeZone/TZ", "timeZone"}};

    const XMLElement* source = FindSystemDateAndTime(reply.envelope);
    CopyValues(source, command, kType);
    if (const XMLElement* utc = FirstChild(source, "UTCDateTime")) {
        CopyUtcDateTime(utc, command);
    }
    if (const XMLElement* daylight = FirstChild(source, "DaylightSavings")) {
        Append(command, "daylightSaving", TextOf(daylight) == "true" ? "on" : "off");
    }
    CopyValues(source, command, kTimeZone);
}

}  // namespace

constinit const ResultFrame kDateAndTimeResult = {"GetResponse", "dateAndTime", CopyDateAndTime};

std::string TransGetSystemDateAndTimeForAuthentication(std::string_view reply,
                                                       std::string& result) {
    const CXmlDocument trimmed(CXmlTransform::TrimXmlNamespace(reply));
    const XMLElement* utc = FirstChild(FindSystemDateAndTime(trimmed.Root()), "UTCDateTime");
    const auto hasAll = [utc](const char* group, const auto& rows) {
        const XMLElement* parent = FirstChild(utc, group);
        return std::all_of(std::begin(rows), std::end(rows), [parent](const CopiedValue& row) {
            return FirstChild(parent, row.source) != nullptr;
        });
    };
    if (!hasAll("Time", kTimeRows) || !hasAll("Date", kDateRows)) {
        return {};
    }
    CResultDocument document;
    CopyUtcDateTime(utc, document.Command("GetResponse", "dateAndTime"));
    result = document.Print();
    return CreatedFromDeviceTime(result);
}

std::optional<CalendarTime> ReadDeviceTime(std::string_view reply) {
    const CXmlDocument trimmed(CXmlTransform::TrimXmlNamespace(reply));
    const XMLElement* utc = FirstChild(FindSystemDateAndTime(trimmed.Root()), "UTCDateTime");
    CalendarTime read;
    const std::pair<std::string_view, int*> fields[] = {
        {"Date/Year", &read.year}, {"Date/Month", &read.month},   {"Date/Day", &read.day},
        {"Time/Hour", &read.hour}, {"Time/Minute", &read.minute}, {"Time/Second", &read.second}};
    for (const auto& [path, place] : fields) {
        const auto number = ReadInt(TextAt(utc, path));
        if (!number) {
            return std::nullopt;
        }
        *place = *number;
    }
    return read;
}

std::string CreatedFromDeviceTime(const std::string& deviceTimeResult) {
    const CXmlDocument document(deviceTimeResult);
    const XMLElement* utc = document.Find("GetResponse/dateAndTime/UTCDateTime");
    const XMLElement* date = FirstChild(utc, "date");
    const XMLElement* time = FirstChild(utc, "time");
    const std::string year(TextAt(date, "year").substr(0, 16));
    char created[128];
    std::snprintf(created, sizeof created, "%s-%02d-%02dT%02d:%02d:%02dZ", year.c_str(),
                  ToInt(TextAt(date, "month")), ToInt(TextAt(date, "day")),
                  ToInt(TextAt(time, "hour")), ToInt(TextAt(time, "minute")),
                  ToInt(TextAt(time, "second")));
    return created;
}

}  // namespace onvif_client
