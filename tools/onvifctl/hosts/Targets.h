/// @file
/// From words of the command line to cameras and the logins at them.
#ifndef ONVIFCTL_HOSTS_TARGETS_H
#define ONVIFCTL_HOSTS_TARGETS_H

#include <string>
#include <vector>

#include "Connection.h"
#include "hosts/Credentials.h"

namespace onvifctl {

/// What the command line says of cameras.
struct HostChoice {
    std::string file;                // the hosts file; empty: the default one
    std::vector<std::string> words;  // names of the file, addresses, @TAG, lists with commas
    std::vector<std::string> tags;
    bool all = false;
    GivenLogin given;  // its password has been read
};

/// The cameras that are meant, each once, in the order of the words. A user or password comes from
/// the command line, else from the hosts file, else from @p common; passwords that nobody has said
/// are asked for. Throws CFailure when no camera is meant or a tag is unknown.
std::vector<ConnectionOptions> Targets(const HostChoice& choice, const ConnectionOptions& common);

/// The same for a word that means one camera, without asking.
ConnectionOptions Target(const HostChoice& choice, const ConnectionOptions& common);

}  // namespace onvifctl

#endif
