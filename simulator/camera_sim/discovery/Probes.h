/// @file
/// Discovery (WS-Discovery of 2005/04): what a client asks all cameras at once, and what one of
/// them answers.
#ifndef CAMERA_SIM_DISCOVERY_PROBES_H
#define CAMERA_SIM_DISCOVERY_PROBES_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "camera_sim/soap/Namespaces.h"
#include "camera_sim/soap/SoapRequest.h"
#include "camera_sim/state/CameraOptions.h"
#include "camera_sim/state/CameraState.h"

namespace camera_sim {

/// The camera's name in discovery: the same for the same model and port, in every run.
std::string EndpointOf(const CameraOptions& options);

/// Where an answer stands among all of a run.
struct AppSequence {
    std::int64_t instance;  ///< higher in every run
    std::uint64_t number;
};

/// A received datagram.
class CProbe {
 public:
    /// @p datagram: a Probe or a Resolve, or anything else, which nobody answers.
    explicit CProbe(std::string_view datagram);

    /// Whether it has all that the standard wants of a message to search for devices.
    bool IsValid() const { return isValid_; }

    /// The whole answer of a camera; nothing when it is not meant. @p options must be complete.
    std::optional<std::string> Answer(const CameraOptions& options, const CameraState& state,
                                      const PrefixStyle& style, AppSequence sequence) const;

 private:
    bool Means(const CameraOptions& options, const CameraState& state) const;

    const CSoapRequest soap_;
    bool isResolve_ = false;
    bool isValid_ = false;
};

}  // namespace camera_sim

#endif
