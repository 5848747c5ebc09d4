#include "common/ThreadPool.h"

#include <algorithm>
#include <utility>

#include "common/GbkTexts.h"
#include "common/LogText.h"
#include "platform/ManualResetEvent.h"
#include "platform/OrNothing.h"

namespace onvif_client {

namespace {

constexpr const char* kSource = loglabel::kThreadPool;
constexpr int kNoNumber = 0;  // the texts tell the places apart

}  // namespace

struct CThreadPool::Worker {
    Worker(bool startsIdle, CorekitThreadHandle own) : idle(startsIdle), thread(own) {}

    bool idle;               // guarded by the pool's lock, which the analysis cannot tell from here
    CManualResetEvent wake;  // signalled while the worker has, or may have, a task to take
    const CorekitThreadHandle thread;
};

CThreadPool::CThreadPool(int initialThreads) {
    const CLockGuard guard(lock_);
    for (int i = 0; i < initialThreads && CreateWorkerLocked(true); ++i) {
    }
}

CThreadPool::~CThreadPool() {
    Stop();
}

bool CThreadPool::CreateWorkerLocked(bool idle) {
    if (workers_.size() >= kMostThreads) {
        return false;
    }
    // The thread finds its worker by its own id, so it must not run before the worker is there.
    const CorekitThreadHandle thread = COREKIT_CreateRunOneThread(
        &CThreadPool::WorkerMain, this, true, kSource, kNoNumber, "##Thread Pool Thread##");
    // The lock is held, which the analysis does not see in a lambda.
    const auto add = [&]() NO_THREAD_SAFETY_ANALYSIS {
        auto worker = std::make_shared<Worker>(idle, thread);
        if (!idle) {
            worker->wake.Set();
        }
        return workers_.emplace(COREKIT_GetThreadID(thread), std::move(worker)).second;
    };
    if (thread == nullptr || !OrNothing(add)) {
        COREKIT_DestroyThread(thread, kSource, kNoNumber);
        COREKIT_NormalOutput(kPoolThreadNotMade, kSource, kNoNumber);
        return false;
    }
    COREKIT_ResumeThread(thread);
    return true;
}

void CThreadPool::AddTask(TaskFunction function, void* argument) {
    std::shared_ptr<Worker> woken;
    {
        const CLockGuard guard(lock_);
        if (!running_) {
            return;
        }
        tasks_.push_back({function, argument});
        const auto idle = std::find_if(workers_.begin(), workers_.end(),
                                       [](const auto& each) { return each.second->idle; });
        if (idle == workers_.end()) {
            // At the ceiling the task waits for a busy worker, which looks for tasks before it goes
            // idle.
            CreateWorkerLocked(false);
            return;
        }
        woken = idle->second;
        woken->idle = false;
    }
    woken->wake.Set();  // without the lock, which it takes at once
}

void CThreadPool::WorkerMain(void* pool) {
    if (pool == nullptr) {
        COREKIT_AbnormalOutput(kPoolThreadWithoutPool, kSource, kNoNumber);
        return;
    }
    static_cast<CThreadPool*>(pool)->Work();
    COREKIT_NormalOutput(kPoolThreadEnds, kSource, kNoNumber);
}

void CThreadPool::Work() {
    const std::shared_ptr<Worker> worker = OwnWorker();
    while (worker != nullptr && running_) {
        worker->wake.Wait();
        if (!running_) {
            break;
        }
        RunTask(TakeTask());
        GoIdle(*worker);
    }
}

std::shared_ptr<CThreadPool::Worker> CThreadPool::OwnWorker() const {
    const CLockGuard guard(lock_);
    const auto found = workers_.find(COREKIT_CurrentThreadID());
    return found == workers_.end() ? nullptr : found->second;
}

void CThreadPool::RunTask(const Task& task) {
    if (task.function == nullptr) {
        return;
    }
    try {
        task.function(task.argument);
    } catch (...) {
        LogAssert(kSource, "a task threw");
    }
}

CThreadPool::Task CThreadPool::TakeTask() {
    const CLockGuard guard(lock_);
    if (tasks_.empty()) {
        return {};
    }
    const Task task = tasks_.front();
    tasks_.pop_front();
    return task;
}

void CThreadPool::GoIdle(Worker& worker) {
    const CLockGuard guard(lock_);
    if (tasks_.empty() && running_) {
        worker.idle = true;
        worker.wake.Reset();
    }
}

void CThreadPool::Stop() {
    CUniqueLock guard(lock_);
    running_ = false;
    while (!workers_.empty()) {
        const std::shared_ptr<Worker> worker = workers_.begin()->second;
        workers_.erase(workers_.begin());
        worker->wake.Set();
        guard.Unlock();
        COREKIT_DestroyThread(worker->thread, kSource, kNoNumber);
        guard.Lock();
    }
    tasks_.clear();
}

std::size_t CThreadPool::WaitingTasks() const {
    const CLockGuard guard(lock_);
    return tasks_.size();
}

}  // namespace onvif_client
