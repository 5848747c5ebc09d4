/// @file
/// A TCP connection to a server on 127.0.0.1, without any protocol.
#ifndef ONVIF_CLIENT_TESTS_SUPPORT_RAWCLIENT_H
#define ONVIF_CLIENT_TESTS_SUPPORT_RAWCLIENT_H

#include <cstdint>
#include <string>
#include <string_view>

#include "support/ScriptedPeer.h"

namespace client_test {

class CRawClient {
 public:
    explicit CRawClient(std::uint16_t port);
    ~CRawClient();
    CRawClient(const CRawClient&) = delete;
    CRawClient& operator=(const CRawClient&) = delete;

    /// False when nobody listens.
    bool Connected() const { return connected_; }
    bool Send(std::string_view bytes) const { return connection_.Send(bytes); }
    void EndSending() const;
    /// All that comes until the other side closes; "(open)" behind it when it does not within a
    /// minute.
    std::string ReadToEnd() const;

 private:
    const int descriptor_;
    const CPeerConnection connection_;
    const bool connected_;
};

}  // namespace client_test

#endif
