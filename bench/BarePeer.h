/// @file
/// The least that the other side of an exchange does: takes a connection, reads, answers, closes.
#ifndef ONVIF_CLIENT_BENCH_BAREPEER_H
#define ONVIF_CLIENT_BENCH_BAREPEER_H

#include <sys/types.h>

#include <cstddef>
#include <cstdint>

/// A process of its own on 127.0.0.1. Failures of the system are thrown as std::runtime_error.
class CBarePeer {
 public:
    /// Forks: to be made before the first thread.
    /// @param replySize  in bytes.
    explicit CBarePeer(std::size_t replySize);
    /// Ends the process.
    ~CBarePeer();
    CBarePeer(const CBarePeer&) = delete;
    CBarePeer& operator=(const CBarePeer&) = delete;

    std::uint16_t Port() const { return port_; }

 private:
    std::uint16_t port_ = 0;
    pid_t process_ = -1;
};

#endif
