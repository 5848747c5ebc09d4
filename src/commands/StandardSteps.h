/// @file
/// The steps that rows of the command tables have with the extension standard-requests, where they
/// differ from the plain ones.
#ifndef ONVIF_CLIENT_COMMANDS_STANDARDSTEPS_H
#define ONVIF_CLIENT_COMMANDS_STANDARDSTEPS_H

#include "commands/CommandTable.h"

namespace onvif_client::standard {

// Get
extern const CommandSteps kGetRelays;
extern const CommandSteps kGetMotion;
extern const CommandSteps kGetOsds;
extern const CommandSteps kGetOsdOptions;

// Set
extern const CommandSteps kSetIpv4;
extern const CommandSteps kSetDns;
extern const CommandSteps kSetEncoder10;
extern const CommandSteps kSetEncoder20;
extern const CommandSteps kSetImageSettings;
extern const CommandSteps kContinuousMove;
extern const CommandSteps kSetRelay;
extern const CommandSteps kSwitchRelay;
extern const CommandSteps kSetMotion;
extern const CommandSteps kModifyCruise;
extern const CommandSteps kDelCruise;
extern const CommandSteps kSetOsd;
extern const CommandSteps kCreateOsd;

}  // namespace onvif_client::standard

#endif
