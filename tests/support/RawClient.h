/// @file
/// A TCP connection to a server on 127.0.0.1, without any protocol.
#ifndef ONVIF_CLIENT_TESTS_SUPPORT_RAWCLIENT_H
#define ONVIF_CLIENT_TESTS_SUPPORT_RAWCLIENT_H

#include "support/PeerSocket.h"

namespace client_test {

class CRawClient {
 public:
    explicit CRawClient(std::uint16_t port) : connected_(socket_.Connect(port)) {
        socket_.BePatientForAMinute();
    }

    /// False when nobody listens.
    bool Connected() const { return connected_; }
    bool Send(std::string_view bytes) const { return socket_.Send(bytes); }
    void EndSending() const { socket_.EndSending(); }
    /// All that comes until the other side closes; "(open)" behind it when it does not within a
    /// minute.
    std::string ReadToEnd() const {
        bool stillOpen = false;
        const std::string text = socket_.Read(SIZE_MAX, &stillOpen);
        return stillOpen ? text + "(open)" : text;
    }

 private:
    const CPeerSocket socket_;
    const bool connected_;
};

}  // namespace client_test

#endif
