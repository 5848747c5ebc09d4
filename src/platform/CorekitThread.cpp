#include <pthread.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>

#include "platform/Corekit.h"

namespace onvif_client {

namespace {

constexpr int kThrewLine = 60;
constexpr std::size_t kLongestName = 15;  // what Linux keeps of a thread's name

std::atomic<std::uint64_t> lastThreadId{0};
thread_local std::uint64_t currentThreadId = 0;

}  // namespace

/// Shared by the thread and its handle.
struct CorekitThread {
    enum class State { kSuspended, kResumed, kAbandoned };

    std::uint64_t id = 0;
    std::string name;
    CorekitThreadFunction function = nullptr;
    void* context = nullptr;
    std::mutex lock;  // guards state; leaf
    std::condition_variable changed;
    State state = State::kSuspended;
    std::thread thread;

    bool Leave(State next) {
        const std::lock_guard guard(lock);
        if (state != State::kSuspended) {
            return false;
        }
        state = next;
        changed.notify_all();
        return true;
    }

    void Run() {
        currentThreadId = id;
        pthread_setname_np(pthread_self(), name.c_str());
        {
            std::unique_lock guard(lock);
            changed.wait(guard, [this] { return state != State::kSuspended; });
            if (state == State::kAbandoned) {
                return;
            }
        }
        try {
            function(context);
        } catch (...) {
            COREKIT_AbnormalOutput("ASSERT", "Corekit", kThrewLine);
        }
    }
};

CorekitThreadHandle COREKIT_CreateRunOneThread(CorekitThreadFunction function, void* context,
                                               bool suspended, const char* source, int line,
                                               const char* name) {
    if (function == nullptr) {
        COREKIT_AbnormalOutput("ASSERT", source, line);
        return nullptr;
    }
    try {
        auto made = std::make_unique<CorekitThread>();
        made->id = ++lastThreadId;
        made->name = std::string(name == nullptr ? "" : name).substr(0, kLongestName);
        made->function = function;
        made->context = context;
        made->state = suspended ? CorekitThread::State::kSuspended : CorekitThread::State::kResumed;
        made->thread = std::thread(&CorekitThread::Run, made.get());
        return made.release();
    } catch (const std::exception&) {
        COREKIT_AbnormalOutput("ASSERT", source, line);
        return nullptr;
    }
}

std::uint64_t COREKIT_GetThreadID(CorekitThreadHandle thread) {
    return thread == nullptr ? 0 : thread->id;
}

std::uint64_t COREKIT_CurrentThreadID() {
    return currentThreadId;
}

bool COREKIT_ResumeThread(CorekitThreadHandle thread) {
    return thread != nullptr && thread->Leave(CorekitThread::State::kResumed);
}

void COREKIT_DestroyThread(CorekitThreadHandle thread, const char*, int) {
    const std::unique_ptr<CorekitThread> owned(thread);
    if (owned != nullptr) {
        owned->Leave(CorekitThread::State::kAbandoned);
        owned->thread.join();
    }
}

}  // namespace onvif_client
