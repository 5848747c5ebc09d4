/// @file
/// Threads of the library's own. Internal to this folder; others use Corekit.
#ifndef ONVIF_CLIENT_PLATFORM_THREAD_H
#define ONVIF_CLIENT_PLATFORM_THREAD_H

#include <functional>
#include <memory>
#include <string>

namespace onvif_client {

/// A thread that leaves the signals of the process to the application's own threads, and that keeps
/// the library loaded as long as it runs. Belongs to one thread at a time.
class CThread {
 public:
    /// None.
    CThread();
    /// Runs the function. Throws std::system_error or std::bad_alloc when no thread is to be had.
    explicit CThread(std::function<void()> run);
    /// A thread must have been joined or detached before.
    ~CThread();
    CThread(CThread&& other) noexcept;
    CThread& operator=(CThread&& other) noexcept;

    /// Waits for its end: afterwards nothing of it runs.
    void Join();
    /// It goes on by itself.
    void Detach();
    /// Whether this is called by it.
    bool IsCurrent() const;

 private:
    struct System;
    std::unique_ptr<System> system_;
};

/// Gives the calling thread the name that debuggers show, cut to what the system takes.
void NameThisThread(const std::string& name);

}  // namespace onvif_client

#endif
