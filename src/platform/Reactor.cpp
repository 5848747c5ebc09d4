#include "platform/Reactor.h"

#include <thread>
#include <utility>
#include <vector>

// Asio needs <utility> before it.
#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>

#include "platform/BlockedSignals.h"
#include "platform/Descriptor.h"
#include "platform/Mutex.h"
#include "platform/PerProcess.h"

namespace onvif_client {

namespace {

namespace asio = boost::asio;

constexpr std::size_t kReactorThreads = 2;

class CAsioReactor final : public CReactor, public std::enable_shared_from_this<CAsioReactor> {
 public:
    CAsioReactor() {
        // The first timer of a context makes all descriptors that Asio itself needs.
        const CHeldStandardStreams held;
        const asio::steady_timer first(io_);
    }

    /// One thread is enough to work; throws when not even that can be had.
    void StartThreads() {
        try {
            const CBlockedSignals blocked;
            while (threads_.size() < kReactorThreads) {
                // The thread keeps the reactor alive: the last user may be a callback on it.
                threads_.emplace_back([self = shared_from_this()] { self->Work(); });
            }
        } catch (const std::exception&) {
            if (threads_.empty()) {
                throw;
            }
        }
    }

    void EndThreads() {
        io_.stop();
        for (std::thread& thread : threads_) {
            if (thread.get_id() == std::this_thread::get_id()) {
                thread.detach();
            } else {
                thread.join();
            }
        }
    }

    asio::io_context& Io() override { return io_; }

 private:
    /// A handler that runs out of memory loses its connection, not the application.
    void Work() {
        for (;;) {
            try {
                io_.run();
                return;
            } catch (const std::exception&) {
                COREKIT_AbnormalOutput("ASSERT", "Wirelink",
                                       "a handler threw, its connection is lost");
            }
        }
    }

    asio::io_context io_;
    asio::executor_work_guard<asio::io_context::executor_type> work_ = asio::make_work_guard(io_);
    std::vector<std::thread> threads_;
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
