/// @file
/// Waiting that a signal ends, for what must not be left undone.
#ifndef ONVIFCTL_INTERRUPTION_H
#define ONVIFCTL_INTERRUPTION_H

#include <array>
#include <chrono>
#include <csignal>

namespace onvifctl {

/// While one lives, SIGINT, SIGTERM and SIGHUP do not end the tool but end the wait. At most one at
/// a time.
class CInterruption {
 public:
    CInterruption();
    /// The signals mean again what they meant before.
    ~CInterruption();
    CInterruption(const CInterruption&) = delete;
    CInterruption& operator=(const CInterruption&) = delete;

    /// Waits for that long, or until one of the signals has come.
    /// @return the signal, or 0 when the time has passed.
    int Wait(std::chrono::milliseconds time) const;

 private:
    static constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

    std::array<struct sigaction, kSignals.size()> before_ = {};
};

}  // namespace onvifctl

#endif
