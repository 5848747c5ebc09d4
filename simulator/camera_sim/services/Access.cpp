// Which role an operation needs, by the default access policy of the protocol's access classes.
#include "camera_sim/services/Services.h"

namespace camera_sim {

Role NeededRole(Ns ns, std::string_view operation) {
    // Reading the system, or media with all their events.
    if (operation.starts_with("Get") || IsEventService(ns)) {
        return Role::kUser;
    }
    // Writing the system; all else actuates, relays as well.
    if (ns == Ns::kDevice && !operation.starts_with("SetRelayOutput")) {
        return Role::kAdministrator;
    }
    return Role::kOperator;
}

}  // namespace camera_sim
