/// @file
/// The socket layer's connections without sockets: a peer whose bytes a fuzz target chooses. Linked
/// in the place of the real ones.
#ifndef ONVIF_CLIENT_TESTS_FUZZ_SCRIPTEDSOCKETS_H
#define ONVIF_CLIENT_TESTS_FUZZ_SCRIPTEDSOCKETS_H

#include <string>
#include <string_view>

namespace onvif_client::fuzz {

/// Every connection from now on gets these bytes in pieces of that size and is then closed.
void SetPeer(std::string_view bytes, std::size_t pieceSize);

/// What was sent to the peer since.
const std::string& SentToPeer();

}  // namespace onvif_client::fuzz

#endif
