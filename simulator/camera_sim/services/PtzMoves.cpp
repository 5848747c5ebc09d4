// PTZ service: how the head moves and where it looks.
#include <algorithm>
#include <array>

#include "camera_sim/services/MediaElements.h"
#include "camera_sim/services/MediaOperations.h"
#include "camera_sim/services/PtzOperations.h"
#include "camera_sim/services/Services.h"
#include "camera_sim/soap/Times.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

/// A way to tell the head where to go, and the faults for what it cannot do.
struct MoveKind {
    std::string_view element;
    std::string_view panTiltSpace;
    std::string_view zoomSpace;
    const char* invalid;
};
constexpr MoveKind kContinuous{"Velocity", ptz_space::kPanTiltVelocity, ptz_space::kZoomVelocity,
                               "InvalidVelocity"};
constexpr MoveKind kAbsolute{"Position", ptz_space::kPanTiltPosition, ptz_space::kZoomPosition,
                             "InvalidPosition"};
constexpr MoveKind kRelative{"Translation", ptz_space::kPanTiltTranslation,
                             ptz_space::kZoomTranslation, "InvalidTranslation"};

/// What a request says of each axis; unset where it says nothing.
struct Axes {
    std::optional<double> pan;
    std::optional<double> tilt;
    std::optional<double> zoom;

    PtzPosition Or(const PtzPosition& other) const {
        return {pan.value_or(other.pan), tilt.value_or(other.tilt), zoom.value_or(other.zoom)};
    }
};

/// A number between -1 and 1, as all spaces of this camera have it.
std::optional<double> ReadShare(const XmlElement* element, const char* attribute) {
    const char* text = element == nullptr ? nullptr : element->Attribute(attribute);
    if (text == nullptr) {
        return std::nullopt;
    }
    const auto value = ToDouble(text);
    return value && *value >= -1 && *value <= 1 ? value : std::nullopt;
}

bool IsInSpace(const XmlElement* element, std::string_view space) {
    const char* given = element == nullptr ? nullptr : element->Attribute("space");
    return given == nullptr || *given == '\0' || given == space;
}

Answer ReadAxes(const Call& call, const MoveKind& kind, Axes& axes) {
    const XmlElement* given = Child(&call.request, kind.element);
    const XmlElement* panTilt = Child(given, "PanTilt");
    const XmlElement* zoom = Child(given, "Zoom");
    axes = {ReadShare(panTilt, "x"), ReadShare(panTilt, "y"), ReadShare(zoom, "x")};
    if ((panTilt != nullptr && (!axes.pan || !axes.tilt)) || (zoom != nullptr && !axes.zoom)) {
        return InvalidArgument(kind.invalid, std::string(kind.element) + " is out of range");
    }
    if (!IsInSpace(panTilt, kind.panTiltSpace) || !IsInSpace(zoom, kind.zoomSpace)) {
        return InvalidArgument("SpaceNotSupported", "The space is not supported");
    }
    return kDone;
}

// Without a Timeout the head goes on until it is stopped or can go no further.
Answer ContinuousMove(Call& call) {
    Axes velocity;
    if (auto fault = CheckProfile(call)) {
        return fault;
    }
    if (auto fault = ReadAxes(call, kContinuous, velocity)) {
        return fault;
    }
    const XmlElement* timeout = Child(&call.request, "Timeout");
    const auto duration = ParseDuration(Text(timeout));
    if (timeout != nullptr && !duration) {
        return InvalidArgument("TimeoutNotSupported", "Timeout is not a duration");
    }
    PtzHead& head = call.state.ptz;
    MoveOn(head, velocity.Or(VelocityOf(head)));
    if (duration) {
        head.until = head.since + *duration;
    }
    return kDone;
}

Answer AbsoluteMove(Call& call) {
    Axes position;
    if (auto fault = CheckProfile(call)) {
        return fault;
    }
    if (auto fault = ReadAxes(call, kAbsolute, position)) {
        return fault;
    }
    if (position.zoom.value_or(0) < 0 || (!position.pan && !position.zoom)) {
        return InvalidArgument(kAbsolute.invalid, "The position is missing or out of range");
    }
    JumpTo(call.state.ptz, position.Or(call.state.ptz.Position(PtzNow())));
    return kDone;
}

// A translation beyond the end goes as far as the head can.
Answer RelativeMove(Call& call) {
    Axes translation;
    if (auto fault = CheckProfile(call)) {
        return fault;
    }
    if (auto fault = ReadAxes(call, kRelative, translation)) {
        return fault;
    }
    const PtzPosition from = call.state.ptz.Position(PtzNow());
    const PtzPosition way = translation.Or({});
    JumpTo(call.state.ptz,
           {std::clamp(from.pan + way.pan, -1.0, 1.0), std::clamp(from.tilt + way.tilt, -1.0, 1.0),
            std::clamp(from.zoom + way.zoom, 0.0, 1.0)});
    return kDone;
}

Answer Stop(Call& call) {
    if (auto fault = CheckProfile(call)) {
        return fault;
    }
    const bool panTilt = ToBool(call.Argument("PanTilt")).value_or(true);
    const bool zoom = ToBool(call.Argument("Zoom")).value_or(true);
    PtzHead& head = call.state.ptz;
    PtzPosition velocity = VelocityOf(head);
    if (panTilt) {
        velocity.pan = velocity.tilt = 0;
    }
    if (zoom) {
        velocity.zoom = 0;
    }
    const auto until = head.until;
    MoveOn(head, velocity);
    head.until = until;
    return kDone;
}

Answer GotoHomePosition(Call& call) {
    if (auto fault = CheckProfile(call)) {
        return fault;
    }
    JumpTo(call.state.ptz, call.state.ptz.home);
    return kDone;
}

Answer SetHomePosition(Call& call) {
    if (auto fault = CheckProfile(call)) {
        return fault;
    }
    call.state.ptz.home = call.state.ptz.Position(PtzNow());
    return kDone;
}

const char* MoveStatus(double velocity, double position, double least) {
    const bool moves = velocity > 0 ? position < 1 : velocity < 0 && position > least;
    return moves ? "MOVING" : "IDLE";
}

Answer GetStatus(Call& call) {
    if (auto fault = CheckProfile(call)) {
        return fault;
    }
    const PtzHead& head = call.state.ptz;
    const PtzPosition position = head.Position(PtzNow());
    const PtzPosition velocity = VelocityOf(head);
    const std::string_view pan = MoveStatus(velocity.pan, position.pan, -1);
    const std::string_view tilt = MoveStatus(velocity.tilt, position.tilt, -1);
    CXmlWriter& out = call.out;
    const Scope status(out, Ns::kPtz, "PTZStatus");
    WritePtzPosition(out, "Position", position);
    {
        const Scope moves(out, Ns::kSchema, "MoveStatus");
        out.Element(Ns::kSchema, "PanTilt", pan == "IDLE" ? tilt : pan);
        out.Element(Ns::kSchema, "Zoom", MoveStatus(velocity.zoom, position.zoom, 0));
    }
    out.Element(Ns::kSchema, "UtcTime", FormatUtc(call.systemTime + call.state.clock.offset));
    return kDone;
}

/// The vendor's move to what a rectangle on the picture (0 to 255 either way) shows.
Answer Control3d(Call& call) {
    constexpr double kWidth = 255;
    const auto x = ToInt(call.Argument("CenterPositionX"));
    const auto y = ToInt(call.Argument("CenterPositionY"));
    const auto left = ToInt(call.Argument("StartPositionX"));
    const auto right = ToInt(call.Argument("EndPositionX"));
    if (!x || !y || !left || !right) {
        return InvalidArgument("InvalidPosition", "The rectangle is not complete");
    }
    PtzPosition target = call.state.ptz.Position(PtzNow());
    target.pan = std::clamp(target.pan + *x / kWidth - 0.5, -1.0, 1.0);
    target.tilt = std::clamp(target.tilt + 0.5 - *y / kWidth, -1.0, 1.0);
    target.zoom = std::clamp(target.zoom + (*right > *left ? 0.1 : -0.1), 0.0, 1.0);
    JumpTo(call.state.ptz, target);
    return kDone;
}

constexpr std::array kOperations = {
    Operation{"GetStatus", GetStatus},
    Operation{"AbsoluteMove", AbsoluteMove},
    Operation{"RelativeMove", RelativeMove},
    Operation{"ContinuousMove", ContinuousMove},
    Operation{"Stop", Stop},
    Operation{"GotoHomePosition", GotoHomePosition},
    Operation{"SetHomePosition", SetHomePosition},
    // An element of its own name would not be XML: it starts with a digit.
    Operation{"3DControl", Control3d, "AbsoluteMoveResponse"},
};

}  // namespace

Answer CheckProfile(const Call& call) {
    const auto* profile = FindProfile(call);
    if (profile == nullptr) {
        return NoSuchProfile();
    }
    if (profile->ptz.empty()) {
        return InvalidArgument("NoPTZProfile", "The profile has no PTZ");
    }
    return kDone;
}

void WritePtzPosition(CXmlWriter& out, std::string_view name, const PtzPosition& position) {
    const Scope element(out, Ns::kSchema, name);
    {
        const Scope panTilt(out, Ns::kSchema, "PanTilt");
        out.Attribute("x", CXmlWriter::NumberText(position.pan));
        out.Attribute("y", CXmlWriter::NumberText(position.tilt));
        out.Attribute("space", ptz_space::kPanTiltPosition);
    }
    const Scope zoom(out, Ns::kSchema, "Zoom");
    out.Attribute("x", CXmlWriter::NumberText(position.zoom));
    out.Attribute("space", ptz_space::kZoomPosition);
}

std::span<const Operation> PtzMoveOperations() {
    return kOperations;
}

}  // namespace camera_sim
