/// A port of 127.0.0.1 where nobody answers.
#ifndef ONVIF_CLIENT_TESTS_SUPPORT_CLOSEDPORT_H
#define ONVIF_CLIENT_TESTS_SUPPORT_CLOSEDPORT_H

#include "support/PeerSocket.h"

namespace client_test {

/// Holds the port, or a test that runs beside this one could be given it and answer.
class CClosedPort {
 public:
    CClosedPort() { socket_.Bind(); }

    std::uint16_t Port() const { return socket_.Port(); }

 private:
    const CPeerSocket socket_;
};

}  // namespace client_test

#endif
