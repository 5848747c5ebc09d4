/// @file
/// How long a login puts up with a device that does not answer. One thread at a time.
#ifndef ONVIF_CLIENT_CLIENT_LOGINPATIENCE_H
#define ONVIF_CLIENT_CLIENT_LOGINPATIENCE_H

#include <cstdint>

namespace onvif_client {

/// Counts the time of a login's exchanges. One without a reply, after exchanges that have taken 40
/// s together, ends the login: some of them are not fatal, and a device could make all of them take
/// long.
class CLoginPatience {
 public:
    /// @param tookMs  the duration of an exchange.
    void Count(std::uint32_t tookMs, bool answered) {
        lost_ = lost_ || (!answered && spentMs_ >= kLongestMs);
        spentMs_ += tookMs;
    }
    /// True once the login is to end.
    bool Lost() const { return lost_; }

 private:
    static constexpr std::uint64_t kLongestMs = 40000;
    std::uint64_t spentMs_ = 0;
    bool lost_ = false;
};

}  // namespace onvif_client

#endif
