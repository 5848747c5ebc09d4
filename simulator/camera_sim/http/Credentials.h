/// @file
/// What a check of credentials says.
#ifndef CAMERA_SIM_HTTP_CREDENTIALS_H
#define CAMERA_SIM_HTTP_CREDENTIALS_H

#include <string>

#include "camera_sim/state/User.h"

namespace camera_sim {

struct Credentials {
    bool valid = false;
    std::string refusal;      ///< why they are not valid; empty also when none were given
    Role role = Role::kNone;  ///< of valid ones
};

}  // namespace camera_sim

#endif
