/// @file
/// Connections that stay open between the exchanges of one owner.
#ifndef ONVIF_CLIENT_PLATFORM_KEPTCONNECTIONS_H
#define ONVIF_CLIENT_PLATFORM_KEPTCONNECTIONS_H

#include <cstdint>

namespace onvif_client {

/// The longest time for which a connection is kept.
constexpr std::uint32_t kLongestKeptMs = 5000;

/// Whose idle connections are kept: two at most, each until its time is over, the layer stops or
/// the owner ends. They belong to the process that made them; a forked child has none. Any thread.
class CKeptConnections {
 public:
    CKeptConnections() = default;
    /// Closes them.
    ~CKeptConnections() { Close(); }
    CKeptConnections(const CKeptConnections&) = delete;
    CKeptConnections& operator=(const CKeptConnections&) = delete;

    /// Closes them; others may be kept afterwards.
    void Close() const;
};

}  // namespace onvif_client

#endif
