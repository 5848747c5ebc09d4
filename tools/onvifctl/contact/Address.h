/// @file
/// How a device is named on the command line.
#ifndef ONVIFCTL_CONTACT_ADDRESS_H
#define ONVIFCTL_CONTACT_ADDRESS_H

#include <string>

namespace onvifctl {

struct Address {
    std::string name;  // or dotted IPv4
    unsigned short port = 80;
};

/// From HOST, HOST:PORT or http://HOST[:PORT][/...], whose path counts for nothing. Throws CFailure
/// for anything else, and says what of it cannot be used: HTTPS, IPv6.
Address ParseAddress(const std::string& host);

/// "HOST:PORT" in full. Throws CFailure as ParseAddress.
std::string FullAddress(const std::string& host);

/// The dotted IPv4 address of a name. Throws CFailure when none is known.
std::string Resolve(const std::string& name);

}  // namespace onvifctl

#endif
