/// @file
/// The actions "ptz HOST tour ...".
#ifndef ONVIFCTL_PTZ_PTZTOURS_H
#define ONVIFCTL_PTZ_PTZTOURS_H

#include "CommandLine.h"

namespace onvifctl {

void AddTours(CLI::App* ptz, CommandLine& line);

}  // namespace onvifctl

#endif
