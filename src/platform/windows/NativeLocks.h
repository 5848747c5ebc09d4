/// @file
/// The system's slim locks. See Mutex.h. They need no clean-up: the standard library of MinGW-w64
/// keeps memory, and at times a handle, for every std::mutex that there ever was.
#ifndef ONVIF_CLIENT_PLATFORM_WINDOWS_NATIVELOCKS_H
#define ONVIF_CLIENT_PLATFORM_WINDOWS_NATIVELOCKS_H

#include <atomic>
#include <chrono>

namespace onvif_client {

class CNativeMutex {
 public:
    void Lock();
    void Unlock();

 private:
    friend class CNativeCondition;
    void* lock_ = nullptr;  // an SRWLOCK
};

class CNativeRecursiveMutex {
 public:
    void Lock();
    void Unlock();

 private:
    CNativeMutex mutex_;
    std::atomic<unsigned long> owner_ = 0;  // a thread's id; 0: nobody
    unsigned int depth_ = 0;                // the owner's
};

class CNativeCondition {
 public:
    void Wait(CNativeMutex& mutex);
    void WaitFor(CNativeMutex& mutex, std::chrono::milliseconds duration);
    void NotifyAll();

 private:
    void* condition_ = nullptr;  // a CONDITION_VARIABLE
};

}  // namespace onvif_client

#endif
