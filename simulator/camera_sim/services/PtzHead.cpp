// The head of the PTZ service: where it is, and how it begins something new.
#include <algorithm>

#include "camera_sim/services/PtzOperations.h"

namespace camera_sim {
namespace {

/// Where a tour that started `elapsed` ago has come; it begins again behind its last spot.
const PtzPreset* PresetOnTour(const PtzHead& head, const PtzTour& tour,
                              std::chrono::steady_clock::duration elapsed) {
    std::chrono::seconds round{0};
    for (const PtzTourSpot& spot : tour.spots) {
        round += spot.stay;
    }
    if (round.count() > 0) {
        elapsed %= round;
    }
    for (const PtzTourSpot& spot : tour.spots) {
        if (elapsed < spot.stay || round.count() == 0) {
            return FindByToken(head.presets, spot.preset);
        }
        elapsed -= spot.stay;
    }
    return nullptr;
}

}  // namespace

std::chrono::steady_clock::time_point PtzNow() {
    return std::chrono::steady_clock::now();
}

void MoveOn(PtzHead& head, const PtzPosition& velocity) {
    const auto now = PtzNow();
    head.start = head.Position(now);
    head.since = now;
    head.until = PtzHead::kNoEnd;
    head.velocity = velocity;
    for (PtzTour& tour : head.tours) {
        tour.state = "Idle";
    }
}

void JumpTo(PtzHead& head, const PtzPosition& position) {
    MoveOn(head, {});
    head.start = position;
}

PtzPosition VelocityOf(const PtzHead& head) {
    return PtzNow() < head.until ? head.velocity : PtzPosition{};
}

PtzPosition PtzHead::Position(std::chrono::steady_clock::time_point now) const {
    for (const PtzTour& tour : tours) {
        if (tour.state != "Touring") {
            continue;
        }
        const PtzPreset* preset = PresetOnTour(*this, tour, now - since);
        return preset == nullptr ? start : preset->position;
    }
    const double seconds = std::chrono::duration<double>(std::min(now, until) - since).count();
    const auto at = [seconds](double from, double speed, double least) {
        return std::clamp(from + speed * seconds, least, 1.0);
    };
    return {at(start.pan, velocity.pan, -1), at(start.tilt, velocity.tilt, -1),
            at(start.zoom, velocity.zoom, 0)};
}

}  // namespace camera_sim
