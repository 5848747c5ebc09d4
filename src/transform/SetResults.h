/// @file
/// Results of Set commands that report nothing but their status.
#ifndef ONVIF_CLIENT_TRANSFORM_SETRESULTS_H
#define ONVIF_CLIENT_TRANSFORM_SETRESULTS_H

#include "transform/ResultFrame.h"

namespace onvif_client {

inline constexpr ResultFrame kSetDnsResult = {"SetResponse", "dns"};
inline constexpr ResultFrame kSetNetworkProtocolsResult = {"SetResponse", "networkProtocols"};
inline constexpr ResultFrame kSetDateAndTimeResult = {"SetResponse", "dateAndTime"};
inline constexpr ResultFrame kSetRelayOutputSettingsResult = {"SetResponse", "alarmout"};
inline constexpr ResultFrame kSetRelayOutputStateResult = {"SetResponse", "manualAlarmout"};

}  // namespace onvif_client

#endif
