/// @file
/// The alarm side as the exports see it: subscriptions at devices, and observers that hear of
/// motion and alarm inputs.
#ifndef ONVIF_CLIENT_EVENTS_EVENTCONTROLLER_H
#define ONVIF_CLIENT_EVENTS_EVENTCONTROLLER_H

#include <cstdint>
#include <string>

class CONVIFAlarmStateObserver;

namespace onvif_client {

/// All operations may be called from any thread; Start and Stop not at the same time as each other.
class IEventController {
 public:
    virtual ~IEventController() = default;

    virtual void Start() = 0;
    virtual void Stop() = 0;

    /// Registers the observer of a device, in the place of an earlier one. The observer is not
    /// owned.
    /// @param deviceAddress  dotted IPv4; empty when the login id is unknown.
    virtual bool AddDevice(std::uint32_t loginId, CONVIFAlarmStateObserver* observer,
                           const std::string& deviceAddress) = 0;
    virtual void DeleteDevice(std::uint32_t loginId) = 0;
};

/// The process's controller. This version has no event service to offer: it accepts every call and
/// keeps nothing.
IEventController& EventController();

}  // namespace onvif_client

#endif
