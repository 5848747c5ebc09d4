#include <map>
#include <memory>
#include <utility>

#include "platform/ConnectionWatch.h"
#include "platform/KeptTable.h"
#include "platform/Listener.h"
#include "platform/LocalAddresses.h"
#include "platform/Mutex.h"
#include "platform/PerProcess.h"
#include "platform/Reactor.h"
#include "platform/SocketLayer.h"
#include "platform/Wirelink.h"

namespace onvif_client {

namespace {

/// The listeners by port.
class CListenerTable {
 public:
    static CListenerTable& Instance() {
        static constinit CPerProcess<CListenerTable> table;
        return table.Get();
    }

    bool Add(std::uint16_t port, CListenSocketObserver* observer) {
        const CLockGuard guard(lock_);
        if (listeners_.contains(port)) {
            return false;
        }
        auto listener = CListener::Make(ListenAddress().c_str(), port, observer);
        return listener != nullptr && listeners_.emplace(port, std::move(listener)).second;
    }

    std::shared_ptr<CListener> Take(std::uint16_t port) {
        const CLockGuard guard(lock_);
        auto node = listeners_.extract(port);
        return node.empty() ? nullptr : std::move(node.mapped());
    }

    std::map<std::uint16_t, std::shared_ptr<CListener>> TakeAll() {
        const CLockGuard guard(lock_);
        return std::exchange(listeners_, {});
    }

 private:
    CMutex lock_;  // before the reactor's locks
    std::map<std::uint16_t, std::shared_ptr<CListener>> listeners_ GUARDED_BY(lock_);
};

/// Ends everything in the background. Nothing new comes from the listeners when the connections are
/// broken off, so that whoever waits in a callback on one goes on.
void EndAll() {
    CConnectionTable& connections = CConnectionTable::Instance();
    const auto listeners = CListenerTable::Instance().TakeAll();
    for (const auto& [port, listener] : listeners) {
        listener->Close();
    }
    for (auto each = connections.After(0); each.first != 0; each = connections.After(each.first)) {
        each.second.connection->Break();
    }
    for (const auto& [port, listener] : listeners) {
        listener->Wait();
    }
    // Each stays in the table until its callback has ended: whoever unregisters it meanwhile has to
    // wait for that too.
    for (auto each = connections.After(0); each.first != 0; each = connections.After(each.first)) {
        EndConnection(each.second);
        connections.Take(each.first);
    }
    CloseKeptConnections();
    CReactor::Stop();
}

}  // namespace

bool WIRELINK_Initial(int, int, const char*, unsigned int) {
    return CSocketLayer::Instance().Start();
}

void WIRELINK_Quit() {
    CSocketLayer::Instance().Stop(EndAll);
}

bool WIRELINK_StartListen(unsigned short port, CListenSocketObserver* observer, std::uint32_t,
                          bool) {
    const CSocketLayer::CVisit visit = CSocketLayer::Instance().Enter();
    return visit && observer != nullptr && CListenerTable::Instance().Add(port, observer);
}

bool WIRELINK_StopListen(unsigned short port) {
    const auto listener = CListenerTable::Instance().Take(port);
    if (listener == nullptr) {
        return false;
    }
    listener->Stop();
    return true;
}

}  // namespace onvif_client
