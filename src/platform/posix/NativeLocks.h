/// @file
/// The standard library's locks. See Mutex.h.
#ifndef ONVIF_CLIENT_PLATFORM_POSIX_NATIVELOCKS_H
#define ONVIF_CLIENT_PLATFORM_POSIX_NATIVELOCKS_H

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace onvif_client {

class CNativeMutex {
 public:
    void Lock() { mutex_.lock(); }
    void Unlock() { mutex_.unlock(); }

 private:
    friend class CNativeCondition;
    std::mutex mutex_;
};

class CNativeRecursiveMutex {
 public:
    void Lock() { mutex_.lock(); }
    void Unlock() { mutex_.unlock(); }

 private:
    std::recursive_mutex mutex_;
};

class CNativeCondition {
 public:
    void Wait(CNativeMutex& mutex) {
        std::unique_lock<std::mutex> held(mutex.mutex_, std::adopt_lock);
        condition_.wait(held);
        held.release();
    }
    void WaitFor(CNativeMutex& mutex, std::chrono::milliseconds duration) {
        std::unique_lock<std::mutex> held(mutex.mutex_, std::adopt_lock);
        condition_.wait_for(held, duration);
        held.release();
    }
    void NotifyAll() { condition_.notify_all(); }

 private:
    std::condition_variable condition_;
};

}  // namespace onvif_client

#endif
