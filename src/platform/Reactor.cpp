#include "platform/Reactor.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <optional>
#include <utility>
#include <vector>

// Asio needs <utility> before it.
#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>

#include "platform/Descriptor.h"
#include "platform/Mutex.h"
#include "platform/PerProcess.h"
#include "platform/Thread.h"

namespace onvif_client {

namespace {

namespace asio = boost::asio;

constexpr std::size_t kReactorThreads = 2;
constexpr auto kLongestEnd = std::chrono::seconds(2);

/// A context and the thread that runs it.
struct Lane {
    Lane() {
        // The first timer of a context makes all descriptors that Asio itself needs.
        WithHeldStandardStreams([this] { const asio::steady_timer first(io); });
    }

    asio::io_context io{1};  // one thread
    asio::executor_work_guard<asio::io_context::executor_type> work = asio::make_work_guard(io);
    CThread thread;
};

class CAsioReactor final : public CReactor, public std::enable_shared_from_this<CAsioReactor> {
 public:
    /// One thread is enough to work; throws when not even that can be had.
    void StartThreads() {
        try {
            while (lanes_.size() < kReactorThreads) {
                auto lane = std::make_unique<Lane>();
                lanes_.reserve(kReactorThreads);
                // The thread keeps the reactor alive: the last user may be a callback on it.
                lane->thread =
                    CThread([self = shared_from_this(), own = lane.get()] { self->Work(*own); });
                lanes_.push_back(std::move(lane));
            }
        } catch (const std::exception&) {
            if (lanes_.empty()) {
                throw;
            }
        }
        const CLockGuard guard(timerLock_);
        timer_.emplace(lanes_.front()->io);
    }

    /// Nobody waits any more: what was waited for was cancelled, and the threads end when all of it
    /// has been told so. A thread that would have to wait for itself leaves that to the context's
    /// end. Where the system never tells, the context is kept: its end would wait for ever.
    void EndThreads() {
        const bool endsItself = std::any_of(lanes_.begin(), lanes_.end(), [](const auto& lane) {
            return lane->thread.IsCurrent();
        });
        for (const auto& lane : lanes_) {
            lane->work.reset();
        }
        {
            const CLockGuard guard(timerLock_);
            timerEnded_ = true;
            timer_->cancel();
        }
        if (!endsItself && !AwaitEnd()) {
            kept_ = shared_from_this();
        }
        for (const auto& lane : lanes_) {
            lane->io.stop();
        }
        for (const auto& lane : lanes_) {
            if (lane->thread.IsCurrent()) {
                lane->thread.Detach();
            } else {
                lane->thread.Join();
            }
        }
    }

    asio::io_context& NextContext() override { return lanes_[next_++ % lanes_.size()]->io; }

    void CallAfter(std::chrono::milliseconds time, std::function<void(CReactor&)> call) override {
        const CLockGuard guard(timerLock_);
        if (timerEnded_) {
            return;
        }
        timer_->expires_after(time);
        timer_->async_wait([self = shared_from_this(),
                            call = std::move(call)](const boost::system::error_code& error) {
            if (!error) {
                call(*self);
            }
        });
    }

 private:
    /// A handler that runs out of memory loses its connection, not the application.
    void Work(Lane& own) {
        for (;;) {
            try {
                own.io.run();
                const CLockGuard guard(lock_);
                ++ended_;
                changed_.NotifyAll();
                return;
            } catch (const std::exception&) {
                COREKIT_AbnormalOutput("ASSERT", "Wirelink",
                                       "a handler threw, its connection is lost");
            }
        }
    }

    /// False: not all threads have ended in time.
    bool AwaitEnd() {
        const auto end = std::chrono::steady_clock::now() + kLongestEnd;
        const CLockGuard guard(lock_);
        while (ended_ < lanes_.size() && std::chrono::steady_clock::now() < end) {
            changed_.WaitFor(lock_, kLongestEnd);
        }
        return ended_ == lanes_.size();
    }

    CMutex lock_;  // leaf
    CCondition changed_;
    std::size_t ended_ GUARDED_BY(lock_) = 0;  // of the threads
    std::shared_ptr<CAsioReactor> kept_;
    std::vector<std::unique_ptr<Lane>> lanes_;  // does not change while the reactor is in use
    std::atomic<std::size_t> next_ = 0;
    CMutex timerLock_;                                                // leaf
    std::optional<asio::steady_timer> timer_ GUARDED_BY(timerLock_);  // there once threads are
    bool timerEnded_ GUARDED_BY(timerLock_) = false;
};

struct CCurrent {
    CMutex lock;  // leaf
    std::shared_ptr<CAsioReactor> reactor GUARDED_BY(lock);
};

CCurrent& Current() {
    static constinit CPerProcess<CCurrent> current;
    return current.Get();
}

}  // namespace

std::shared_ptr<CReactor> CReactor::Get() {
    CCurrent& current = Current();
    const CLockGuard guard(current.lock);
    if (current.reactor == nullptr) {
        auto made = std::make_shared<CAsioReactor>();
        made->StartThreads();
        current.reactor = std::move(made);
    }
    return current.reactor;
}

void CReactor::Stop() {
    std::shared_ptr<CAsioReactor> stopped;
    {
        CCurrent& current = Current();
        const CLockGuard guard(current.lock);
        stopped = std::exchange(current.reactor, nullptr);
    }
    if (stopped != nullptr) {
        stopped->EndThreads();
    }
}

}  // namespace onvif_client
