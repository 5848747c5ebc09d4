#include "camera_sim/picture/Snapshot.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "camera_sim/soap/ActiveCells.h"

namespace camera_sim {
namespace {

constexpr std::string_view kPrefix = "/snapshot/";
constexpr std::string_view kJpegType = "image/jpeg";
constexpr int kJpegQuality = 80;
constexpr int kMostCells = 640;  // in either direction

/// Writes a time as a pattern of yyyy, MM, dd, HH, H, hh, h, mm, ss and tt (AM or PM) says.
std::string TimeText(std::string text, std::chrono::sys_seconds time) {
    using namespace std::chrono;
    const auto day = floor<days>(time);
    const year_month_day date(day);
    const hh_mm_ss clock(time - day);
    const auto hour = static_cast<unsigned>(clock.hours().count());
    const std::pair<std::string_view, unsigned> fields[] = {
        {"yyyy", static_cast<unsigned>(static_cast<int>(date.year()))},
        {"MM", static_cast<unsigned>(date.month())},
        {"dd", static_cast<unsigned>(date.day())},
        {"HH", hour},
        {"hh", (hour + 11) % 12 + 1},
        {"H", hour},
        {"h", (hour + 11) % 12 + 1},
        {"mm", static_cast<unsigned>(clock.minutes().count())},
        {"ss", static_cast<unsigned>(clock.seconds().count())},
    };
    for (const auto& [field, value] : fields) {
        const auto at = text.find(field);
        std::string digits = std::to_string(value);
        digits.insert(0, field.size() - std::min(field.size(), digits.size()), '0');
        if (at != std::string::npos) {
            text.replace(at, field.size(), digits);
        }
    }
    const auto half = text.find("tt");
    if (half != std::string::npos) {
        text.replace(half, 2, hour < 12 ? "AM" : "PM");
    }
    return text;
}

std::string OsdText(const Osd& osd, std::chrono::sys_seconds time) {
    if (osd.textType == "Date") {
        return TimeText(osd.dateFormat, time);
    }
    if (osd.textType == "Time") {
        return TimeText(osd.timeFormat, time);
    }
    if (osd.textType == "DateAndTime") {
        return TimeText(osd.dateFormat + " " + osd.timeFormat, time);
    }
    return osd.plainText;
}

CardText OsdOnCard(const Osd& osd, std::chrono::sys_seconds time) {
    CardText text{OsdText(osd, time), osd.x, osd.y};
    if (osd.position != "Custom") {
        text.x = osd.position.ends_with("Left") ? -1 : 1;
        text.y = osd.position.starts_with("Upper") ? 1 : -1;
    }
    return text;
}

std::optional<MotionCells> CellsOf(const AnalyticsConfiguration& analytics) {
    const auto engine =
        std::find_if(analytics.modules.begin(), analytics.modules.end(),
                     [](const AnalyticsItem& module) { return module.cells.has_value(); });
    if (engine == analytics.modules.end()) {
        return std::nullopt;
    }
    MotionCells cells{std::clamp(engine->cells->width, 0, kMostCells),
                      std::clamp(engine->cells->height, 0, kMostCells),
                      {}};
    for (const AnalyticsItem& rule : analytics.rules) {
        for (const auto& [name, value] : rule.parameters) {
            if (name != "ActiveCells") {
                continue;
            }
            cells.active =
                DecodeCells(value, {cells.columns, cells.rows}).value_or(std::vector<bool>{});
        }
    }
    return cells;
}

}  // namespace

bool IsSnapshotRequest(std::string_view target) {
    return target.starts_with(kPrefix);
}

std::string SnapshotPath(std::string_view profileToken) {
    return std::string(kPrefix).append(profileToken);
}

HttpAuthenticationSettings SnapshotAuthentication(const CameraOptions& options) {
    return {options.snapshotAuthentication.value_or(HttpScheme::kNone), options.snapshotRealm,
            options.snapshotQop, options.snapshotNonceLifetime, options.snapshotNonceUses};
}

std::optional<TestCard> MakeTestCard(const CameraState& state, const CameraOptions& options,
                                     const Profile& profile, SnapshotTime time) {
    const auto* encoder = FindByToken(state.media.videoEncoders, profile.videoEncoder);
    if (encoder == nullptr) {
        return std::nullopt;
    }
    TestCard card;
    card.size = CardSize(encoder->resolution);
    card.cameraName =
        state.information.model + ":" + std::to_string(options.port) + " " + profile.name;
    const auto* source = FindByToken(state.media.videoSourceConfigurations, profile.videoSource);
    const auto* video =
        source == nullptr ? nullptr : FindByToken(state.media.videoSources, source->source);
    if (video != nullptr) {
        card.brightness = video->imaging.brightness;
    }
    const auto now = time.system + state.clock.offset;
    card.clock = TimeText("yyyy-MM-dd HH:mm:ss", now);
    for (const Osd& osd : state.media.osds) {
        if (osd.source == profile.videoSource) {
            card.texts.push_back(OsdOnCard(osd, now));
        }
    }
    if (!profile.ptz.empty() && options.ptz.value_or(false)) {
        card.position = state.ptz.Position(time.steady);
    }
    const auto* analytics = FindByToken(state.media.analytics, profile.analytics);
    if (analytics != nullptr && options.analytics) {
        card.motion = CellsOf(*analytics);
    }
    return card;
}

Reply SnapshotReply(const CameraState& state, const CameraOptions& options, std::string_view method,
                    std::string_view path, SnapshotTime time) {
    if (method != "GET") {
        return HttpReply(405, "Allow: GET\r\n", {}, {});
    }
    const auto* profile = FindByToken(state.media.profiles, path.substr(kPrefix.size()));
    if (profile == nullptr) {
        return HttpReply(404);
    }
    const auto card = MakeTestCard(state, options, *profile, time);
    if (!card) {
        return HttpReply(404);
    }
    const auto file = CompressJpeg(Draw(*card), kJpegQuality);
    return file ? HttpReply(200, kJpegType, *file) : HttpReply(500);
}

}  // namespace camera_sim
