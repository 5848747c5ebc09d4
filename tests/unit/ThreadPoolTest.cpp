#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <thread>
#include <vector>

#include "common/ThreadPool.h"
#include "support/System.h"

namespace onvif_client {
namespace {

/// Tasks that wait until they are let go, and who ran them.
class CBlockedTasks {
 public:
    /// Adds a task that waits; returns when it runs, unless it is to stay in the queue.
    void Add(CThreadPool& pool, bool runs = true) {
        const std::size_t before = Count();
        pool.AddTask(&CBlockedTasks::Run, this);
        std::unique_lock guard(lock_);
        changed_.wait(guard, [&] { return !runs || workers_.size() > before; });
    }
    void LetGo(std::size_t count) {
        const std::lock_guard guard(lock_);
        released_ += count;
        changed_.notify_all();
    }
    void WaitFor(std::size_t count) {
        std::unique_lock guard(lock_);
        changed_.wait(guard, [&] { return workers_.size() >= count; });
    }
    std::size_t Count() {
        const std::lock_guard guard(lock_);
        return workers_.size();
    }
    /// The ids of the threads that ran the tasks, in the order of their starts.
    std::vector<std::uint64_t> Workers() {
        const std::lock_guard guard(lock_);
        return workers_;
    }

 private:
    static void Run(void* tasks) { static_cast<CBlockedTasks*>(tasks)->Wait(); }
    void Wait() {
        std::unique_lock guard(lock_);
        workers_.push_back(COREKIT_CurrentThreadID());
        changed_.notify_all();
        changed_.wait(guard, [this] { return released_ > 0; });
        --released_;
    }

    std::mutex lock_;  // guards the members below
    std::condition_variable changed_;
    std::size_t released_ = 0;
    std::vector<std::uint64_t> workers_;
};

TEST(ThreadPool, WakesTheSmallestIdleWorkerAndGrowsToTen) {
    CBlockedTasks tasks;
    CThreadPool pool;
    const CorekitThreadHandle younger =
        COREKIT_CreateRunOneThread([](void*) {}, nullptr, false, "", 0, "");
    for (int i = 0; i < 10; ++i) {
        tasks.Add(pool);
    }
    const auto workers = tasks.Workers();
    EXPECT_LT(workers[4], COREKIT_GetThreadID(younger)) << "five are there from the start";
    EXPECT_GT(workers[5], COREKIT_GetThreadID(younger));
    COREKIT_DestroyThread(younger, "", 0);
    EXPECT_TRUE(std::is_sorted(workers.begin(), workers.end()));
    EXPECT_EQ(std::adjacent_find(workers.begin(), workers.end()), workers.end());
    EXPECT_EQ(pool.WaitingTasks(), 0U);

    tasks.Add(pool, false);
    EXPECT_EQ(pool.WaitingTasks(), 1U);  // the eleventh waits for one of the ten
    EXPECT_EQ(tasks.Count(), 10U);
    tasks.LetGo(1);
    tasks.WaitFor(11);
    EXPECT_NE(std::find(workers.begin(), workers.end(), tasks.Workers().back()), workers.end());
    tasks.LetGo(10);
}

TEST(ThreadPool, StopDropsWhatWaits) {
    CBlockedTasks tasks;
    CThreadPool pool(0);
    for (int i = 0; i < 10; ++i) {
        tasks.Add(pool);
    }
    for (int i = 0; i < 3; ++i) {
        tasks.Add(pool, false);
    }
    std::thread stopping([&] { pool.Stop(); });
    // A pool that has begun to stop takes no more tasks.
    for (std::size_t before = 0; before != pool.WaitingTasks();) {
        before = pool.WaitingTasks();
        tasks.Add(pool, false);
    }
    tasks.LetGo(10);
    stopping.join();
    EXPECT_EQ(tasks.Count(), 10U);
    EXPECT_EQ(pool.WaitingTasks(), 0U);
    tasks.Add(pool, false);
    pool.Stop();
    EXPECT_EQ(tasks.Count(), 10U);
}

TEST(ThreadPool, LosesNoTaskAndRunsNoneTwice) {
    std::atomic<int> runs = 0;
    CThreadPool pool(0);
    std::vector<std::thread> adders;
    for (int i = 0; i < 8; ++i) {
        adders.emplace_back([&] {
            for (int task = 0; task < 500; ++task) {
                pool.AddTask(
                    [](void* counter) {
                        if (++*static_cast<std::atomic<int>*>(counter) == 1) {
                            throw 1;  // ends the task, not the worker
                        }
                    },
                    &runs);
            }
        });
    }
    for (std::thread& adder : adders) {
        adder.join();
    }
    while (runs < 4000) {
        std::this_thread::yield();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const auto used = client_test::ProcessorTime();
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_LT(client_test::ProcessorTime() - used, std::chrono::milliseconds(100))
        << "idle workers use the processor";
    pool.Stop();
    EXPECT_EQ(runs, 4000);
}

}  // namespace
}  // namespace onvif_client
