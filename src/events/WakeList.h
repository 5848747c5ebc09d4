/// @file
/// The devices that something happened to since the control loop looked last.
#ifndef ONVIF_CLIENT_EVENTS_WAKELIST_H
#define ONVIF_CLIENT_EVENTS_WAKELIST_H

#include <cstdint>
#include <new>
#include <utility>
#include <vector>

#include "platform/Mutex.h"

namespace onvif_client {

/// Any thread. Nothing is lost without memory: then everyone is awake.
class CWakeList {
 public:
    struct Awake {
        bool everyone = false;
        std::vector<std::uint32_t> loginIds;
    };

    void Add(std::uint32_t loginId) noexcept {
        const CLockGuard guard(lock_);
        try {
            awake_.loginIds.push_back(loginId);
        } catch (const std::bad_alloc&) {
            awake_.everyone = true;
        }
    }
    void AddEveryone() noexcept {
        const CLockGuard guard(lock_);
        awake_.everyone = true;
    }
    Awake Take() noexcept {
        const CLockGuard guard(lock_);
        return std::exchange(awake_, {});
    }

 private:
    CMutex lock_;  // leaf
    Awake awake_ GUARDED_BY(lock_);
};

}  // namespace onvif_client

#endif
