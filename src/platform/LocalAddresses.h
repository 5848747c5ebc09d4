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

/// What the environment variable ONVIF_CLIENT_LISTEN_ADDRESS says; "0.0.0.0" (all addresses) when
/// it is not set.
std::string ListenAddress();

/// Where a listener can be reached: the address that it listens on, or all of this machine's.
std::vector<std::string> ReachableAddresses();

}  // namespace onvif_client

#endif
