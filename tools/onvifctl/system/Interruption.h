/// @file
/// What ends the tool from outside, and waiting that it ends, for what must not be left undone:
/// SIGINT, SIGTERM and SIGHUP. On Windows Ctrl-C and Ctrl-Break count as SIGINT, the end of the
/// console, of the user's session and of the system as SIGHUP.
#ifndef ONVIFCTL_SYSTEM_INTERRUPTION_H
#define ONVIFCTL_SYSTEM_INTERRUPTION_H

#include <chrono>
#include <memory>

namespace onvifctl {

/// First of all: what is no interruption, a closed pipe or a full quota, is an error like others.
void PrepareSignals();

/// Ends the tool at once, as the signal does where nothing holds it: shells show 128 and its number
/// as the exit code. Returns when the signal is ignored.
void EndBySignal(int signal);

/// While one lives, the signals do not end the tool but end the wait. At most one at a time.
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
    struct Meanings;
    const std::unique_ptr<Meanings> before_;
    bool holdsSignals_ = true;
};

}  // namespace onvifctl

#endif
