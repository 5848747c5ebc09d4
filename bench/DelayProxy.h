/// @file
/// A way to a port of 127.0.0.1 that takes time, as a network does.
#ifndef ONVIF_CLIENT_BENCH_DELAYPROXY_H
#define ONVIF_CLIENT_BENCH_DELAYPROXY_H

#include <chrono>
#include <cstdint>
#include <memory>

/// Passes connections on. What either side sends arrives half the round trip later; what is sent
/// over a new connection also waits for the round trip in which TCP makes it, which the system
/// makes at once here. One thread of its own serves all connections.
class CDelayProxy {
 public:
    CDelayProxy(std::uint16_t target, std::chrono::microseconds roundTrip);
    ~CDelayProxy();
    CDelayProxy(const CDelayProxy&) = delete;
    CDelayProxy& operator=(const CDelayProxy&) = delete;

    std::uint16_t Port() const;

 private:
    class CServer;

    std::unique_ptr<CServer> server_;
};

#endif
