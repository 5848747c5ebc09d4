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
    ~CInterruption();
    CInterruption(const CInterruption&) = delete;
    CInterruption& operator=(const CInterruption&) = delete;

    /// Waits for that long, or until one of the signals or a Wake has come.
    /// @return the signal, or 0.
    int Wait(std::chrono::milliseconds time) const;

    /// Ends the wait, or the next one when none is under way. From any thread.
    void Wake() const;

    /// Whether a signal meant nothing before, as SIGHUP under nohup.
    bool WasIgnored(int signal) const;

    /// The signals mean again what they meant before; Wake can still be called.
    void LetSignalsGo();

 private:
    static constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

    std::array<struct sigaction, kSignals.size()> before_ = {};
    bool holdsSignals_ = true;
};

}  // namespace onvifctl

#endif
