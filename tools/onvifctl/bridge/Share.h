/// @file
/// How bridges split a fleet without talking to each other: rendezvous hashing. Each camera belongs
/// to the bridge whose number and its name give the largest hash together; so when a bridge is
/// added, cameras move to it alone, and when the last one goes, only its own move.
#ifndef ONVIFCTL_BRIDGE_SHARE_H
#define ONVIFCTL_BRIDGE_SHARE_H

#include <string>

namespace onvifctl {

struct Share {
    unsigned int number = 1;  // from 1
    unsigned int count = 1;
};

/// From "I/N". Throws CFailure for anything else.
Share ParseShare(const std::string& text);

/// The number of the bridge that a camera belongs to. The same on every machine and in every
/// version: bridges of different versions must agree.
unsigned int OwnerOf(const std::string& camera, unsigned int count);

}  // namespace onvifctl

#endif
