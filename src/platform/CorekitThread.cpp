#include <atomic>
#include <memory>
#include <string>

#include "platform/Corekit.h"
#include "platform/Mutex.h"
#include "platform/OrNothing.h"
#include "platform/Thread.h"

namespace onvif_client {

namespace {

std::atomic<std::uint64_t> lastThreadId{0};
thread_local std::uint64_t currentThreadId = 0;

void ReportNotMade(const char* source, int line) {
    if (line > 0) {
        COREKIT_AbnormalOutput("ASSERT", source, line);
    } else {
        COREKIT_AbnormalOutput("ASSERT", source, "a thread was not made");
    }
}

}  // namespace

/// Shared by the thread and its handle.
struct CorekitThread {
    enum class State { kSuspended, kResumed, kAbandoned };

    CorekitThread(CorekitThreadFunction run, void* with, const char* shownName, State first)
        : name(shownName == nullptr ? "" : shownName), function(run), context(with), state(first) {}

    const std::uint64_t id = ++lastThreadId;
    const std::string name;
    const CorekitThreadFunction function;
    void* const context;
    CMutex lock;  // leaf
    CCondition changed;
    State state GUARDED_BY(lock);
    CThread thread;

    bool Leave(State next) {
        const CLockGuard guard(lock);
        if (state != State::kSuspended) {
            return false;
        }
        state = next;
        changed.NotifyAll();
        return true;
    }

    void Run() {
        currentThreadId = id;
        NameThisThread(name);
        {
            const CLockGuard guard(lock);
            while (state == State::kSuspended) {
                changed.Wait(lock);
            }
            if (state == State::kAbandoned) {
                return;
            }
        }
        try {
            function(context);
        } catch (...) {
            COREKIT_AbnormalOutput("ASSERT", "Corekit", "a thread's function threw");
        }
    }
};

CorekitThreadHandle COREKIT_CreateRunOneThread(CorekitThreadFunction function, void* context,
                                               bool suspended, const char* source, int line,
                                               const char* name) {
    const CorekitThreadHandle thread = OrNothing([&]() -> CorekitThreadHandle {
        if (function == nullptr) {
            return nullptr;
        }
        auto made = std::make_unique<CorekitThread>(
            function, context, name,
            suspended ? CorekitThread::State::kSuspended : CorekitThread::State::kResumed);
        made->thread = CThread([run = made.get()] { run->Run(); });
        return made.release();
    });
    if (thread == nullptr) {
        ReportNotMade(source, line);
    }
    return thread;
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
        owned->thread.Join();
    }
}

}  // namespace onvif_client
