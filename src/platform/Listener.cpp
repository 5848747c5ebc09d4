#include "platform/Listener.h"

#include <chrono>
#include <utility>

#include "platform/ConnectionWatch.h"
#include "platform/Connections.h"
#include "platform/Mutex.h"
#include "platform/OrNothing.h"
#include "platform/Reactor.h"
#include "platform/Thread.h"

namespace onvif_client {

namespace {

constexpr int kMostAcceptCallbacks = 16;
constexpr auto kPauseAfterFailedAccept = std::chrono::milliseconds(100);

class CThreadedListener final : public CListener,
                                public std::enable_shared_from_this<CThreadedListener> {
 public:
    explicit CThreadedListener(CListenSocketObserver* observer)
        : observer_(observer), socket_(MakeTcpSocket()) {}
    ~CThreadedListener() override { Close(); }
    CThreadedListener(const CThreadedListener&) = delete;
    CThreadedListener& operator=(const CThreadedListener&) = delete;

    bool Open(const char* address, std::uint16_t port) {
        const auto endpoint = Ipv4Address(address, port);
        const CLockGuard guard(lock_);
        if (!endpoint || !*socket_ || !stop_ || !Listen(socket_->Get(), *endpoint)) {
            return false;
        }
        // Close waits for its end.
        acceptor_ = CThread([this, listening = socket_->Get()] { Accept(listening); });
        accepting_ = true;
        return true;
    }

    std::uint16_t Port() const override {
        const CLockGuard guard(lock_);
        return socket_ ? LocalPort(socket_->Get()) : std::uint16_t{0};
    }

    void Close() override {
        CUniqueLock guard(lock_);
        stopped_ = true;
        changed_.NotifyAll();
        if (std::exchange(accepting_, false)) {
            guard.Unlock();
            stop_.Set();
            acceptor_.Join();
            guard.Lock();
            socket_.reset();
        }
    }

    void Wait() override {
        const CLockGuard guard(lock_);
        const int own = servedHere == this ? 1 : 0;
        while (busy_ > own) {
            changed_.Wait(lock_);
        }
    }

 private:
    /// What the acceptor runs until the listener is closed.
    void Accept(SystemHandle listening) {
        while (AwaitRoom()) {
            const Waited waited = WaitFor(listening, Readiness::kReadable, kForever, &stop_);
            if (waited == Waited::kFailed || (waited == Waited::kReady && !ServeNext(listening))) {
                Pause();
            }
        }
    }

    /// Waits while as many callbacks run as may. False: the listener is closed.
    bool AwaitRoom() {
        const CLockGuard guard(lock_);
        while (!stopped_ && busy_ >= kMostAcceptCallbacks) {
            changed_.Wait(lock_);
        }
        return !stopped_;
    }

    /// False when out of descriptors, threads or memory.
    bool ServeNext(SystemHandle listening) {
        bool again = false;
        CDescriptor descriptor = AcceptTcp(listening, again);
        if (!descriptor) {
            return again;
        }
        std::uint32_t handle = 0;
        const CLockGuard guard(lock_);
        const bool served = OrNothing([&] {
            handle = CConnectionTable::Instance().Add(
                std::make_shared<CConnection>(std::move(descriptor), ConnectState::kEstablished));
            CThread([self = shared_from_this(), handle] { self->Serve(handle); }).Detach();
            return true;
        });
        if (served) {
            ++busy_;
        } else {
            EndConnection(CConnectionTable::Instance().Take(handle));
        }
        return served;
    }

    /// Lets the next try come after a while.
    void Pause() {
        const CLockGuard guard(lock_);
        if (!stopped_) {
            changed_.WaitFor(lock_, kPauseAfterFailedAccept);
        }
    }

    void Serve(std::uint32_t handle) {
        servedHere = this;
        RunCallback([&] { observer_->OnAccept(handle); });
        servedHere = nullptr;
        const CLockGuard guard(lock_);
        --busy_;
        changed_.NotifyAll();
    }

    static inline thread_local const CThreadedListener* servedHere = nullptr;

    CListenSocketObserver* const observer_;
    const CWakeUp stop_;
    CThread acceptor_;     // started by Open and ended by Close
    mutable CMutex lock_;  // before the connection table's
    CCondition changed_;
    std::optional<CDescriptor> socket_ GUARDED_BY(lock_);
    bool accepting_ GUARDED_BY(lock_) = false;
    bool stopped_ GUARDED_BY(lock_) = false;
    int busy_ GUARDED_BY(lock_) = 0;
};

}  // namespace

std::shared_ptr<CListener> CListener::Make(const char* address, std::uint16_t port,
                                           CListenSocketObserver* observer) {
    return OrNothing([&] {
        auto listener = std::make_shared<CThreadedListener>(observer);
        return listener->Open(address, port) ? listener : nullptr;
    });
}

}  // namespace onvif_client
