/// @file
/// The addresses of this machine.
#ifndef ONVIF_CLIENT_PLATFORM_LOCALADDRESSES_H
#define ONVIF_CLIENT_PLATFORM_LOCALADDRESSES_H

#include <string>
#include <vector>

namespace onvif_client {

/// The IPv4 addresses, dotted, of all interfaces that are up, in the system's order. A loopback
/// address is listed only when there is no other. Empty when the system cannot tell.
std::vector<std::string> LocalIpv4Addresses();

}  // namespace onvif_client

#endif
