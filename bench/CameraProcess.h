/// @file
/// Simulated cameras in a process of their own, whose motion changes on command.
#ifndef ONVIF_CLIENT_BENCH_CAMERAPROCESS_H
#define ONVIF_CLIENT_BENCH_CAMERAPROCESS_H

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>

/// Failures of the system are thrown as std::runtime_error. One thread.
class CCameraProcess {
 public:
    using Clock = std::chrono::steady_clock;  // counts alike in all processes of a machine

    /// Forks: to be made before the first thread. Returns when every camera listens.
    /// @param changes  how often the motion of each camera will change, an even number.
    /// @param period   from one beginning of its motion to the next. Motion lasts half of that, at
    ///                 most a second; the cameras take turns, so that changes are spread evenly.
    CCameraProcess(std::size_t cameras, std::size_t changes, Clock::duration period,
                   bool keepAlive = false);
    /// Ends the process.
    ~CCameraProcess();
    CCameraProcess(const CCameraProcess&) = delete;
    CCameraProcess& operator=(const CCameraProcess&) = delete;

    std::uint16_t Port(std::size_t camera) const;

    /// Has the changes begin.
    void StartChanges();
    /// Returns when the last one has been made.
    void AwaitChanges();
    // From then on:
    /// Just before a change was made.
    Clock::time_point ChangeTime(std::size_t camera, std::size_t change) const;
    /// How many messages a camera says it has made of changes.
    std::uint64_t Messages(std::size_t camera) const;

 private:
    struct Page;  // what the processes share of a camera

    struct Unmap {
        std::size_t size;
        void operator()(std::byte* memory) const;
    };
    static std::unique_ptr<std::byte, Unmap> Map(std::size_t size);

    /// Carries single bytes from one process to the other, which closes the end it does not use.
    class CPipe {
     public:
        CPipe();
        ~CPipe();
        CPipe(const CPipe&) = delete;
        CPipe& operator=(const CPipe&) = delete;

        void Close(int end);
        bool Send() const;
        /// @return false when the sender is gone.
        bool Await() const;

     private:
        int ends_[2] = {-1, -1};
    };

    Page& PageOf(std::size_t camera) const;
    void Child() const;

    const std::size_t cameras_;
    const std::size_t changes_;
    const Clock::duration period_;
    const bool keepAlive_;
    const std::size_t pageSize_;
    const std::unique_ptr<std::byte, Unmap> shared_;
    CPipe commands_;
    CPipe answers_;
    pid_t process_ = -1;
};

#endif
