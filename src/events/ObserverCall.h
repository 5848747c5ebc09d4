/// @file
/// The calls of a device's observer.
#ifndef ONVIF_CLIENT_EVENTS_OBSERVERCALL_H
#define ONVIF_CLIENT_EVENTS_OBSERVERCALL_H

#include <cstdint>
#include <string>
#include <utility>

class CONVIFAlarmStateObserver;

namespace onvif_client {

/// One thread at a time. What an observer throws is logged and dropped.
class CObserverCall {
 public:
    /// @param observer  not owned; null: nobody is told.
    /// @param device    as log lines name it.
    CObserverCall(std::uint32_t loginId, CONVIFAlarmStateObserver* observer, std::string device)
        : loginId_(loginId), observer_(observer), device_(std::move(device)) {}

    void Motion(bool state) const noexcept;
    void AlarmInput(std::uint32_t number, bool state) const noexcept;
    /// The observer is told nothing any more. May come from inside a call.
    void Silence() { observer_ = nullptr; }

 private:
    const std::uint32_t loginId_;
    CONVIFAlarmStateObserver* observer_;
    const std::string device_;
};

}  // namespace onvif_client

#endif
