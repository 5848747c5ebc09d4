#include "commands/CommandTable.h"

#include <algorithm>

#include "commands/DeviceRequests.h"
#include "commands/LocalAnswers.h"
#include "commands/ServiceRequests.h"
#include "commands/StandardSteps.h"
#include "transform/DeviceResults.h"
#include "transform/EventResults.h"
#include "transform/ImagingResults.h"
#include "transform/MediaResults.h"
#include "transform/MotionResults.h"
#include "transform/PtzResults.h"

namespace onvif_client {

namespace {

void LearnProfiles(std::string_view reply, ICommandSession& session) {
    ProfileList profiles;
    if (ReadProfiles(reply, profiles)) {
        session.ReplaceProfiles(std::move(profiles));
    }
}

void LearnClockSet(std::string_view, ICommandSession& session) {
    session.NoteClockSet();
}

constexpr std::uint32_t kProfilesCapacity = 46080;

constexpr CommandSteps kProfiles10 = {{{.build = BuildGetProfiles10,
                                        .serviceKey = "media",
                                        .result = &kProfilesResult,
                                        .replyCapacity = kProfilesCapacity,
                                        .clock = SigningClock::kDevice,
                                        .learn = LearnProfiles,
                                        .wanted = "Profiles"}}};
constexpr CommandSteps kProfiles20 = {
    {{.build = BuildGetProfiles20,
      .serviceKey = "media2",
      .result = &kProfilesResult,
      .replyCapacity = kProfilesCapacity,
      .clock = SigningClock::kDevice,
      .learn = LearnProfiles,
      .wanted = "Profiles",
      .elsewhere = {&kProfiles10.front(), Extension::kMediaFallback}}}};

constexpr std::uint32_t kEncoderOptionsCapacity = 15360;

constexpr CommandSteps kEncoderOptions10 = {{{.build = BuildGetVideoEncoderOptions10,
                                              .serviceKey = "media",
                                              .result = &kVideoEncoderOptionsResult,
                                              .replyCapacity = kEncoderOptionsCapacity,
                                              .clock = SigningClock::kDevice}}};
constexpr CommandSteps kEncoderOptions20 = {{{.build = BuildGetVideoEncoderOptions20,
                                              .serviceKey = "media2",
                                              .result = &kVideoEncoderOptionsResult,
                                              .replyCapacity = kEncoderOptionsCapacity,
                                              .clock = SigningClock::kDevice}}};

constexpr CommandSteps kSetEncoder10 = {{{.build = BuildSetVideoEncoder10,
                                          .serviceKey = "media",
                                          .result = &kStatusOnly<"videoEncodeCfg">,
                                          .clock = SigningClock::kDevice}}};
constexpr CommandSteps kSetEncoder20 = {{{.build = BuildSetVideoEncoder20,
                                          .serviceKey = "media2",
                                          .result = &kStatusOnly<"videoEncodeCfg">,
                                          .clock = SigningClock::kDevice}}};

constexpr CommandStep kStreamUri20 = {.build = BuildGetStreamUri20,
                                      .serviceKey = "media2",
                                      .result = &kStreamUri20Result,
                                      .clock = SigningClock::kDevice,
                                      .wanted = "Uri"};
constexpr CommandStep kSnapshotUri20 = {.build = BuildGetSnapshotUri20,
                                        .serviceKey = "media2",
                                        .result = &kSnapshotUri20Result,
                                        .wanted = "Uri"};

int FetchSnapshot(ICommandSession& session, const std::string& result, ResponseBuffer& picture) {
    return session.DownloadPicture(SnapshotAddressIn(result), picture);
}

constexpr std::uint32_t kPresetsCapacity = 40960;
constexpr std::uint32_t kRenewTimeoutMs = 2500;

constexpr Completion kFirstProfile = {TokenSource::kFirstProfile, "profileToken"};
constexpr Completion kFirstVideoSource = {TokenSource::kFirstVideoSource, "videoSourceToken"};
constexpr Completion kIndexedProfile = {TokenSource::kIndexedProfile, "profiletoken"};
constexpr FixedChild kStreamChildren[] = {{"multicast", "false"}, {"transport", "tcp"}};

constexpr CommandRow kGetRows[] = {
    {.name = "ipv4",
     .steps = {{{BuildGetNetworkInterfaces, "device", &kNetworkInterfacesResult},
                {BuildGetDefaultGateway, "device", &kDefaultGatewayResult}}}},
    {.name = "dns", .steps = {{{BuildGetDns, "device", &kDnsResult}}}},
    {.name = "networkProtocols",
     .steps = {{{BuildGetNetworkProtocols, "device", &kNetworkProtocolsResult}}}},
    {.name = "dateAndTime",
     .steps = {{{BuildGetSystemDateAndTime, "device", &kDateAndTimeResult}}}},
    {.name = "streamURI",
     .completion = {TokenSource::kIndexedProfile, "profiletoken", kStreamChildren},
     .steps = {{{.build = BuildGetStreamUri,
                 .serviceKey = "media",
                 .result = &kStreamUriResult,
                 .clock = SigningClock::kDevice,
                 .wanted = "MediaUri/Uri",
                 .elsewhere = {&kStreamUri20, Extension::kMediaFallback}}}}},
    {.name = "snapshotURI",
     .completion = kIndexedProfile,
     .steps = {{{.build = BuildGetSnapshotUri,
                 .serviceKey = "media",
                 .result = &kSnapshotUriResult,
                 .wanted = "MediaUri/Uri",
                 .elsewhere = {&kSnapshotUri20, Extension::kMediaFallback}}}},
     .fetchPicture = FetchSnapshot},
    {.name = "profiles", .steps = kProfiles10, .media2 = &kProfiles20},
    {.name = "profile",
     .completion = kIndexedProfile,
     .steps = {{{BuildGetProfile, "media", &kProfileResult, 10240}}},
     .loop = ProfileLoop::kIndexes},
    {.name = "videoEncoderCfgOpts",
     .steps = kEncoderOptions10,
     .media2 = &kEncoderOptions20,
     .loop = ProfileLoop::kIndexes},
    {.name = "videoEncoderCfg",
     .steps = {{{BuildGetVideoEncoder, "media", &kVideoEncoderResult}}},
     .loop = ProfileLoop::kIndexes},
    {.name = "imageOpts",
     .completion = kFirstVideoSource,
     .steps = {{{BuildGetImageOptions, "imaging", &kImageOptionsResult}}}},
    {.name = "imageSettings",
     .completion = kFirstVideoSource,
     .steps = {{{BuildGetImageSettings, "imaging", &kImageSettingsResult}}}},
    {.name = "pullMessages",
     .steps = {{{.build = BuildPullMessages,
                 .serviceKey = "events",
                 .result = &kPullMessagesResult,
                 .path = PullPath}}}},
    {.name = "devInfo",
     .steps = {{{BuildGetDeviceInformation, "device", &kDeviceInformationResult}}}},
    {.name = "alarmout",
     .steps = {{{BuildGetRelayOutputs, "device", &kRelayOutputsResult}}},
     .standard = &standard::kGetRelays},
    {.name = "alarmin", .steps = {{{BuildGetDigitalInputs, "deviceIO", &kDigitalInputsResult}}}},
    {.name = "streamCount", .answerLocally = AnswerStreamCount},
    {.name = "serviceUrl", .answerLocally = AnswerServiceUrl},
    {.name = "motion",
     .steps = {{{.build = BuildGetAnalyticsModules,
                 .serviceKey = "analytics",
                 .result = &kMotionModuleResult,
                 .tokenAsked = AnalyticsTokenOf,
                 .goOn = GoOn::kOnSuccess},
                {BuildGetRules, "analytics", &kMotionRuleResult}}},
     .standard = &standard::kGetMotion},
    {.name = "presets",
     .completion = kFirstProfile,
     .steps = {{{BuildGetPresets, "ptz", &kPresetsResult, kPresetsCapacity}}}},
    {.name = "cruises",
     .completion = kFirstProfile,
     .steps = {{{BuildGetCruises, "ptz", &kCruisesResult}}}},
    {.name = "osd",
     .steps = {{{BuildGetOsds, "media", &kOsdResult}}},
     .standard = &standard::kGetOsds},
    {.name = "osdoption",
     .steps = {{{BuildGetOsdOptions, "media", &kOsdOptionsResult}}},
     .standard = &standard::kGetOsdOptions},
};

constexpr CommandRow kSetRows[] = {
    {.name = "ipv4",
     .steps = {{{.build = BuildSetDefaultGateway,
                 .serviceKey = "device",
                 .result = &kSetDefaultGatewayResult,
                 .onlyWith = "gateway",
                 .goOn = GoOn::kAlways},
                {BuildSetNetworkInterfaces, "device", &kSetNetworkInterfacesResult}}},
     .standard = &standard::kSetIpv4},
    {.name = "dns",
     .steps = {{{BuildSetDns, "device", &kStatusOnly<"dns">}}},
     .standard = &standard::kSetDns},
    {.name = "networkProtocols",
     .steps = {{{BuildSetNetworkProtocols, "device", &kStatusOnly<"networkProtocols">}}}},
    {.name = "dateAndTime",
     .steps = {{{.build = BuildSetSystemDateAndTime,
                 .serviceKey = "device",
                 .result = &kStatusOnly<"dateAndTime">,
                 .clock = SigningClock::kDevice,
                 .learn = LearnClockSet}}}},
    {.name = "videoEncodeCfg",
     .steps = kSetEncoder10,
     .media2 = &kSetEncoder20,
     .standard = &standard::kSetEncoder10,
     .standardMedia2 = &standard::kSetEncoder20,
     .loop = ProfileLoop::kItems},
    {.name = "imageSettings",
     .completion = kFirstVideoSource,
     .steps = {{{BuildSetImageSettings, "imaging", &kStatusOnly<"imageSettings">}}},
     .standard = &standard::kSetImageSettings},
    {.name = "createPullPointSubscription",
     .steps = {{{BuildCreatePullPointSubscription, "events",
                 &kCreatePullPointSubscriptionResult}}}},
    {.name = "subscribe", .steps = {{{BuildSubscribe, "events", &kSubscribeResult}}}},
    {.name = "unsubscribe", .steps = {{{BuildUnsubscribe, "events", &kStatusOnly<"unsubscribe">}}}},
    {.name = "renew",
     .steps = {{{.build = BuildRenew,
                 .serviceKey = "events",
                 .result = &kRenewResult,
                 .path = RenewPath,
                 .timeoutMs = kRenewTimeoutMs}}}},
    {.name = "continuousMove",
     .completion = kFirstProfile,
     .steps = {{{BuildContinuousMove, "ptz", &kStatusOnly<"continuousMove">}}},
     .standard = &standard::kContinuousMove},
    {.name = "ptzStop",
     .completion = kFirstProfile,
     .steps = {{{BuildPtzStop, "ptz", &kStatusOnly<"ptzStop">}}}},
    {.name = "addPreset",
     .completion = kFirstProfile,
     .steps = {{{BuildAddPreset, "ptz", &kAddPresetResult}}}},
    {.name = "modifyPresetName",
     .completion = kFirstProfile,
     .steps = {{{BuildModifyPresetName, "ptz", &kStatusOnly<"modifyPresetName">}}}},
    {.name = "removePreset",
     .completion = kFirstProfile,
     .steps = {{{BuildRemovePreset, "ptz", &kStatusOnly<"removePreset">}}}},
    {.name = "gotoPreset",
     .completion = kFirstProfile,
     .steps = {{{BuildGotoPreset, "ptz", &kStatusOnly<"gotoPreset">}}}},
    {.name = "imageStop",
     .completion = {TokenSource::kFirstVideoSource},
     .steps = {{{BuildImageStop, "imaging", &kStatusOnly<"imageStop">}}}},
    {.name = "alarmout",
     .steps = {{{BuildSetRelayOutputSettings, "device", &kStatusOnly<"alarmout">}}},
     .standard = &standard::kSetRelay},
    {.name = "manualAlarmout",
     .steps = {{{BuildSetRelayOutputState, "deviceIO", &kStatusOnly<"manualAlarmout">}}},
     .standard = &standard::kSwitchRelay},
    {.name = "motion",
     .steps = {{{.build = BuildModifyAnalyticsModules,
                 .serviceKey = "analytics",
                 .result = &kStatusOnly<"motion">,
                 .goOn = GoOn::kOnSuccess},
                {BuildModifyRules, "analytics", &kStatusOnly<"motion">}}},
     .standard = &standard::kSetMotion},
    {.name = "continuousFocus",
     .completion = {TokenSource::kFirstVideoSource, "videoSourcetoken"},
     .steps = {{{BuildContinuousFocus, "imaging", &kStatusOnly<"continuousFocus">}}}},
    {.name = "addCruise",
     .completion = kFirstProfile,
     .steps = {{{BuildAddCruise, "ptz", &kAddCruiseResult}}}},
    {.name = "modifyCruise",
     .completion = kFirstProfile,
     .steps = {{{BuildModifyCruise, "ptz", &kStatusOnly<"modifyCruise">}}},
     .standard = &standard::kModifyCruise},
    {.name = "delCruise",
     .completion = kFirstProfile,
     .steps = {{{BuildDelCruise, "ptz", &kStatusOnly<"delCruise">}}},
     .standard = &standard::kDelCruise},
    {.name = "startCruise",
     .completion = kFirstProfile,
     .steps = {{{BuildStartCruise, "ptz", &kStatusOnly<"startCruise">}}}},
    {.name = "stopCruise",
     .completion = kFirstProfile,
     .steps = {{{BuildStopCruise, "ptz", &kStatusOnly<"stopCruise">}}}},
    {.name = "pauseCruise",
     .completion = kFirstProfile,
     .steps = {{{BuildPauseCruise, "ptz", &kStatusOnly<"pauseCruise">}}}},
    {.name = "setOsd",
     .steps = {{{BuildSetOsd, "media", &kStatusOnly<"osd">}}},
     .standard = &standard::kSetOsd},
    {.name = "createOsd",
     .steps = {{{BuildCreateOsd, "media", &kCreateOsdResult}}},
     .standard = &standard::kCreateOsd},
    {.name = "deleteOsd",
     .steps = {{{BuildDeleteOsd, "media", &kStatusOnly<"deleteosd", "DeleteResponse">}}}},
    {.name = "ptz3dcontrol", .steps = {{{BuildPtz3dControl, "ptz"}}}},
};

}  // namespace

constinit const CommandTable kGetCommands = {"Get", kGetRows};
constinit const CommandTable kSetCommands = {"Set", kSetRows};

const CommandRow* FindCommand(const CommandTable& table, std::string_view name) {
    const auto row = std::find_if(table.rows.begin(), table.rows.end(),
                                  [name](const CommandRow& each) { return each.name == name; });
    return row == table.rows.end() ? nullptr : &*row;
}

}  // namespace onvif_client
