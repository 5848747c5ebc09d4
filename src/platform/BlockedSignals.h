/// @file
/// Threads that leave the signals of the process to the application's own.
#ifndef ONVIF_CLIENT_PLATFORM_BLOCKEDSIGNALS_H
#define ONVIF_CLIENT_PLATFORM_BLOCKEDSIGNALS_H

#include <csignal>

namespace onvif_client {

/// Around the making of a thread, which inherits what is blocked: no handler of the application's
/// runs on it. What a thread does to itself stays open, so that crashes are seen.
class CBlockedSignals {
 public:
    CBlockedSignals();
    ~CBlockedSignals();
    CBlockedSignals(const CBlockedSignals&) = delete;
    CBlockedSignals& operator=(const CBlockedSignals&) = delete;

 private:
    sigset_t before_;
};

}  // namespace onvif_client

#endif
