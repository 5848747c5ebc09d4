/// @file
/// What a login at a device is good for.
#ifndef ONVIFCTL_CONTACT_ABILITIES_H
#define ONVIFCTL_CONTACT_ABILITIES_H

#include <cstddef>
#include <string>
#include <vector>

#include "Connection.h"
#include "ExitCode.h"
#include "contact/Examination.h"
#include "contact/Probe.h"

namespace onvifctl {

struct Abilities {
    ExitCode login = ExitCode::kLoginFailed;
    std::size_t profiles = 0;
    bool stream = false;
    bool picture = false;
};

/// What @p one lacks that @p other has: "the login fails", "1 of 2 profiles"; empty: nothing.
std::string Lack(const Abilities& one, const Abilities& other);

struct TriedSession {
    Abilities abilities;
    std::vector<Step> steps;
    std::vector<NeededExtension> extensions;  // that its answers call for
    std::string clock;                        // the result of dateAndTime
};

enum class Events { kTry, kLeave };

/// Logs in, with the extensions that @p options name, and tries what needs a login. The library
/// must not have been started. What it subscribes to it gives up again.
TriedSession TrySession(const ConnectionOptions& options, const FirstContact& contact,
                        Events events);

}  // namespace onvifctl

#endif
