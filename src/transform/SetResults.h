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
inline constexpr ResultFrame kSetVideoEncoderResult = {"SetResponse", "videoEncodeCfg"};
inline constexpr ResultFrame kSetImageSettingsResult = {"SetResponse", "imageSettings"};
inline constexpr ResultFrame kSetImageStopResult = {"SetResponse", "imageStop"};
inline constexpr ResultFrame kSetContinuousFocusResult = {"SetResponse", "continuousFocus"};
inline constexpr ResultFrame kSetMotionResult = {"SetResponse", "motion"};
inline constexpr ResultFrame kSetOsdResult = {"SetResponse", "osd"};
inline constexpr ResultFrame kDeleteOsdResult = {"DeleteResponse", "deleteosd"};
inline constexpr ResultFrame kSetContinuousMoveResult = {"SetResponse", "continuousMove"};
inline constexpr ResultFrame kSetPtzStopResult = {"SetResponse", "ptzStop"};
inline constexpr ResultFrame kSetModifyPresetNameResult = {"SetResponse", "modifyPresetName"};
inline constexpr ResultFrame kSetRemovePresetResult = {"SetResponse", "removePreset"};
inline constexpr ResultFrame kSetGotoPresetResult = {"SetResponse", "gotoPreset"};
inline constexpr ResultFrame kSetModifyCruiseResult = {"SetResponse", "modifyCruise"};
inline constexpr ResultFrame kSetDelCruiseResult = {"SetResponse", "delCruise"};
inline constexpr ResultFrame kSetStartCruiseResult = {"SetResponse", "startCruise"};
inline constexpr ResultFrame kSetStopCruiseResult = {"SetResponse", "stopCruise"};
inline constexpr ResultFrame kSetPauseCruiseResult = {"SetResponse", "pauseCruise"};

}  // namespace onvif_client

#endif
