#include "commands/StandardSteps.h"

#include "commands/DeviceRequests.h"
#include "commands/StandardRequests.h"
#include "transform/DeviceResults.h"
#include "transform/MediaResults.h"
#include "transform/MotionResults.h"

namespace onvif_client::standard {

namespace {

constexpr Extension kExtension = Extension::kStandardRequests;

// Room for every tour, and for devices that show all encoders when they are asked for one.
constexpr std::uint32_t kTourCapacity = 40960;
constexpr std::uint32_t kEncoderCapacity = 15360;

constexpr CommandStep kRelaysOfDeviceIo = {.build = BuildGetRelayOutputs,
                                           .serviceKey = "deviceIO",
                                           .result = &kRelayOutputsResult,
                                           .wanted = "RelayOutputs"};
constexpr CommandStep kSetRelayOfDeviceIo = {.build = BuildSetRelayOutputSettingsOfDeviceIo,
                                             .serviceKey = "deviceIO",
                                             .result = &kStatusOnly<"alarmout">};
constexpr CommandStep kSwitchRelayOfDeviceIo = {.build = BuildSetRelayOutputState,
                                                .serviceKey = "deviceIO",
                                                .result = &kStatusOnly<"manualAlarmout">};

}  // namespace

constinit const CommandSteps kGetRelays = {{{.build = BuildGetRelayOutputs,
                                             .serviceKey = "device",
                                             .result = &kRelayOutputsResult,
                                             .wanted = "RelayOutputs",
                                             .elsewhere = {&kRelaysOfDeviceIo, kExtension}}}};
constinit const CommandSteps kGetMotion = {
    {{.build = BuildWithToken<AnalyticsTokenOf, BuildGetAnalyticsModules>,
      .serviceKey = "analytics",
      .result = &kMotionModuleResult,
      .tokenAsked = AnalyticsTokenOf,
      .goOn = GoOn::kOnSuccess},
     {BuildGetRules, "analytics", &kMotionRuleResult}}};
constinit const CommandSteps kGetOsds = {{{BuildStandardGetOsds, "media", &kOsdResult}}};
constinit const CommandSteps kGetOsdOptions = {
    {{BuildWithToken<VideoSourceConfigurationOf, BuildGetOsdOptions>, "media",
      &kOsdOptionsResult}}};

constinit const CommandSteps kSetIpv4 = {
    {{.build = BuildSetDefaultGateway,
      .serviceKey = "device",
      .result = &kSetDefaultGatewayResult,
      .onlyWith = "gateway",
      .goOn = GoOn::kAlways},
     {BuildStandardSetNetworkInterfaces, "device", &kSetNetworkInterfacesResult}}};
constinit const CommandSteps kSetDns = {{{BuildStandardSetDns, "device", &kStatusOnly<"dns">}}};
constinit const CommandSteps kSetEncoder10 = {{{.build = BuildReadVideoEncoder10,
                                                .serviceKey = "media",
                                                .replyCapacity = kEncoderCapacity,
                                                .clock = SigningClock::kDevice,
                                                .readsFirst = true},
                                               {.build = BuildStandardSetVideoEncoder10,
                                                .serviceKey = "media",
                                                .result = &kStatusOnly<"videoEncodeCfg">,
                                                .clock = SigningClock::kDevice}}};
constinit const CommandSteps kSetEncoder20 = {{{.build = BuildReadVideoEncoder20,
                                                .serviceKey = "media2",
                                                .replyCapacity = kEncoderCapacity,
                                                .clock = SigningClock::kDevice,
                                                .readsFirst = true},
                                               {.build = BuildStandardSetVideoEncoder20,
                                                .serviceKey = "media2",
                                                .result = &kStatusOnly<"videoEncodeCfg">,
                                                .clock = SigningClock::kDevice}}};
constinit const CommandSteps kSetImageSettings = {
    {{.build = BuildGetImageSettings, .serviceKey = "imaging", .readsFirst = true},
     {BuildStandardSetImageSettings, "imaging", &kStatusOnly<"imageSettings">}}};
constinit const CommandSteps kContinuousMove = {
    {{BuildStandardContinuousMove, "ptz", &kStatusOnly<"continuousMove">}}};
constinit const CommandSteps kSetRelay = {{{.build = BuildSetRelayOutputSettings,
                                            .serviceKey = "device",
                                            .result = &kStatusOnly<"alarmout">,
                                            .elsewhere = {&kSetRelayOfDeviceIo, kExtension}}}};
constinit const CommandSteps kSwitchRelay = {
    {{.build = BuildSetRelayOutputState,
      .serviceKey = "device",
      .result = &kStatusOnly<"manualAlarmout">,
      .elsewhere = {&kSwitchRelayOfDeviceIo, kExtension}}}};
constinit const CommandSteps kSetMotion = {
    {{.build = BuildWithToken<AnalyticsTokenOf, BuildModifyAnalyticsModules>,
      .serviceKey = "analytics",
      .result = &kStatusOnly<"motion">,
      .goOn = GoOn::kOnSuccess},
     {BuildModifyRules, "analytics", &kStatusOnly<"motion">}}};
constinit const CommandSteps kModifyCruise = {
    {{.build = BuildGetCruises,
      .serviceKey = "ptz",
      .replyCapacity = kTourCapacity,
      .readsFirst = true},
     {BuildStandardModifyCruise, "ptz", &kStatusOnly<"modifyCruise">}}};
constinit const CommandSteps kDelCruise = {
    {{BuildStandardDelCruise, "ptz", &kStatusOnly<"delCruise">}}};
constinit const CommandSteps kSetOsd = {
    {{.build = BuildReadOsd, .serviceKey = "media", .readsFirst = true},
     {BuildStandardSetOsd, "media", &kStatusOnly<"osd">}}};
constinit const CommandSteps kCreateOsd = {
    {{BuildWithToken<VideoSourceConfigurationOf, BuildStandardCreateOsd>, "media",
      &kCreateOsdResult}}};

}  // namespace onvif_client::standard
