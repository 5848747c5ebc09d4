/// @file
/// Which extensions a device needs: by what its replies show, and by logins with fewer of them.
#ifndef ONVIFCTL_CONTACT_NEEDEDEXTENSIONS_H
#define ONVIFCTL_CONTACT_NEEDEDEXTENSIONS_H

#include <string>
#include <vector>

#include "Connection.h"
#include "contact/Abilities.h"
#include "contact/Examination.h"
#include "contact/Probe.h"

namespace onvifctl {

/// Those that a first look calls for.
/// @param setClock  leaves the clock to the trial.
std::vector<NeededExtension> ExtensionsFor(const FirstContact& contact, bool setClock);

/// A session that shows what the device can do, and how to make others.
struct Reference {
    ConnectionOptions options;
    const FirstContact& contact;
    Abilities abilities;
    std::string extensions;  // that it has
    bool setClock = false;   // whether others may set the device's clock
};

/// Logs in with those that are known to be needed alone and adds others until a login is good for
/// as much as the reference. Ends at the first login that is refused, and after half a minute.
std::vector<NeededExtension> FindNeededExtensions(const Reference& reference,
                                                  std::vector<NeededExtension> known);

}  // namespace onvifctl

#endif
