// Imaging service.
#include <algorithm>
#include <array>
#include <cmath>

#include "camera_sim/services/ImagingElements.h"
#include "camera_sim/services/MediaElements.h"
#include "camera_sim/services/Services.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;
using TimePoint = std::chrono::steady_clock::time_point;

constexpr Range kFullRange{-1, 1};
constexpr Range kFocusPosition{0, 1};
constexpr Range kFocusSpeed{0, 1};

SoapFault NoSource() {
    return InvalidArgument("NoSource", "No such video source");
}

VideoSource* RequestedSource(Call& call) {
    return FindByToken(call.state.media.videoSources, call.Argument("VideoSourceToken"));
}

TimePoint Now() {
    return std::chrono::steady_clock::now();
}

Answer GetImagingSettings(Call& call) {
    const VideoSource* source = RequestedSource(call);
    if (source == nullptr) {
        return NoSource();
    }
    const Scope settings(call.out, Ns::kImaging, "ImagingSettings");
    WriteImagingSettings(call.out, *source);
    return kDone;
}

// What is set lasts as long as the camera does, with or without ForcePersistence.
Answer SetImagingSettings(Call& call) {
    VideoSource* source = RequestedSource(call);
    if (source == nullptr) {
        return NoSource();
    }
    const XmlElement* persistence = Child(&call.request, "ForcePersistence");
    if (persistence != nullptr && !ToBool(Text(persistence))) {
        return InvalidSettings("ForcePersistence");
    }
    const XmlElement* given = Child(&call.request, "ImagingSettings");
    if (given == nullptr) {
        return InvalidSettings("ImagingSettings");
    }
    ImagingSettings changed = source->imaging;
    if (auto fault = ReadImagingSettings(given, *source, changed)) {
        return fault;
    }
    source->imaging = std::move(changed);
    return kDone;
}

Answer GetOptions(Call& call) {
    const VideoSource* source = RequestedSource(call);
    if (source == nullptr) {
        return NoSource();
    }
    const Scope options(call.out, Ns::kImaging, "ImagingOptions");
    WriteImagingOptions(call.out, *source);
    return kDone;
}

Answer GetMoveOptions(Call& call) {
    const VideoSource* source = RequestedSource(call);
    if (source == nullptr) {
        return NoSource();
    }
    const Scope options(call.out, Ns::kImaging, "MoveOptions");
    if (!source->motorizedFocus) {
        return kDone;
    }
    {
        const Scope absolute(call.out, Ns::kSchema, "Absolute");
        WriteRange(call.out, "Position", kFocusPosition);
        WriteRange(call.out, "Speed", kFocusSpeed);
    }
    {
        const Scope relative(call.out, Ns::kSchema, "Relative");
        WriteRange(call.out, "Distance", kFullRange);
        WriteRange(call.out, "Speed", kFocusSpeed);
    }
    const Scope continuous(call.out, Ns::kSchema, "Continuous");
    WriteRange(call.out, "Speed", kFullRange);
    return kDone;
}

/// The fault for a source whose focus cannot be moved; nothing for one that can.
Answer CheckFocus(const VideoSource* source) {
    if (source == nullptr) {
        return NoSource();
    }
    if (source->motorizedFocus) {
        return kDone;
    }
    return SoapFault{"Receiver", "ActionNotSupported", "NoImagingForSource",
                     "The video source has no motorised focus"};
}

std::optional<double> ReadNumber(const XmlElement* parent, std::string_view name, Range range) {
    const auto value = ToDouble(ChildText(parent, name));
    if (!value || *value < range.minimum || *value > range.maximum) {
        return std::nullopt;
    }
    return value;
}

/// The lens with the requested order; nothing when that is not valid.
std::optional<FocusLens> Ordered(const XmlElement* focus, const VideoSource& source) {
    FocusLens lens;
    lens.since = Now();
    lens.start = source.lens.Position(lens.since);
    if (const XmlElement* continuous = Child(focus, "Continuous")) {
        const auto speed = ReadNumber(continuous, "Speed", kFullRange);
        if (!speed) {
            return std::nullopt;
        }
        lens.speed = std::abs(*speed);
        lens.destination = *speed > 0 ? kFocusPosition.maximum : kFocusPosition.minimum;
        return lens;
    }
    const XmlElement* absolute = Child(focus, "Absolute");
    const XmlElement* order = absolute != nullptr ? absolute : Child(focus, "Relative");
    const auto target = absolute != nullptr ? ReadNumber(order, "Position", kFocusPosition)
                                            : ReadNumber(order, "Distance", kFullRange);
    const auto speed = Child(order, "Speed") == nullptr ? source.imaging.focus.defaultSpeed
                                                        : ReadNumber(order, "Speed", kFocusSpeed);
    if (!target || !speed) {
        return std::nullopt;
    }
    lens.speed = *speed;
    lens.destination = std::clamp(absolute != nullptr ? *target : lens.start + *target,
                                  kFocusPosition.minimum, kFocusPosition.maximum);
    return lens;
}

// A move by hand ends the automatic focus.
Answer Move(Call& call) {
    VideoSource* source = RequestedSource(call);
    if (auto fault = CheckFocus(source)) {
        return fault;
    }
    const auto lens = Ordered(Child(&call.request, "Focus"), *source);
    if (!lens) {
        return InvalidSettings("Focus");
    }
    source->lens = *lens;
    source->imaging.focus.mode = "MANUAL";
    return kDone;
}

Answer Stop(Call& call) {
    VideoSource* source = RequestedSource(call);
    if (auto fault = CheckFocus(source)) {
        return fault;
    }
    const double position = source->lens.Position(Now());
    source->lens = {position, position, 0, {}};
    return kDone;
}

Answer GetStatus(Call& call) {
    const VideoSource* source = RequestedSource(call);
    if (source == nullptr) {
        return NoSource();
    }
    const Scope status(call.out, Ns::kImaging, "Status");
    if (!source->motorizedFocus) {
        return kDone;
    }
    const FocusLens& lens = source->lens;
    const double position = lens.Position(Now());
    const bool moving = lens.speed > 0 && position != lens.destination;
    const Scope focus(call.out, Ns::kSchema, "FocusStatus20");
    call.out.Element(Ns::kSchema, "Position", position);
    call.out.Element(Ns::kSchema, "MoveStatus", moving ? "MOVING" : "IDLE");
    return kDone;
}

constexpr std::array kOperations = {
    Operation{"GetImagingSettings", GetImagingSettings},
    Operation{"SetImagingSettings", SetImagingSettings},
    Operation{"GetOptions", GetOptions},
    Operation{"GetMoveOptions", GetMoveOptions},
    Operation{"Move", Move},
    Operation{"Stop", Stop},
    Operation{"GetStatus", GetStatus},
};

}  // namespace

double FocusLens::Position(std::chrono::steady_clock::time_point now) const {
    const double way = speed * std::chrono::duration<double>(now - since).count();
    return destination > start ? std::min(start + way, destination)
                               : std::max(start - way, destination);
}

std::span<const Operation> ImagingOperations() {
    return kOperations;
}

}  // namespace camera_sim
