#include <array>
#include <fstream>

#include "commands/DeviceRequests.h"
#include "commands/Envelope.h"
#include "commands/EnvelopeFiller.h"
#include "transform/Conversions.h"

namespace onvif_client {

namespace {

constexpr FixedText kClockBody = "<tds:GetSystemDateAndTime/>";
constexpr auto kGetSystemDateAndTime = SoapEnvelope(kTds + kTt, kClockBody);
constexpr auto kBareClock = BareSoapEnvelope(kTds + kTt, kClockBody);

constexpr auto kSetSystemDateAndTime = SoapEnvelope(FixedText(""), FixedText(""));
constexpr auto kLoginClockSetting =
    SoapEnvelope(kTds + kTt, FixedText("<tds:SetSystemDateAndTime/>"));

struct Field {
    const char* element;
    const char* parameter;
};

/// Appends an unprefixed group of the schema's namespace with its numbers.
void AddFields(CEnvelopeFiller& envelope, XMLElement* parent, const char* group,
               const std::array<Field, 3>& fields, const CommandRequest& request) {
    XMLElement* added = envelope.Add(parent, group);
    added->SetAttribute("xmlns", kSchemaNamespace);
    for (const Field& field : fields) {
        envelope.Add(added, field.element, std::to_string(ToInt(request.Text(field.parameter))));
    }
}

}  // namespace

std::string BuildGetSystemDateAndTime(const CommandRequest&) {
    return std::string(kGetSystemDateAndTime);
}

std::string_view BareClockEnvelope() {
    return kBareClock;
}

std::string BuildSetSystemDateAndTime(const CommandRequest& request) {
    CEnvelopeFiller envelope(kSetSystemDateAndTime, "");
    XMLElement* body = envelope.Operation();
    DeclareSchemaInstance(body);

    XMLElement* setting = envelope.Add(body, "SetSystemDateAndTime");
    setting->SetAttribute("xmlns", kDeviceNamespace);
    envelope.Add(setting, "DateTimeType", request.Text("type"));
    envelope.Add(setting, "DaylightSavings",
                 request.Text("daylightSaving/switch") == "on" ? "true" : "false");
    envelope.Add(setting, "TimeZone/TZ", request.Text("timeZone/tz"))
        ->SetAttribute("xmlns", kSchemaNamespace);
    if (request.Text("type") == "Manual") {
        XMLElement* utc = envelope.Add(setting, "UTCDateTime");
        AddFields(envelope, utc, "Time",
                  {{{"Hour", "time/hour"}, {"Minute", "time/minute"}, {"Second", "time/second"}}},
                  request);
        AddFields(envelope, utc, "Date",
                  {{{"Year", "date/year"}, {"Month", "date/month"}, {"Day", "date/day"}}}, request);
    }
    return envelope.Print();
}

std::string BuildLoginClockSetting(const CalendarTime& utc,
                                   const std::optional<std::string>& timeZone) {
    CEnvelopeFiller envelope(kLoginClockSetting, "tds:SetSystemDateAndTime");
    XMLElement* setting = envelope.Operation();
    envelope.Add(setting, "tds:DateTimeType", "Manual");
    envelope.Add(setting, "tds:DaylightSavings", "false");
    if (timeZone) {
        envelope.Add(setting, "tds:TimeZone/tt:TZ", *timeZone);
    }
    XMLElement* dateTime = envelope.Add(setting, "tds:UTCDateTime");
    XMLElement* time = envelope.Add(dateTime, "tt:Time");
    envelope.Add(time, "tt:Hour", std::to_string(utc.hour));
    envelope.Add(time, "tt:Minute", std::to_string(utc.minute));
    envelope.Add(time, "tt:Second", std::to_string(utc.second));
    XMLElement* date = envelope.Add(dateTime, "tt:Date");
    envelope.Add(date, "tt:Year", std::to_string(utc.year));
    envelope.Add(date, "tt:Month", std::to_string(utc.month));
    envelope.Add(date, "tt:Day", std::to_string(utc.day));
    return envelope.Print();
}

std::optional<std::string> ReadLocalTimeZone(const char* file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        return std::nullopt;
    }
    constexpr std::size_t kLargestFile = 65536;
    std::string text(kLargestFile, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(stream.gcount()));

    const CXmlDocument document(text);
    const XMLElement* zone = document.Find("response/content/timezoneInfo/timeZone");
    if (zone == nullptr) {
        return std::nullopt;
    }
    return std::string(TextOf(zone));
}

}  // namespace onvif_client
