/// @file
/// A small pool of worker threads that run queued tasks.
///
/// It starts a few workers, adds workers while all are busy, up to ten, and never shrinks. Of the
/// idle workers the one with the smallest thread id gets a task; idle ones use no processor time.
#ifndef ONVIF_CLIENT_COMMON_THREADPOOL_H
#define ONVIF_CLIENT_COMMON_THREADPOOL_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>

#include "platform/Corekit.h"
#include "platform/Mutex.h"

namespace onvif_client {

class CThreadPool {
 public:
    using TaskFunction = void (*)(void* argument);

    /// Starts @p initialThreads workers; fewer than one: none, the first task makes one.
    explicit CThreadPool(int initialThreads = kInitialThreads);
    /// As Stop.
    virtual ~CThreadPool();
    CThreadPool(const CThreadPool&) = delete;
    CThreadPool& operator=(const CThreadPool&) = delete;

    /// Queues a task. Any thread, also while the pool stops and afterwards: the task is then
    /// dropped.
    /// @param argument  not owned: a task that never runs leaves it as it is.
    void AddTask(TaskFunction function, void* argument);

    /// Waits for the tasks that run, ends every worker and drops the tasks that wait. A stopped
    /// pool stays so. Not to be called by a task.
    void Stop();

    /// How many tasks wait for a worker.
    std::size_t WaitingTasks() const;

 private:
    struct Task {
        TaskFunction function = nullptr;
        void* argument = nullptr;
    };
    struct Worker;
    using Workers = std::map<std::uint64_t, std::shared_ptr<Worker>>;

    static constexpr int kInitialThreads = 5;
    static constexpr std::size_t kMostThreads = 10;

    static void WorkerMain(void* pool);
    void Work();
    /// The worker of the calling thread; null once the pool has let it go.
    std::shared_ptr<Worker> OwnWorker() const;
    Task TakeTask();
    /// What a task throws ends here.
    static void RunTask(const Task& task);
    /// Makes the worker wait unless there is a task for it.
    void GoIdle(Worker& worker);
    /// False when there is no other worker to be had.
    bool CreateWorkerLocked(bool idle) REQUIRES(lock_);

    std::atomic<bool> running_ = true;
    // Leaf, not held while a task runs or a thread is waited for.
    mutable CMutex lock_;
    std::deque<Task> tasks_ GUARDED_BY(lock_);
    Workers workers_ GUARDED_BY(lock_);
};

}  // namespace onvif_client

#endif
