/// @file
/// Request builders of the media, PTZ, imaging, analytics and event services.
#ifndef ONVIF_CLIENT_COMMANDS_SERVICEREQUESTS_H
#define ONVIF_CLIENT_COMMANDS_SERVICEREQUESTS_H

#include <string>

#include "commands/CommandRequest.h"

namespace onvif_client {

// MediaRequests.cpp
std::string BuildGetProfiles10(const CommandRequest&);
std::string BuildGetProfiles20(const CommandRequest&);
std::string BuildGetStreamUri(const CommandRequest& request);
std::string BuildGetSnapshotUri(const CommandRequest& request);
std::string BuildGetStreamUri20(const CommandRequest& request);
std::string BuildGetSnapshotUri20(const CommandRequest& request);
// The following are sent once per profile chosen: CommandRequest::profile is there.
std::string BuildGetProfile(const CommandRequest& request);
std::string BuildGetVideoEncoder(const CommandRequest& request);
std::string BuildGetVideoEncoderOptions10(const CommandRequest& request);
std::string BuildGetVideoEncoderOptions20(const CommandRequest& request);

// EncoderRequests.cpp: one request per item of the command; item and profile are there
std::string BuildSetVideoEncoder10(const CommandRequest& request);
std::string BuildSetVideoEncoder20(const CommandRequest& request);

// OsdRequests.cpp: on-screen texts of the first profile's video source configuration
/// Its token; empty without one.
std::string VideoSourceConfigurationOf(const CommandRequest& request);
std::string BuildGetOsds(const CommandRequest& request);
std::string BuildGetOsdOptions(const CommandRequest& request);
std::string BuildCreateOsd(const CommandRequest& request);
std::string BuildSetOsd(const CommandRequest& request);
std::string BuildDeleteOsd(const CommandRequest& request);

// PtzRequests.cpp
/// GetConfigurationOptions of the PTZ service.
std::string BuildGetPtzOptions(const std::string& ptzConfigurationToken);
/// Percents of the full speed become velocities in the device's ranges.
std::string BuildContinuousMove(const CommandRequest& request);
std::string BuildPtzStop(const CommandRequest& request);
std::string BuildPtz3dControl(const CommandRequest& request);

// PresetRequests.cpp: presets, and tours from one to the next ("cruises")
std::string BuildGetPresets(const CommandRequest& request);
std::string BuildAddPreset(const CommandRequest& request);
std::string BuildModifyPresetName(const CommandRequest& request);
std::string BuildRemovePreset(const CommandRequest& request);
std::string BuildGotoPreset(const CommandRequest& request);
std::string BuildGetCruises(const CommandRequest& request);
std::string BuildAddCruise(const CommandRequest& request);
std::string BuildModifyCruise(const CommandRequest& request);
std::string BuildDelCruise(const CommandRequest&);
std::string BuildStartCruise(const CommandRequest& request);
std::string BuildStopCruise(const CommandRequest& request);
std::string BuildPauseCruise(const CommandRequest& request);

// ImagingRequests.cpp
std::string BuildGetMoveOptions(const std::string& videoSourceToken);
std::string BuildGetImageOptions(const CommandRequest& request);
std::string BuildGetImageSettings(const CommandRequest& request);
std::string BuildSetImageSettings(const CommandRequest& request);
/// Stops the focus of the first profile's video source; CommandRequest::profile is there.
std::string BuildImageStop(const CommandRequest& request);
std::string BuildContinuousFocus(const CommandRequest& request);

// AnalyticsRequests.cpp: cell motion detection, a module (how) and a rule (where)
/// The configuration that a motion command is about: its "token", else the first profile's.
std::string AnalyticsTokenOf(const CommandRequest& request);
std::string BuildGetAnalyticsModules(const CommandRequest& request);
std::string BuildGetRules(const CommandRequest& request);
std::string BuildModifyAnalyticsModules(const CommandRequest& request);
std::string BuildModifyRules(const CommandRequest& request);

// EventRequests.cpp: subscriptions (ONVIF Core, WS-BaseNotification)
std::string BuildCreatePullPointSubscription(const CommandRequest& request);
/// In pullMessages, stands for an identifier of the subscription that the device does not use.
constexpr const char* kNoIdentifier = "NULL";
std::string BuildPullMessages(const CommandRequest& request);
std::string BuildRenew(const CommandRequest& request);
std::string BuildUnsubscribe(const CommandRequest& request);
std::string BuildSubscribe(const CommandRequest& request);
/// The path of the subscription that is pulled from; empty when its address has none.
std::string PullPath(const CommandRequest& request);
/// The path of the subscription that is renewed; the device service's when its address has none.
std::string RenewPath(const CommandRequest& request);

}  // namespace onvif_client

#endif
