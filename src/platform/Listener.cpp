#include "platform/Listener.h"

#include <chrono>
#include <thread>
#include <utility>

// Asio needs <utility> before it.
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>

#include "platform/AsioDescriptor.h"
#include "platform/BlockedSignals.h"
#include "platform/ConnectionWatch.h"
#include "platform/Connections.h"
#include "platform/Mutex.h"
#include "platform/OrNothing.h"
#include "platform/Reactor.h"

namespace onvif_client {

namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

constexpr int kMostAcceptCallbacks = 16;
constexpr auto kPauseAfterFailedAccept = std::chrono::milliseconds(100);

class CAsioListener final : public CListener, public std::enable_shared_from_this<CAsioListener> {
 public:
    CAsioListener(std::shared_ptr<CReactor> reactor, CListenSocketObserver* observer)
        : reactor_(std::move(reactor)),
          observer_(observer),
          acceptor_(reactor_->Io()),
          pause_(reactor_->Io()) {}
    ~CAsioListener() override { CloseDescriptor(acceptor_); }
    CAsioListener(const CAsioListener&) = delete;
    CAsioListener& operator=(const CAsioListener&) = delete;

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

    void Close() override {
        const CLockGuard guard(lock_);
        stopped_ = true;
        CloseDescriptor(acceptor_);
        pause_.cancel();
    }

    void Wait() override {
        const CLockGuard guard(lock_);
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
            const CBlockedSignals blocked;
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

std::shared_ptr<CListener> CListener::Make(const char* address, std::uint16_t port,
                                           CListenSocketObserver* observer) {
    return OrNothing([&] {
        auto listener = std::make_shared<CAsioListener>(CReactor::Get(), observer);
        return listener->Open(address, port) ? listener : nullptr;
    });
}

}  // namespace onvif_client
