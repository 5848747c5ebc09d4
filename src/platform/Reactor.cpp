#include "platform/Reactor.h"

#include <array>
#include <thread>
#include <utility>
#include <vector>

// Asio needs <utility> before it.
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>

#include "platform/Corekit.h"
#include "platform/Immortal.h"
#include "platform/Mutex.h"
#include "platform/OrNothing.h"
#include "platform/SocketLayer.h"

namespace onvif_client {

namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

constexpr std::size_t kReactorThreads = 2;
constexpr int kMostAcceptCallbacks = 16;
constexpr auto kPauseAfterFailedAccept = std::chrono::milliseconds(100);

/// Runs a callback of an observer; what it throws ends here.
template <typename Callback>
void RunCallback(const Callback& callback) {
    const CSocketLayer::CCallback running;
    try {
        callback();
    } catch (...) {
        COREKIT_AbnormalOutput("ASSERT", "Wirelink", "an observer's callback threw");
    }
}

class CReactor : public std::enable_shared_from_this<CReactor> {
 public:
    /// The reactor in force, started when there is none.
    static std::shared_ptr<CReactor> Get() {
        CCurrent& current = Current();
        const CLockGuard guard(current.lock);
        if (current.reactor == nullptr) {
            auto made = std::make_shared<CReactor>();
            made->StartThreads();
            current.reactor = std::move(made);
        }
        return current.reactor;
    }

    static void Stop() {
        std::shared_ptr<CReactor> stopped;
        {
            CCurrent& current = Current();
            const CLockGuard guard(current.lock);
            stopped = std::exchange(current.reactor, nullptr);
        }
        if (stopped == nullptr) {
            return;
        }
        stopped->io_.stop();
        for (std::thread& thread : stopped->threads_) {
            if (thread.get_id() == std::this_thread::get_id()) {
                thread.detach();
            } else {
                thread.join();
            }
        }
    }

    asio::io_context& Io() { return io_; }

 private:
    struct CCurrent {
        CMutex lock;  // leaf
        std::shared_ptr<CReactor> reactor GUARDED_BY(lock);
    };
    static CCurrent& Current() {
        static CCurrent& current = MakeImmortal<CCurrent>();
        return current;
    }

    /// One thread is enough to work; throws when not even that can be had.
    void StartThreads() {
        try {
            while (threads_.size() < kReactorThreads) {
                // Each keeps the reactor alive: the last user may be a callback on it.
                threads_.emplace_back([self = shared_from_this()] { self->Work(); });
            }
        } catch (const std::exception&) {
            if (threads_.empty()) {
                throw;
            }
        }
    }

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

class CAsioReadRegistration final : public CReadRegistration,
                                    public std::enable_shared_from_this<CAsioReadRegistration> {
 public:
    CAsioReadRegistration(std::shared_ptr<CReactor> reactor,
                          std::shared_ptr<CConnection> connection, std::uint32_t handle,
                          CSocketDataObserver* observer, int waitedOn)
        : reactor_(std::move(reactor)),
          connection_(std::move(connection)),
          handle_(handle),
          observer_(observer),
          socket_(reactor_->Io(), tcp::v4(), waitedOn) {}

    void Start() override {
        const CLockGuard guard(lock_);
        started_ = true;
        ArmLocked();
    }

    void Stop() override {
        const CLockGuard guard(lock_);
        started_ = false;
    }

    void End() override {
        const CLockGuard guard(lock_);
        ended_ = true;
        error_code ignored;
        socket_.close(ignored);
        const auto own = std::this_thread::get_id();
        while (callbackThread_ != std::thread::id() && callbackThread_ != own) {
            changed_.Wait(lock_);
        }
    }

 private:
    /// Waits for bytes, unless that is going on already.
    void ArmLocked() REQUIRES(lock_) {
        if (!started_ || ended_ || armed_ || callbackThread_ != std::thread::id()) {
            return;
        }
        armed_ = true;
        socket_.async_wait(tcp::socket::wait_read,
                           [weak = weak_from_this()](const error_code& error) {
                               if (const auto self = weak.lock()) {
                                   self->OnReadable(error);
                               }
                           });
    }

    void OnReadable(const error_code& error) {
        CUniqueLock guard(lock_);
        armed_ = false;
        if (error || ended_ || !started_) {
            return;
        }
        callbackThread_ = std::this_thread::get_id();
        guard.Unlock();

        std::array<char, 16384> bytes;
        bool closed = false;
        const std::size_t received = connection_->Receive(bytes.data(), bytes.size(), closed);
        if (received > 0) {
            RunCallback([&] {
                std::uint32_t wanted = 0;
                observer_->OnData(handle_, bytes.data(), static_cast<std::uint32_t>(received),
                                  &wanted);
            });
        }

        guard.Lock();
        callbackThread_ = std::thread::id();
        changed_.NotifyAll();
        if (!closed) {
            ArmLocked();
        }
    }

    const std::shared_ptr<CReactor> reactor_;
    const std::shared_ptr<CConnection> connection_;
    const std::uint32_t handle_;
    CSocketDataObserver* const observer_;
    CMutex lock_;  // leaf, never held during a callback
    CCondition changed_;
    // Only waited on; the bytes are read from the connection.
    tcp::socket socket_ GUARDED_BY(lock_);
    bool started_ GUARDED_BY(lock_) = false;
    bool ended_ GUARDED_BY(lock_) = false;
    bool armed_ GUARDED_BY(lock_) = false;
    std::thread::id callbackThread_ GUARDED_BY(lock_);
};

class CAsioListener final : public CListener, public std::enable_shared_from_this<CAsioListener> {
 public:
    CAsioListener(std::shared_ptr<CReactor> reactor, CListenSocketObserver* observer)
        : reactor_(std::move(reactor)),
          observer_(observer),
          acceptor_(reactor_->Io()),
          pause_(reactor_->Io()) {}

    bool Open(const char* address, std::uint16_t port) {
        error_code error;
        const tcp::endpoint endpoint(asio::ip::make_address_v4(address, error), port);
        // Asio would leave the socket to child processes.
        CDescriptor descriptor = MakeTcpSocket();
        const CLockGuard guard(lock_);
        if (!error) acceptor_.assign(endpoint.protocol(), descriptor.Get(), error);
        if (!error) descriptor.Release();
        if (!error) acceptor_.set_option(tcp::acceptor::reuse_address(true), error);
        if (!error) acceptor_.bind(endpoint, error);
        if (!error) acceptor_.listen(tcp::acceptor::max_listen_connections, error);
        if (!error) AcceptLocked();
        return !error;
    }

    std::uint16_t Port() const override {
        const CLockGuard guard(lock_);
        error_code ignored;
        return acceptor_.local_endpoint(ignored).port();
    }

    void Stop() override {
        const CLockGuard guard(lock_);
        stopped_ = true;
        error_code ignored;
        acceptor_.close(ignored);
        pause_.cancel();
        const int own = servedHere == this ? 1 : 0;
        while (busy_ > own) {
            changed_.Wait(lock_);
        }
    }

 private:
    /// Waits for the next connection; a thread that has no memory for that tries it until it has.
    void AcceptLocked() REQUIRES(lock_) {
        while (!stopped_ && !accepting_ && busy_ < kMostAcceptCallbacks) {
            try {
                // An async_accept that has no memory for its socket would forget its handler.
                acceptor_.async_wait(tcp::acceptor::wait_read,
                                     [weak = weak_from_this()](const error_code& error) {
                                         if (const auto self = weak.lock()) {
                                             self->OnAcceptable(error);
                                         }
                                     });
                accepting_ = true;
            } catch (const std::exception&) {
                changed_.WaitFor(lock_, kPauseAfterFailedAccept);
            }
        }
    }

    void OnAcceptable(const error_code& error) {
        const CLockGuard guard(lock_);
        accepting_ = false;
        if (stopped_) {
            return;
        }
        const bool served = !error && ServeLocked();
        if (served || !PauseLocked()) {
            AcceptLocked();
        }
    }

    /// False when out of descriptors, threads or memory.
    bool ServeLocked() REQUIRES(lock_) {
        bool again = false;
        CDescriptor descriptor = AcceptTcp(acceptor_.native_handle(), again);
        if (!descriptor) {
            return again;
        }
        std::uint32_t handle = 0;
        const bool served = OrNothing([&] {
            handle = CConnectionTable::Instance().Add(
                std::make_shared<CConnection>(std::move(descriptor), ConnectState::kEstablished));
            std::thread([self = shared_from_this(), handle] { self->Serve(handle); }).detach();
            return true;
        });
        if (served) {
            ++busy_;
        } else {
            EndConnection(CConnectionTable::Instance().Take(handle));
        }
        return served;
    }

    /// Lets the next try come after a while. False when there is no memory for that.
    bool PauseLocked() REQUIRES(lock_) {
        // The lock is held, which the analysis does not see in a lambda.
        return OrNothing([&]() NO_THREAD_SAFETY_ANALYSIS {
            pause_.expires_after(kPauseAfterFailedAccept);
            pause_.async_wait([weak = weak_from_this()](const error_code& cancelled) {
                const auto self = weak.lock();
                if (self != nullptr && !cancelled) {
                    const CLockGuard guard(self->lock_);
                    self->AcceptLocked();
                }
            });
            return true;
        });
    }

    void Serve(std::uint32_t handle) {
        servedHere = this;
        RunCallback([&] { observer_->OnAccept(handle); });
        servedHere = nullptr;
        const CLockGuard guard(lock_);
        --busy_;
        changed_.NotifyAll();
        AcceptLocked();
    }

    static inline thread_local const CAsioListener* servedHere = nullptr;

    const std::shared_ptr<CReactor> reactor_;
    CListenSocketObserver* const observer_;
    mutable CMutex lock_;  // before the connection table's
    CCondition changed_;
    tcp::acceptor acceptor_ GUARDED_BY(lock_);
    asio::steady_timer pause_ GUARDED_BY(lock_);
    bool accepting_ GUARDED_BY(lock_) = false;
    bool stopped_ GUARDED_BY(lock_) = false;
    int busy_ GUARDED_BY(lock_) = 0;
};

}  // namespace

std::shared_ptr<CReadRegistration> CReadRegistration::Make(std::shared_ptr<CConnection> connection,
                                                           std::uint32_t handle,
                                                           CSocketDataObserver* observer) {
    // Asio closes what it waits on; the connection keeps its own descriptor.
    CDescriptor waitedOn = Duplicate(connection->Descriptor());
    if (!waitedOn) {
        return nullptr;
    }
    return OrNothing([&] {
        auto registration = std::make_shared<CAsioReadRegistration>(
            CReactor::Get(), std::move(connection), handle, observer, waitedOn.Get());
        waitedOn.Release();
        return registration;
    });
}

std::shared_ptr<CListener> CListener::Make(const char* address, std::uint16_t port,
                                           CListenSocketObserver* observer) {
    return OrNothing([&] {
        auto listener = std::make_shared<CAsioListener>(CReactor::Get(), observer);
        return listener->Open(address, port) ? listener : nullptr;
    });
}

void EndConnection(const ConnectionEntry& entry) {
    if (entry.registration != nullptr) {
        entry.registration->End();
    }
    if (entry.connection != nullptr) {
        entry.connection->Break();
    }
}

void StopReactor() {
    CReactor::Stop();
}

}  // namespace onvif_client
