/// @file
/// What a process has one of, and a forked child one of its own.
#ifndef ONVIF_CLIENT_PLATFORM_PERPROCESS_H
#define ONVIF_CLIENT_PLATFORM_PERPROCESS_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>

namespace onvif_client {

/// 1 where the program was started, one more in each forked child: tells a process from those that
/// it comes from. Any thread.
std::uint32_t ProcessGeneration();

/// Whether the process ends and the system has ended its other threads already, which Windows does
/// before a DLL hears of it: nothing can be waited for then, and locks may stay held. Any thread.
bool OtherThreadsHaveEnded();

/// An object that is made on its first use and never destroyed, as threads may still be inside
/// while the process ends. A forked child makes it anew and forgets the old one: the threads that
/// the object had are gone there, and a lock that one of them held would stay held.
/// Constant-initialized and without a lock, so that a fork cannot come in between. Any thread.
template <typename T>
class CPerProcess {
 public:
    constexpr CPerProcess() = default;
    CPerProcess(const CPerProcess&) = delete;
    CPerProcess& operator=(const CPerProcess&) = delete;

    /// The constructor may throw; it must not ask for the same object.
    template <typename... Arguments>
    T& Get(Arguments&... arguments) {
        for (;;) {
            if (T* found = Find()) {
                return *found;
            }
            const std::uint32_t process = ProcessGeneration();
            std::uint32_t maker = maker_;
            if (maker != process && maker_.compare_exchange_strong(maker, process)) {
                Make(process, arguments...);
            } else {
                std::this_thread::yield();  // another thread is making it
            }
        }
    }

    /// Null when this process has not made it.
    T* Find() const {
        Made* made = made_;
        return made != nullptr && made->process == ProcessGeneration() ? &made->object : nullptr;
    }

 private:
    struct Made {
        template <typename... Arguments>
        Made(std::uint32_t by, Made* old, Arguments&... arguments)
            : process(by), inherited(old), object(arguments...) {}

        const std::uint32_t process;
        Made* const inherited;  // kept, as whoever searches for leaks shall find it
        T object;
    };

    template <typename... Arguments>
    void Make(std::uint32_t process, Arguments&... arguments) {
        try {
            made_ = std::make_unique<Made>(process, made_, arguments...).release();
        } catch (...) {
            maker_ = 0;
            throw;
        }
    }

    std::atomic<Made*> made_ = nullptr;
    std::atomic<std::uint32_t> maker_ = 0;  // the process in which a thread makes or made it
};

}  // namespace onvif_client

#endif
