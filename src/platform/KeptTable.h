/// @file
/// The kept connections of all owners, for whoever is inside the socket layer. Internal to this
/// folder. Any thread.
#ifndef ONVIF_CLIENT_PLATFORM_KEPTTABLE_H
#define ONVIF_CLIENT_PLATFORM_KEPTTABLE_H

#include <cstdint>

#include "platform/KeptConnections.h"
#include "platform/Sockets.h"

namespace onvif_client {

/// The owner's connection to @p peer that was kept last and has been idle for at most @p idleMs;
/// none when there is none that is open and silent. One that the peer has closed, or that it has
/// sent something on unasked, is closed.
CDescriptor TakeKept(const CKeptConnections& owner, const Ipv4Endpoint& peer, std::uint32_t idleMs);

/// Keeps a connection for @p forMs; closes it where nobody could close it later. Of the owner's
/// others the one that would be closed first makes room.
void Keep(const CKeptConnections& owner, CDescriptor descriptor, const Ipv4Endpoint& peer,
          std::uint32_t forMs);

/// Closes all of them.
void CloseKeptConnections();

/// MakeTcpSocket, for which they make room when the system has no more descriptors.
CDescriptor MakeTcpSocketForUse();

}  // namespace onvif_client

#endif
