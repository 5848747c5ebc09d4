/// @file
/// Locks that the compiler watches. A member says which lock guards it (GUARDED_BY), a function
/// which lock its caller holds (REQUIRES) or must not hold (EXCLUDES); clang's thread-safety
/// analysis (-Wthread-safety) refuses an access without the lock. Other compilers read past the
/// words.
///
/// The analysis follows one function at a time and no lambda: a wait for a condition is written as
/// a loop around CCondition::Wait. Where it cannot follow, the place says so beside
/// NO_THREAD_SAFETY_ANALYSIS.
#ifndef ONVIF_CLIENT_PLATFORM_MUTEX_H
#define ONVIF_CLIENT_PLATFORM_MUTEX_H

#include <chrono>

#include "platform/NativeLocks.h"

#if defined(__clang__)
#define ONVIF_CLIENT_THREAD_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define ONVIF_CLIENT_THREAD_ATTRIBUTE(attribute)
#endif

#define CAPABILITY(kind) ONVIF_CLIENT_THREAD_ATTRIBUTE(capability(kind))
#define SCOPED_CAPABILITY ONVIF_CLIENT_THREAD_ATTRIBUTE(scoped_lockable)
#define GUARDED_BY(lock) ONVIF_CLIENT_THREAD_ATTRIBUTE(guarded_by(lock))
#define REQUIRES(...) ONVIF_CLIENT_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define EXCLUDES(...) ONVIF_CLIENT_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define ACQUIRE(...) ONVIF_CLIENT_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define RELEASE(...) ONVIF_CLIENT_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define RETURN_CAPABILITY(lock) ONVIF_CLIENT_THREAD_ATTRIBUTE(lock_returned(lock))
#define NO_THREAD_SAFETY_ANALYSIS ONVIF_CLIENT_THREAD_ATTRIBUTE(no_thread_safety_analysis)

namespace onvif_client {

class CAPABILITY("mutex") CMutex {
 public:
    CMutex() = default;
    CMutex(const CMutex&) = delete;
    CMutex& operator=(const CMutex&) = delete;

    void Lock() ACQUIRE() { mutex_.Lock(); }
    void Unlock() RELEASE() { mutex_.Unlock(); }

 private:
    friend class CCondition;
    CNativeMutex mutex_;
};

/// A lock that its owner may take again. The analysis takes a second Lock in one function for a
/// fault; across functions it does not see it.
class CAPABILITY("mutex") CRecursiveMutex {
 public:
    CRecursiveMutex() = default;
    CRecursiveMutex(const CRecursiveMutex&) = delete;
    CRecursiveMutex& operator=(const CRecursiveMutex&) = delete;

    void Lock() ACQUIRE() { mutex_.Lock(); }
    void Unlock() RELEASE() { mutex_.Unlock(); }

 private:
    CNativeRecursiveMutex mutex_;
};

/// Holds a lock to the end of its block.
template <typename Mutex>
class SCOPED_CAPABILITY CLockGuard {
 public:
    explicit CLockGuard(Mutex& mutex) ACQUIRE(mutex) : mutex_(mutex) { mutex_.Lock(); }
    ~CLockGuard() RELEASE() { mutex_.Unlock(); }
    CLockGuard(const CLockGuard&) = delete;
    CLockGuard& operator=(const CLockGuard&) = delete;

 private:
    Mutex& mutex_;
};

/// Holds a lock to the end of its block, and can let go of it in between.
class SCOPED_CAPABILITY CUniqueLock {
 public:
    explicit CUniqueLock(CMutex& mutex) ACQUIRE(mutex) : mutex_(mutex), held_(true) {
        mutex_.Lock();
    }
    ~CUniqueLock() RELEASE() {
        if (held_) {
            mutex_.Unlock();
        }
    }
    CUniqueLock(const CUniqueLock&) = delete;
    CUniqueLock& operator=(const CUniqueLock&) = delete;

    void Lock() ACQUIRE() {
        mutex_.Lock();
        held_ = true;
    }
    void Unlock() RELEASE() {
        held_ = false;
        mutex_.Unlock();
    }

 private:
    CMutex& mutex_;
    bool held_;
};

/// Waits for what another thread changes under the same lock. A wait may end without a reason, so
/// it stands in a loop that looks.
class CCondition {
 public:
    void Wait(CMutex& mutex) REQUIRES(mutex) { condition_.Wait(mutex.mutex_); }
    /// Ends after @p duration at the latest.
    void WaitFor(CMutex& mutex, std::chrono::milliseconds duration) REQUIRES(mutex) {
        condition_.WaitFor(mutex.mutex_, duration);
    }
    void NotifyAll() { condition_.NotifyAll(); }

 private:
    CNativeCondition condition_;
};

}  // namespace onvif_client

#endif
