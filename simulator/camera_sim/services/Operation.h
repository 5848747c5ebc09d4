/// @file
/// What an operation is: one row of a table and one function.
#ifndef CAMERA_SIM_SERVICES_OPERATION_H
#define CAMERA_SIM_SERVICES_OPERATION_H

#include <chrono>
#include <optional>
#include <string_view>

#include "camera_sim/events/EventHub.h"
#include "camera_sim/soap/Namespaces.h"
#include "camera_sim/soap/SoapFault.h"
#include "camera_sim/soap/SoapRequest.h"
#include "camera_sim/soap/Values.h"
#include "camera_sim/soap/XmlWriter.h"
#include "camera_sim/state/CameraOptions.h"
#include "camera_sim/state/CameraState.h"

namespace camera_sim {

/// What a handler gets.
struct Call {
    CameraState& state;
    const CameraOptions& options;
    /// The operation's element.
    const XmlElement& request;
    /// Stands inside the answer's element; what is written before a fault is dropped.
    CXmlWriter& out;
    std::chrono::sys_seconds systemTime;
    CEventHub& events;
    /// The envelope's header, or null.
    const XmlElement* header;
    std::string_view path;
    /// Set by a handler whose answer has to wait; what it wrote is dropped then.
    std::optional<PullWait> wait{};
    /// Set by a handler behind whose answer the camera restarts.
    bool reboot = false;

    /// The namespace of the operation and of its answer.
    Ns Service() const { return FindNamespace(NamespaceUri(request)).value_or(Ns::kNone); }
    std::string_view Argument(std::string_view name) const { return ChildText(&request, name); }
};

/// A handler checks everything before it changes the state.
using Answer = std::optional<SoapFault>;
inline constexpr std::nullopt_t kDone = std::nullopt;
using Handler = Answer (*)(Call&);

struct Operation {
    std::string_view name;
    Handler handler;
    /// Answers in this element; empty: the name with "Response" behind it.
    std::string_view response = {};
};

}  // namespace camera_sim

#endif
