#include "platform/ConnectionWatch.h"

#include <array>
#include <chrono>
#include <thread>
#include <utility>

// Asio needs <utility> before it.
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>

#include "platform/Mutex.h"
#include "platform/OrNothing.h"
#include "platform/Reactor.h"

namespace onvif_client {

namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

class CAsioConnectionWatch final : public CConnectionWatch,
                                   public std::enable_shared_from_this<CAsioConnectionWatch> {
 public:
    CAsioConnectionWatch(std::shared_ptr<CReactor> reactor, std::shared_ptr<CConnection> connection,
                         std::uint32_t handle, SystemHandle waitedOn)
        : reactor_(std::move(reactor)),
          connection_(std::move(connection)),
          handle_(handle),
          context_(reactor_->NextContext()),
          socket_(context_, tcp::v4(), static_cast<asio::detail::socket_type>(waitedOn)),
          timer_(context_) {}
    ~CAsioConnectionWatch() override { CloseLocked(); }
    CAsioConnectionWatch(const CAsioConnectionWatch&) = delete;
    CAsioConnectionWatch& operator=(const CAsioConnectionWatch&) = delete;

    bool Register(CSocketDataObserver* observer) override {
        const CLockGuard guard(lock_);
        if (ended_ || reader_.observer != nullptr) {
            return false;
        }
        used_ = true;
        reader_.observer = observer;
        reader_.closed = false;
        return true;
    }

    bool Start() override {
        const CLockGuard guard(lock_);
        reader_.started = reader_.observer != nullptr;
        ArmLocked();
        return reader_.started;
    }

    bool Stop() override {
        const CLockGuard guard(lock_);
        reader_.started = false;
        return reader_.observer != nullptr;
    }

    bool AwaitSendable(CSendableObserver* observer, std::uint32_t timeoutMs) override {
        const CLockGuard guard(lock_);
        if (ended_ || sender_.observer != nullptr) {
            return false;
        }
        used_ = true;
        // The lock is held, which the analysis does not see in a lambda.
        const bool waits = OrNothing([&]() NO_THREAD_SAFETY_ANALYSIS {
            timer_.expires_after(std::chrono::milliseconds(timeoutMs));
            timer_.async_wait(
                [weak = weak_from_this(), round = sender_.round](const error_code& cancelled) {
                    const auto self = weak.lock();
                    if (self != nullptr && !cancelled) {
                        self->OnTime(round);
                    }
                });
            sender_.observer = observer;
            ArmLocked();
            return true;
        });
        if (!waits) {
            sender_.observer = nullptr;
        }
        return waits;
    }

    bool UnRegister() override {
        const CLockGuard guard(lock_);
        reader_.observer = nullptr;
        reader_.started = false;
        StopSendingLocked();
        WaitForCallbackLocked();
        return std::exchange(used_, false);
    }

    void End() override {
        const CLockGuard guard(lock_);
        ended_ = true;
        CloseLocked();
        timer_.cancel();
        WaitForCallbackLocked();
    }

 private:
    struct Reader {
        CSocketDataObserver* observer = nullptr;
        bool started = false;
        bool armed = false;
        bool closed = false;  // by the peer: nothing comes any more
    };
    struct Sender {
        CSendableObserver* observer = nullptr;  // null: nobody waits
        bool armed = false;
        bool failureArmed = false;
        bool late = false;       // the time is over
        unsigned int round = 0;  // how many calls there were; tells old timers
    };

    bool CalledBackLocked() const REQUIRES(lock_) { return callbackThread_ != std::thread::id(); }

    void WaitForCallbackLocked() REQUIRES(lock_) {
        const auto own = std::this_thread::get_id();
        while (CalledBackLocked() && callbackThread_ != own) {
            changed_.Wait(lock_);
        }
    }

    /// Ends what Asio waits for, and gives the connection's descriptor back to it. A second one is
    /// closed; that alone ends no wait, as the connection's own keeps the socket open.
    void CloseLocked() REQUIRES(lock_) {
        error_code ignored;
        if (WaitsEndWithoutClosing() && socket_.is_open()) {
            socket_.release(ignored);
        } else if (socket_.is_open()) {
            socket_.cancel(ignored);
            ForgetDescriptor(static_cast<SystemHandle>(socket_.native_handle()));
            socket_.close(ignored);
        }
    }

    CSendableObserver* StopSendingLocked() REQUIRES(lock_) {
        sender_.late = false;
        ++sender_.round;
        timer_.cancel();
        if (sender_.failureArmed) {
            error_code ignored;
            socket_.cancel(ignored);  // also what waits for bytes, which is then waited for anew
        }
        return std::exchange(sender_.observer, nullptr);
    }

    /// Waits for what is wanted and not waited for yet. What happens during a callback is waited
    /// for again when that has ended.
    void ArmLocked() REQUIRES(lock_) {
        if (ended_ || CalledBackLocked()) {
            return;
        }
        if (reader_.started && !reader_.armed && !reader_.closed) {
            reader_.armed = true;
            socket_.async_wait(tcp::socket::wait_read,
                               [weak = weak_from_this()](const error_code& error) {
                                   if (const auto self = weak.lock()) {
                                       self->OnReadable(error);
                                   }
                               });
        }
        if (sender_.observer != nullptr && !sender_.armed) {
            sender_.armed = true;
            if (sender_.late) {
                asio::post(context_, [weak = weak_from_this()] {
                    if (const auto self = weak.lock()) {
                        self->OnWaited(&Sender::armed, {});
                    }
                });
            } else {
                AwaitLocked(tcp::socket::wait_write, &Sender::armed);
            }
        }
        if (sender_.observer != nullptr && !sender_.failureArmed && !sender_.late &&
            FailsWithoutBecomingWritable()) {
            sender_.failureArmed = true;
            AwaitLocked(tcp::socket::wait_error, &Sender::failureArmed);
        }
    }

    void AwaitLocked(tcp::socket::wait_type what, bool Sender::*mark) REQUIRES(lock_) {
        socket_.async_wait(what, [weak = weak_from_this(), mark](const error_code& error) {
            if (const auto self = weak.lock()) {
                self->OnWaited(mark, error);
            }
        });
    }

    void OnReadable(const error_code& error) {
        CUniqueLock guard(lock_);
        reader_.armed = false;
        if (ended_ || !reader_.started || CalledBackLocked()) {
            return;
        }
        if (error == asio::error::operation_aborted) {
            ArmLocked();
            return;
        }
        callbackThread_ = std::this_thread::get_id();
        CSocketDataObserver* const observer = reader_.observer;
        guard.Unlock();

        std::array<char, 16384> bytes;
        bool closed = false;
        const std::size_t received = connection_->Receive(bytes.data(), bytes.size(), closed);
        if (received > 0) {
            RunCallback([&] {
                std::uint32_t wanted = 0;
                observer->OnData(handle_, bytes.data(), static_cast<std::uint32_t>(received),
                                 &wanted);
            });
        } else if (closed) {
            RunCallback([&] { observer->OnEnd(handle_); });
        }

        guard.Lock();
        reader_.closed = closed;
        EndCallbackLocked();
    }

    void OnTime(unsigned int round) {
        {
            const CLockGuard guard(lock_);
            if (round != sender_.round || sender_.observer == nullptr) {
                return;
            }
            sender_.late = true;
        }
        LookWhetherSendable();
    }

    /// @param mark  what says that this is waited for.
    void OnWaited(bool Sender::*mark, const error_code& error) {
        {
            const CLockGuard guard(lock_);
            sender_.*mark = false;
            if (error == asio::error::operation_aborted) {
                ArmLocked();
                return;
            }
        }
        LookWhetherSendable();
    }

    void LookWhetherSendable() {
        CUniqueLock guard(lock_);
        if (ended_ || sender_.observer == nullptr || CalledBackLocked()) {
            return;
        }
        const ConnectState state = connection_->Poll();
        if (state == ConnectState::kConnecting && !sender_.late) {
            ArmLocked();
            return;
        }
        const bool ready = state == ConnectState::kEstablished && !sender_.late;
        CSendableObserver* const observer = StopSendingLocked();
        callbackThread_ = std::this_thread::get_id();
        guard.Unlock();

        RunCallback([&] { observer->OnSendable(handle_, ready); });

        guard.Lock();
        EndCallbackLocked();
    }

    void EndCallbackLocked() REQUIRES(lock_) {
        callbackThread_ = std::thread::id();
        changed_.NotifyAll();
        ArmLocked();
    }

    const std::shared_ptr<CReactor> reactor_;
    const std::shared_ptr<CConnection> connection_;
    const std::uint32_t handle_;
    asio::io_context& context_;
    mutable CMutex lock_;  // leaf, never held during a callback
    CCondition changed_;
    // Only waited on; the bytes are read from the connection.
    tcp::socket socket_ GUARDED_BY(lock_);
    asio::steady_timer timer_ GUARDED_BY(lock_);
    Reader reader_ GUARDED_BY(lock_);
    Sender sender_ GUARDED_BY(lock_);
    bool used_ GUARDED_BY(lock_) = false;
    bool ended_ GUARDED_BY(lock_) = false;
    std::thread::id callbackThread_ GUARDED_BY(lock_);
};

}  // namespace

std::shared_ptr<CConnectionWatch> CConnectionWatch::Make(std::shared_ptr<CConnection> connection,
                                                         std::uint32_t handle) {
    const SystemHandle own = connection->Descriptor();
    if (WaitsEndWithoutClosing()) {
        return OrNothing([&] {
            return std::make_shared<CAsioConnectionWatch>(CReactor::Get(), std::move(connection),
                                                          handle, own);
        });
    }
    CDescriptor waitedOn = Duplicate(own);
    if (!waitedOn) {
        return nullptr;
    }
    return OrNothing([&] {
        auto watch = std::make_shared<CAsioConnectionWatch>(CReactor::Get(), std::move(connection),
                                                            handle, waitedOn.Get());
        waitedOn.Release();
        return watch;
    });
}

void EndConnection(const ConnectionEntry& entry) {
    if (entry.watch != nullptr) {
        entry.watch->End();
    }
    if (entry.connection != nullptr) {
        entry.connection->Break();
    }
}

}  // namespace onvif_client
