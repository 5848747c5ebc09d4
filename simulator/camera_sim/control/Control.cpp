#include "camera_sim/control/Control.h"

#include <algorithm>
#include <array>

#include "camera_sim/control/Reports.h"
#include "camera_sim/soap/Values.h"

namespace camera_sim {
namespace {

constexpr std::string_view kPrefix = "/control/";
/// Ten years, in seconds.
constexpr int kLargestOffset = 10 * 366 * 24 * 3600;

Reply BadRequest(std::string reason) {
    return HttpReply(400, kTextType, std::move(reason) + "\n");
}
Reply Done() {
    return HttpReply(200, kTextType, "ok\n");
}
template <std::string (*Report)(const IControlledCamera&)>
Reply Tell(IControlledCamera& camera, const HttpRequest&) {
    return HttpReply(200, kJsonType, Report(camera));
}

Reply GetHelp(IControlledCamera&, const HttpRequest&) {
    return HttpReply(200, kTextType, ControlHelp());
}

Reply ClearRequests(IControlledCamera& camera, const HttpRequest&) {
    camera.ClearEvidence();
    return Done();
}

// All or none of the lines take effect.
Reply AddFaults(IControlledCamera& camera, const HttpRequest& request) {
    std::vector<PlannedFault> planned;
    std::string_view rest = request.body;
    while (!rest.empty()) {
        const auto end = std::min(rest.find('\n'), rest.size());
        std::string_view line = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (line.empty()) {
            continue;
        }
        std::string error;
        auto fault = ParseFault(line, error);
        if (!fault) {
            return BadRequest(std::move(error));
        }
        planned.push_back(*std::move(fault));
    }
    if (planned.empty()) {
        return BadRequest("no fault given");
    }
    for (PlannedFault& fault : planned) {
        camera.Inject(std::move(fault));
    }
    return Done();
}

Reply ClearFaults(IControlledCamera& camera, const HttpRequest&) {
    camera.ClearFaults();
    return Done();
}

Reply SetClockOffset(IControlledCamera& camera, const HttpRequest& request) {
    std::string_view text = request.body;
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
        text.remove_suffix(1);
    }
    const auto offset = ToInt(text);
    if (!offset || *offset > kLargestOffset || *offset < -kLargestOffset) {
        return BadRequest("the offset is a number of seconds, at most ten years");
    }
    camera.Change([&](CameraState& state) { state.clock.offset = std::chrono::seconds(*offset); });
    return Done();
}

/// A body of "true" or "false".
std::optional<bool> ReadSwitch(const HttpRequest& request) {
    std::string_view text = request.body;
    while (text.ends_with('\n') || text.ends_with('\r')) {
        text.remove_suffix(1);
    }
    return ToBool(text);
}

Reply SetMotion(IControlledCamera& camera, const HttpRequest& request) {
    const auto motion = ReadSwitch(request);
    if (!motion) {
        return BadRequest("the body is neither true nor false");
    }
    camera.Change([&](CameraState& state) {
        for (VideoSource& source : state.media.videoSources) {
            source.motion = *motion;
        }
    });
    return Done();
}

/// What follows the last slash of the path.
std::string_view LastName(const HttpRequest& request) {
    const std::string_view path = PathOf(request.target);
    return path.substr(path.rfind('/') + 1);
}

Reply SetSourceMotion(IControlledCamera& camera, const HttpRequest& request) {
    const auto motion = ReadSwitch(request);
    if (!motion) {
        return BadRequest("the body is neither true nor false");
    }
    bool found = false;
    camera.Change([&](CameraState& state) {
        VideoSource* source = FindByToken(state.media.videoSources, LastName(request));
        found = source != nullptr;
        if (found) {
            source->motion = *motion;
        }
    });
    return found ? Done() : HttpReply(404, kTextType, "no such video source\n");
}

Reply SetInput(IControlledCamera& camera, const HttpRequest& request) {
    const auto active = ReadSwitch(request);
    if (!active) {
        return BadRequest("the body is neither true nor false");
    }
    bool found = false;
    camera.Change([&](CameraState& state) {
        DigitalInput* input = FindByToken(state.inputs, LastName(request));
        found = input != nullptr;
        if (found) {
            input->active = *active;
        }
    });
    return found ? Done() : HttpReply(404, kTextType, "no such input\n");
}

Reply RemoveInput(IControlledCamera& camera, const HttpRequest& request) {
    bool found = false;
    camera.Change([&](CameraState& state) {
        found = std::erase_if(state.inputs, [&](const DigitalInput& input) {
                    return input.token == LastName(request);
                }) > 0;
    });
    return found ? Done() : HttpReply(404, kTextType, "no such input\n");
}

Reply Reboot(IControlledCamera& camera, const HttpRequest&) {
    camera.Reboot();
    return Done();
}

struct ControlRow {
    std::string_view method;
    std::string_view name;  ///< with a slash at the end: and what follows
    Reply (*handler)(IControlledCamera&, const HttpRequest&);
};

constexpr std::array kControls = {
    ControlRow{"GET", "", GetHelp},
    ControlRow{"GET", "state", Tell<ReportState>},
    ControlRow{"GET", "counters", Tell<ReportCounters>},
    ControlRow{"GET", "requests", Tell<ReportRequests>},
    ControlRow{"DELETE", "requests", ClearRequests},
    ControlRow{"GET", "faults", Tell<ReportFaults>},
    ControlRow{"POST", "faults", AddFaults},
    ControlRow{"DELETE", "faults", ClearFaults},
    ControlRow{"POST", "clock-offset", SetClockOffset},
    ControlRow{"POST", "motion", SetMotion},
    ControlRow{"POST", "motion/", SetSourceMotion},
    ControlRow{"POST", "inputs/", SetInput},
    ControlRow{"DELETE", "inputs/", RemoveInput},
    ControlRow{"GET", "subscriptions", Tell<ReportSubscriptions>},
    ControlRow{"POST", "reboot", Reboot},
};

}  // namespace

std::string_view ControlHelp() {
    return R"(Control requests, on the camera's own port:
  GET    /control/              this text
  GET    /control/state         what the camera knows about itself (JSON)
  GET    /control/counters      requests per operation (JSON)
  GET    /control/requests      the latest requests (JSON)
  DELETE /control/requests      empty requests and counters
  GET    /control/faults        the faults that wait (JSON)
  POST   /control/faults        add faults, one a line:
                                  curl -d 'GetProfiles@2=delay:500' URL/control/faults
  DELETE /control/faults        remove all faults
  POST   /control/clock-offset  set the camera's time minus this machine's, in seconds
  POST   /control/motion        begin or end motion: true or false
  POST   /control/motion/TOKEN  the same at one video source
  POST   /control/inputs/TOKEN  switch a digital input: true or false
                                  curl -d true URL/control/inputs/Input_1
  DELETE /control/inputs/TOKEN  remove a digital input: events tell that it was deleted
  GET    /control/subscriptions the event subscriptions (JSON)
  POST   /control/reboot        drop all connections, forget all subscriptions
)";
}

bool IsControlRequest(std::string_view target) {
    return target.starts_with(kPrefix);
}

Reply HandleControl(IControlledCamera& camera, const HttpRequest& request) {
    const std::string_view name = PathOf(request.target).substr(kPrefix.size());
    bool known = false;
    for (const ControlRow& row : kControls) {
        const bool matches =
            row.name == name || (row.name.ends_with('/') && name.starts_with(row.name));
        known = known || matches;
        if (matches && row.method == request.method) {
            return row.handler(camera, request);
        }
    }
    return HttpReply(known ? 405 : 404, kTextType, ControlHelp());
}

}  // namespace camera_sim
