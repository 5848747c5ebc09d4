/// @file
/// How long a login puts up with a device that does not answer. Any thread.
#ifndef ONVIF_CLIENT_CLIENT_LOGINPATIENCE_H
#define ONVIF_CLIENT_CLIENT_LOGINPATIENCE_H

#include <cstdint>

#include "platform/Mutex.h"

namespace onvif_client {

/// Counts the time of a login's exchanges, also of those that go side by side. One without a reply,
/// after exchanges that have taken 40 s together, ends the login: some of them are not fatal, and a
/// device could make all of them take long.
class CLoginPatience {
 public:
    /// @param tookMs  the duration of an exchange.
    void Count(std::uint32_t tookMs, bool answered) {
        const CLockGuard guard(lock_);
        lost_ = lost_ || (!answered && spentMs_ >= kLongestMs);
        spentMs_ += tookMs;
    }
    /// True once the login is to end.
    bool Lost() const {
        const CLockGuard guard(lock_);
        return lost_;
    }

 private:
    static constexpr std::uint64_t kLongestMs = 40000;
    mutable CMutex lock_;  // leaf
    std::uint64_t spentMs_ GUARDED_BY(lock_) = 0;
    bool lost_ GUARDED_BY(lock_) = false;
};

}  // namespace onvif_client

#endif
