/// @file
/// A device examined step by step: what it answers before a login, what a login is good for, and
/// which extensions it needs.
#ifndef ONVIFCTL_CONTACT_EXAMINATION_H
#define ONVIFCTL_CONTACT_EXAMINATION_H

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "Connection.h"
#include "ExitCode.h"

namespace onvifctl {

struct Step {
    std::string name;
    bool isWell = true;
    std::chrono::milliseconds time{0};
    std::string finding;
    std::string advice{};
};

struct NeededExtension {
    std::string name;
    std::string reason;
};

struct Examination {
    std::vector<Step> steps;
    std::string conclusion;
    std::vector<NeededExtension> extensions;
    std::optional<std::chrono::seconds> clock;  // the device's time minus ours
    ExitCode code = ExitCode::kDone;
};

/// Steps that can be done are done, whatever became of the ones before. Where user or password are
/// refused there is no second login, since devices lock accounts. It changes nothing at the device
/// but by the logins of whoever switches keep-clock off. Throws CFailure when the address is none.
/// @param setClock  logs in without keep-clock too, which sets the device's clock.
Examination Examine(ConnectionOptions options, bool setClock);

}  // namespace onvifctl

#endif
