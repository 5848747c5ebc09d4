#include "support/VirtualNetwork.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <map>
#include <set>
#include <thread>
#include <utility>

#include "client/ReplyCollector.h"
#include "platform/Clock.h"
#include "platform/ManualResetEvent.h"
#include "platform/PerProcess.h"
#include "platform/Wirelink.h"

namespace client_test::network {

namespace {

using Lock = std::unique_lock<std::mutex>;
using Link = IVirtualDevice::Link;

struct Waiter {
    std::condition_variable ready;
    bool woken = false;
};

struct Connection {
    IVirtualDevice* device = nullptr;
    int result = 0;  // of connecting, as WIRELINK_PopConnectResult tells it
    bool closed = false;
    bool reading = false;
    bool ended = false;  // the reader knows that it is closed
    std::string received;
    std::size_t pieceSize = SIZE_MAX;
    std::function<void()> taken = [] {};
    Waiter* exchange = nullptr;
    std::uint64_t wait = 0;  // for room; 0: none
    onvif_client::CSendableObserver* sendable = nullptr;
    onvif_client::CSocketDataObserver* reader = nullptr;
};

class CClock final : public onvif_client::IClock {
 public:
    std::uint32_t TickCount() const override {  // wraps after an hour
        return static_cast<std::uint32_t>(Now() - 3'600'000);
    }
    std::int64_t CalendarSeconds() const override { return 1'800'000'000 + Now() / 1000; }
    void Sleep(std::uint32_t milliseconds) const override { network::Sleep(milliseconds); }
};

/// All of it is guarded by its lock, which is a leaf.
struct State {
    std::mutex lock;
    Moment step = 1;
    std::atomic<Moment> now = 0;
    int working = 0;
    bool stopped = false;
    std::multimap<Moment, std::function<void()>> timers;
    std::set<Waiter*> waiters;
    Waiter* pause = nullptr;
    Moment lastPause = -1;
    std::function<void()> endOfMoment = [] {};
    std::map<std::string, IVirtualDevice*, std::less<>> devices;
    std::map<std::uint32_t, Connection> connections;
    std::uint32_t lastHandle = 0;
    std::uint64_t lastWait = 0;
    std::deque<std::pair<std::uint32_t, std::uint64_t>> callbacks;  // connection and wait; 0: data
    std::uint32_t calling = 0;  // the connection whose callback runs
    std::condition_variable called;
    std::thread::id callbackThread;
    Waiter callbackWaiter;
    CClock clock;
};

// Never destroyed, as threads may still be inside while the process ends.
constinit onvif_client::CPerProcess<State> state;
State& net = state.Get();

Connection* Find(std::uint32_t handle) {
    const auto found = net.connections.find(handle);
    return found == net.connections.end() ? nullptr : &found->second;
}

/// Does something with a connection that is there.
template <typename Action>
bool With(std::uint32_t handle, const Action& action) {
    const Lock lock(net.lock);
    Connection* connection = Find(handle);
    if (connection != nullptr) {
        action(*connection);
    }
    return connection != nullptr;
}

void Wake(Waiter* waiter) {
    if (waiter != nullptr && !std::exchange(waiter->woken, true)) {
        ++net.working;
        waiter->ready.notify_one();
    }
}

void MoveTime() {
    constexpr Moment kLongest = 1000;
    while (net.working == 0 && !net.stopped) {
        while (!net.timers.empty() && net.timers.begin()->first <= net.now) {
            net.timers.extract(net.timers.begin()).mapped()();
        }
        if (!net.callbacks.empty()) {
            Wake(&net.callbackWaiter);
        } else if (net.working == 0 && net.pause != nullptr && net.lastPause < net.now) {
            net.lastPause = net.now;
            Wake(std::exchange(net.pause, nullptr));
        } else if (net.working == 0) {
            net.endOfMoment();
            const Moment latest = net.now + kLongest;
            net.now = net.timers.empty() ? latest : std::min(net.timers.begin()->first, latest);
        }
    }
}

void Block(Lock& lock, Waiter& waiter) {
    waiter.woken = false;
    net.waiters.insert(&waiter);
    --net.working;
    MoveTime();
    waiter.ready.wait(lock, [&] { return waiter.woken || net.stopped; });
    net.waiters.erase(&waiter);
}

void OfferData(std::uint32_t handle) {
    const Connection* connection = Find(handle);
    if (connection != nullptr && connection->reading &&
        (!connection->received.empty() || (connection->closed && !connection->ended))) {
        net.callbacks.emplace_back(handle, 0);
    }
}

void CallNext(Lock& lock) {
    const auto [handle, wait] = net.callbacks.front();
    net.callbacks.pop_front();
    Connection* connection = Find(handle);
    if (connection == nullptr || connection->wait != wait || (wait == 0 && !connection->reading)) {
        return;
    }
    connection->wait = 0;
    const bool ready = connection->result > 0;
    auto* const sendable = connection->sendable;
    auto* const reader = connection->reader;
    const std::string piece = connection->received.substr(0, connection->pieceSize);
    const bool ends =
        wait == 0 && piece.empty() && connection->closed && !std::exchange(connection->ended, true);
    net.calling = handle;
    lock.unlock();
    std::uint32_t wanted = 0;
    if (wait != 0) {
        sendable->OnSendable(handle, ready);
    } else if (ends) {
        reader->OnEnd(handle);
    } else if (!piece.empty()) {
        reader->OnData(handle, piece.data(), static_cast<std::uint32_t>(piece.size()), &wanted);
    }
    lock.lock();
    connection = Find(handle);
    if (wait == 0 && connection != nullptr) {
        connection->received.erase(0, piece.size());
        connection->received.empty() ? std::exchange(connection->taken, [] {})() : void();
        OfferData(handle);
    }
    net.calling = 0;
    net.called.notify_all();
}

void RunCallbacks() {
    Lock lock(net.lock);
    net.callbackThread = std::this_thread::get_id();
    while (!net.stopped) {
        Block(lock, net.callbackWaiter);
        while (!net.callbacks.empty() && !net.stopped) {
            CallNext(lock);
        }
    }
}

void Settle(std::uint32_t handle, Connection& connection, int result) {
    if (connection.result == 0) {
        connection.result = result;
    }
    Wake(connection.exchange);
    if (connection.wait != 0) {
        net.callbacks.emplace_back(handle, connection.wait);
    }
}

std::uint32_t Connect(const char* ip) {
    const std::uint32_t handle = ++net.lastHandle;
    const auto place = net.devices.find(ip);
    net.connections[handle].device = place == net.devices.end() ? nullptr : place->second;
    After(1, [handle] {
        Connection* connection = Find(handle);
        const bool there = connection != nullptr && connection->device != nullptr;
        const Link link = there ? connection->device->GetLink() : Link::kRefusing;
        if (connection != nullptr && link != Link::kSilent) {
            Settle(handle, *connection, link == Link::kUp ? 1 : -1);
        }
    });
    return handle;
}

bool Send(std::uint32_t handle, std::string_view bytes) {
    const Connection& connection = net.connections.at(handle);
    const bool stands = connection.result > 0 && !connection.closed;
    if (stands && connection.device->GetLink() == Link::kUp) {
        connection.device->OnRequest(handle, bytes);
    }
    return stands;
}

}  // namespace

void Start(Moment step) {
    static const onvif_client::CScopedClock scoped(net.clock);
    net.step = step;
    net.working = 2;
    std::thread(RunCallbacks).detach();
}

Moment Now() {
    return net.now;
}

void Sleep(Moment milliseconds) {
    constexpr Moment kPause = 10;
    Waiter waiter;
    Lock lock(net.lock);
    if (milliseconds == kPause) {
        net.pause = &waiter;
    } else {
        After(milliseconds, [&waiter] { Wake(&waiter); });
    }
    Block(lock, waiter);
}

void Work(int threads) {
    const Lock lock(net.lock);
    net.working += threads;
    MoveTime();
}

Lock Hold() {
    return Lock(net.lock);
}

void Place(const std::string& ip, IVirtualDevice& device) {
    net.devices[ip] = &device;
}

void After(Moment milliseconds, std::function<void()> action) {
    const Moment steps = std::max<Moment>((milliseconds + net.step - 1) / net.step, 1);
    net.timers.emplace(net.now + steps * net.step, std::move(action));
}

void AtEndOfMoments(std::function<void()> check) {
    net.endOfMoment = std::move(check);
}

void Give(std::uint32_t handle, std::string_view bytes, std::function<void()> taken,
          std::size_t pieceSize) {
    Connection* connection = Find(handle);
    if (connection == nullptr || connection->closed || connection->device->GetLink() != Link::kUp) {
        return;
    }
    connection->received += bytes;
    connection->pieceSize = pieceSize;
    if (connection->exchange != nullptr) {
        Wake(connection->exchange);
        taken();
    } else {
        connection->taken = std::move(taken);
        OfferData(handle);
    }
}

void Close(std::uint32_t handle) {
    if (Connection* connection = Find(handle)) {
        connection->closed = true;
        Settle(handle, *connection, -1);
        OfferData(handle);
    }
}

void CloseAll(const IVirtualDevice& device) {
    for (const auto& [handle, connection] : net.connections) {
        if (connection.device == &device) {
            Close(handle);
        }
    }
}

std::uint32_t Accept(IVirtualDevice& device) {
    Connection& connection = net.connections[++net.lastHandle];
    connection.device = &device;
    connection.result = 1;
    return net.lastHandle;
}

std::size_t Connections() {
    return net.connections.size();
}

}  // namespace client_test::network

namespace onvif_client {

using namespace client_test::network;  // NOLINT(google-build-using-namespace): all is its own

bool WIRELINK_Initial(int, int, const char*, unsigned int) {
    return true;
}

/// For good.
void WIRELINK_Quit() {
    Lock lock(net.lock);
    net.stopped = true;
    for (Waiter* each : net.waiters) {
        each->ready.notify_all();
    }
    net.called.wait(lock, [] { return net.calling == 0; });
}

bool WIRELINK_ObservedClientComm(const char* ip, unsigned short, const char* request,
                                 unsigned int requestLength, CReplyObserver* observer,
                                 unsigned int timeoutMs, ExchangeEnd*, KeptUse*) {
    Lock lock(net.lock);
    if (net.stopped) {
        return false;
    }
    Waiter waiter;
    Moment end = INT64_MAX;
    const std::uint32_t handle = Connect(ip);
    Connection& connection = *Find(handle);
    connection.exchange = &waiter;
    const auto endWithin = [&](Moment milliseconds) {
        if (net.now + milliseconds < end) {
            end = net.now + milliseconds;
            After(milliseconds, [handle] {
                const Connection* late = Find(handle);
                Wake(late == nullptr ? nullptr : late->exchange);
            });
        }
    };
    endWithin(timeoutMs);
    bool sent = false;
    while (!net.stopped && net.now < end && connection.result >= 0 &&
           !(connection.closed && connection.received.empty())) {
        if (connection.received.empty()) {
            Block(lock, waiter);
        }
        sent = sent || Send(handle, {request, requestLength});
        const std::string piece = connection.received.substr(0, connection.pieceSize);
        connection.received.erase(0, piece.size());
        const auto size = static_cast<std::uint32_t>(piece.size());
        endWithin(size == 0 ? kReplyGoesOn : observer->OnReply(piece.data(), size));
    }
    net.connections.erase(handle);
    return sent;
}

/// The marker is the end of an envelope.
int WIRELINK_SimpleClientComm(const char* ip, unsigned short port, const char* request,
                              unsigned int requestLength, char* replyBuffer,
                              unsigned int replyCapacity, const char*, unsigned int timeoutMs,
                              ExchangeEnd*) {
    CReplyCollector reply({}, replyCapacity);
    return WIRELINK_ObservedClientComm(ip, port, request, requestLength, &reply, timeoutMs)
               ? static_cast<int>(reply.Take().copy(replyBuffer, replyCapacity))
               : -1;
}

std::uint32_t WIRELINK_AddConnect(std::uint32_t, const char* ip, unsigned short) {
    const Lock lock(net.lock);
    return net.stopped ? 0 : Connect(ip);
}

bool WIRELINK_PopConnectResult(std::uint32_t handle, int& result, std::uint32_t) {
    return With(handle, [&](const Connection& connection) { result = connection.result; });
}

bool WIRELINK_AwaitSendable(std::uint32_t handle, CSendableObserver* observer,
                            std::uint32_t timeoutMs) {
    return With(handle, [&](Connection& connection) {
        connection.sendable = observer;
        connection.wait = ++net.lastWait;
        After(connection.result != 0 ? 1 : timeoutMs,
              [call = std::pair(handle, connection.wait)] { net.callbacks.push_back(call); });
    });
}

bool WIRELINK_DelConnect(std::uint32_t handle) {
    return With(handle, [&](const Connection&) { Close(handle); });
}

int WIRELINK_Send(std::uint32_t handle, const char* data, std::uint32_t length) {
    bool sent = false;
    With(handle, [&](const Connection&) { sent = Send(handle, {data, length}); });
    return sent ? static_cast<int>(length) : -1;
}

std::uint32_t WIRELINK_GetLastError() {
    return 0;
}

int WIRELINK_Send_Immediate(std::uint32_t handle, const char* data, std::uint32_t length,
                            bool& error) {
    const int sent = WIRELINK_Send(handle, data, length);
    error = sent < 0;
    return std::max(sent, 0);
}

int WIRELINK_Recv_Immediate(std::uint32_t handle, char* buffer, std::uint32_t capacity,
                            bool* closed) {
    std::size_t size = 0;
    bool over = true;
    With(handle, [&](Connection& connection) {
        size = std::min<std::size_t>(capacity, connection.pieceSize);
        size = connection.received.copy(buffer, size);
        connection.received.erase(0, size);
        over = connection.closed && size == 0;
    });
    if (closed != nullptr) {
        *closed = over;
    }
    return static_cast<int>(size);
}

bool WIRELINK_RegisterNode(std::uint32_t handle, CSocketDataObserver* observer,
                           CSocketDataObserver*, int, int) {
    return With(handle, [&](Connection& connection) { connection.reader = observer; });
}

bool WIRELINK_Start(std::uint32_t handle) {
    return With(handle, [&](Connection& connection) {
        connection.reading = true;
        OfferData(handle);
    });
}

bool WIRELINK_Stop(std::uint32_t handle) {
    return With(handle, [](Connection& connection) { connection.reading = false; });
}

bool WIRELINK_UnRegisterNode(std::uint32_t handle) {
    return WIRELINK_Stop(handle);
}

bool WIRELINK_DestroyHNetCommunication(std::uint32_t handle) {
    Lock lock(net.lock);
    net.called.wait(lock, [handle] {
        return net.calling != handle || net.callbackThread == std::this_thread::get_id();
    });
    const auto taken = net.connections.extract(handle);
    if (!taken.empty() && taken.mapped().device != nullptr) {
        taken.mapped().device->OnClosed(handle);
    }
    return !taken.empty();
}

bool WIRELINK_StartListen(unsigned short, CListenSocketObserver*, std::uint32_t, bool) {
    return true;
}

bool WIRELINK_StopListen(unsigned short) {
    return true;
}

void CManualResetEvent::Set() {
    const CLockGuard guard(lock_);
    Work(std::exchange(signalled_, true) ? 0 : 1);
    changed_.NotifyAll();
}

void CManualResetEvent::Reset() {
    const CLockGuard guard(lock_);
    Work(std::exchange(signalled_, false) ? -1 : 0);
}

void CManualResetEvent::Wait() {
    const CLockGuard guard(lock_);
    while (!signalled_) {
        changed_.Wait(lock_);
    }
}

}  // namespace onvif_client
