/// @file
/// Addresses of streams, and what plays them.
#ifndef ONVIFCTL_PICTURE_STREAMADDRESS_H
#define ONVIFCTL_PICTURE_STREAMADDRESS_H

#include <string>

namespace onvifctl {

/// The address with user and password, percent-encoded, in the place of any that it has. One that
/// is no URL stays as it is.
std::string WithCredentials(const std::string& address, const std::string& user,
                            const std::string& password);

/// The player that is installed. Throws CFailure when there is none.
std::string FindPlayer();

/// Ends the tool as a player of this address. Throws CFailure when that cannot be: a device's text
/// must not be anything but an address to a player.
/// @return the exit code of the player, where the tool waits for it.
int Play(const std::string& player, const std::string& address);

}  // namespace onvifctl

#endif
