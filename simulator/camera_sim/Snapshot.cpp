#include "camera_sim/Snapshot.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "camera_sim/Authentication.h"
#include "camera_sim/Operations.h"

namespace camera_sim {
namespace {

constexpr std::string_view kPrefix = "/snapshot/";
constexpr std::string_view kJpegType = "image/jpeg";
constexpr int kJpegQuality = 80;
constexpr int kMostCells = 640;  // in either direction

std::string ClockText(std::chrono::sys_seconds time) {
    using namespace std::chrono;
    const auto day = floor<days>(time);
    const year_month_day date(day);
    const hh_mm_ss clock(time - day);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02d:%02d:%02d",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return text.data();
}

/// Undoes PackBits: a byte below 128 says how many bytes follow, less one; one above 128 how often
/// the next byte is repeated, 257 less that. Nothing when @p packed ends too early.
std::optional<std::string> Unpack(std::string_view packed, std::size_t limit) {
    std::string bytes;
    while (!packed.empty() && bytes.size() < limit) {
        const std::size_t control = static_cast<unsigned char>(packed.front());
        packed.remove_prefix(1);
        if (control == 128) continue;
        const std::size_t taken = control < 128 ? control + 1 : 1;
        if (packed.size() < taken) return std::nullopt;
        if (control < 128) {
            bytes.append(packed.substr(0, taken));
        } else {
            bytes.append(257 - control, packed.front());
        }
        packed.remove_prefix(taken);
    }
    return bytes;
}

std::optional<MotionCells> CellsOf(const AnalyticsConfiguration& analytics) {
    const auto engine =
        std::find_if(analytics.modules.begin(), analytics.modules.end(),
                     [](const AnalyticsItem& module) { return module.cells.has_value(); });
    if (engine == analytics.modules.end()) return std::nullopt;
    MotionCells cells{std::clamp(engine->cells->width, 0, kMostCells),
                      std::clamp(engine->cells->height, 0, kMostCells),
                      {}};
    for (const AnalyticsItem& rule : analytics.rules) {
        for (const auto& [name, value] : rule.parameters) {
            if (name != "ActiveCells") continue;
            cells.active = ReadActiveCells(value, static_cast<std::size_t>(cells.columns) *
                                                      static_cast<std::size_t>(cells.rows));
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

std::vector<bool> ReadActiveCells(std::string_view text, std::size_t count) {
    constexpr std::size_t kBits = 8;
    const auto packed = DecodeBase64(text);
    const auto bytes = packed ? Unpack(*packed, (count + kBits - 1) / kBits) : std::nullopt;
    if (!bytes) return {};
    std::vector<bool> cells(std::min(count, bytes->size() * kBits));
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const unsigned byte = static_cast<unsigned char>((*bytes)[i / kBits]);
        cells[i] = (byte >> (kBits - 1 - i % kBits) & 1U) != 0;
    }
    return cells;
}

std::optional<TestCard> MakeTestCard(const CameraState& state, const CameraOptions& options,
                                     const Profile& profile, SnapshotTime time) {
    const auto* encoder = FindByToken(state.media.videoEncoders, profile.videoEncoder);
    if (encoder == nullptr) return std::nullopt;
    TestCard card;
    card.size = CardSize(encoder->resolution);
    card.cameraName =
        state.information.model + ":" + std::to_string(options.port) + " " + profile.name;
    card.clock = ClockText(time.system + state.clock.offset);
    if (!profile.ptz.empty() && Offers(options, Ns::kPtz))
        card.position = state.ptz.Position(time.steady);
    const auto* analytics = FindByToken(state.media.analytics, profile.analytics);
    if (analytics != nullptr && options.analytics) card.motion = CellsOf(*analytics);
    return card;
}

Reply SnapshotReply(const CameraState& state, const CameraOptions& options, std::string_view method,
                    std::string_view path, SnapshotTime time) {
    if (method != "GET") return HttpReply(405, "Allow: GET\r\n", {}, {});
    const auto* profile = FindByToken(state.media.profiles, path.substr(kPrefix.size()));
    if (profile == nullptr) return HttpReply(404);
    const auto card = MakeTestCard(state, options, *profile, time);
    if (!card) return HttpReply(404);
    const auto file = CompressJpeg(Draw(*card), kJpegQuality);
    return file ? HttpReply(200, kJpegType, *file) : HttpReply(500);
}

}  // namespace camera_sim
