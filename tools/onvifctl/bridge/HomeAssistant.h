/// @file
/// Discovery messages, by which Home Assistant learns of the topics.
#ifndef ONVIFCTL_BRIDGE_HOMEASSISTANT_H
#define ONVIFCTL_BRIDGE_HOMEASSISTANT_H

#include <string>
#include <utility>
#include <vector>

#include "bridge/CameraWork.h"
#include "bridge/Topics.h"

namespace onvifctl {

/// Topics and payloads, one for each thing that a camera has: motion, inputs, relays, picture.
/// @param prefix  where Home Assistant looks for them.
std::vector<std::pair<std::string, std::string>> DiscoveryMessages(const std::string& prefix,
                                                                   const CTopics& topics,
                                                                   const std::string& camera,
                                                                   const Inventory& inventory);

}  // namespace onvifctl

#endif
