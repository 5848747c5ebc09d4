/// @file
/// The connections of a camera over HTTP: one request each, or several where they are kept.
#ifndef CAMERA_SIM_CONNECTIONS_H
#define CAMERA_SIM_CONNECTIONS_H

#include <memory>
#include <unordered_set>
#include <utility>
// Asio uses std::exchange without including it.
#include <boost/asio/ip/tcp.hpp>

#include "camera_sim/CameraCore.h"

namespace camera_sim {

/// Only the server's thread uses it.
class CConnections {
 public:
    /// @p core must outlive all connections.
    explicit CConnections(CCameraCore& core) : core_(core) {}

    /// Reads a request, has it answered, sends the reply, while the socket's context runs.
    void Serve(boost::asio::ip::tcp::socket socket);
    /// Ends all that are open without a further word, but for those of control requests.
    void Drop();

 private:
    class CSession;
    using Sessions = std::unordered_set<CSession*>;

    CCameraCore& core_;
    const std::shared_ptr<Sessions> open_ = std::make_shared<Sessions>();
};

}  // namespace camera_sim

#endif
