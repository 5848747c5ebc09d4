/// @file
/// Request builders of the device management and device I/O services.
#ifndef ONVIF_CLIENT_COMMANDS_DEVICEREQUESTS_H
#define ONVIF_CLIENT_COMMANDS_DEVICEREQUESTS_H

#include <optional>
#include <string>
#include <string_view>

#include "commands/CommandRequest.h"
#include "platform/Clock.h"

namespace onvif_client {

// DeviceRequests.cpp: requests without parameters, services, relays
std::string BuildGetDeviceInformation(const CommandRequest&);
std::string BuildGetRelayOutputs(const CommandRequest&);
std::string BuildGetDigitalInputs(const CommandRequest&);
std::string BuildSetRelayOutputSettings(const CommandRequest& request);
std::string BuildSetRelayOutputState(const CommandRequest& request);
std::string_view GetServicesEnvelope();
/// With the capabilities of the services, and without a security header: the standard has devices
/// answer this to everybody.
std::string_view BareServicesEnvelope();
/// @p category as the capabilities name it, or "All".
std::string BuildGetCapabilities(const std::string& category);

// NetworkRequests.cpp
std::string BuildGetNetworkInterfaces(const CommandRequest&);
std::string BuildGetDefaultGateway(const CommandRequest&);
std::string BuildGetDns(const CommandRequest&);
std::string BuildGetNetworkProtocols(const CommandRequest&);
std::string BuildSetNetworkInterfaces(const CommandRequest& request);
std::string BuildSetDefaultGateway(const CommandRequest& request);
std::string BuildSetDns(const CommandRequest& request);
/// Sends an entry for each of "rtsp" and "http" that the request names.
std::string BuildSetNetworkProtocols(const CommandRequest& request);

// TimeRequests.cpp
std::string BuildGetSystemDateAndTime(const CommandRequest&);
/// The same without a security header: devices tell their clock to everybody.
std::string_view BareClockEnvelope();
std::string BuildSetSystemDateAndTime(const CommandRequest& request);
/// A login's clock setting: manual, without daylight saving.
std::string BuildLoginClockSetting(const CalendarTime& utc,
                                   const std::optional<std::string>& timeZone);
/// The time zone (POSIX notation) that this machine's own configuration file holds.
std::optional<std::string> ReadLocalTimeZone(
    const char* file = "/mnt/mtd/configInfo/Config/EXP_RW_timeInfo.xml");

}  // namespace onvif_client

#endif
