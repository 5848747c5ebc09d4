#include "platform/Connections.h"

#include <utility>

#include "platform/PerProcess.h"

namespace onvif_client {

ConnectState CConnection::Poll() {
    ConnectState connecting = ConnectState::kConnecting;
    if (state_ != connecting || WaitFor(Descriptor(), Readiness::kWritable, 0) != Waited::kReady) {
        return state_;
    }
    // Whoever broke it off meanwhile is right.
    const bool stands = ConnectOutcome(Descriptor()) == ConnectState::kEstablished;
    state_.compare_exchange_strong(connecting,
                                   stands ? ConnectState::kEstablished : ConnectState::kFailed);
    return state_;
}

std::size_t CConnection::Send(std::string_view data, int waitMs, bool& broken) const {
    std::size_t sent = 0;
    broken = state_ == ConnectState::kFailed;
    if (broken) {
        return 0;
    }
    Moved moved = SendNow(Descriptor(), data, sent);
    if (moved == Moved::kWouldWait && waitMs > 0) {
        WaitFor(Descriptor(), Readiness::kWritable, waitMs);
        moved = SendNow(Descriptor(), data, sent);
    }
    broken = moved == Moved::kEnded;
    return sent;
}

std::size_t CConnection::Receive(char* buffer, std::size_t capacity, bool& closed) const {
    std::size_t received = 0;
    closed = state_ == ConnectState::kFailed;
    if (state_ == ConnectState::kEstablished && capacity > 0) {
        closed = ReceiveNow(Descriptor(), buffer, capacity, received) == Moved::kEnded;
    }
    return received;
}

void CConnection::Break() {
    state_ = ConnectState::kFailed;
    ShutDown(Descriptor());
}

CConnectionTable& CConnectionTable::Instance() {
    static constinit CPerProcess<CConnectionTable> table;
    return table.Get();
}

std::uint32_t CConnectionTable::Add(std::shared_ptr<CConnection> connection) {
    const CLockGuard guard(lock_);
    do {
        ++lastHandle_;
    } while (lastHandle_ == 0 || entries_.contains(lastHandle_));
    entries_.emplace(lastHandle_, ConnectionEntry{std::move(connection), nullptr});
    return lastHandle_;
}

std::shared_ptr<CConnection> CConnectionTable::Find(std::uint32_t handle) {
    const CLockGuard guard(lock_);
    const auto entry = entries_.find(handle);
    return entry == entries_.end() ? nullptr : entry->second.connection;
}

std::shared_ptr<CConnectionWatch> CConnectionTable::FindWatch(std::uint32_t handle) {
    const CLockGuard guard(lock_);
    const auto entry = entries_.find(handle);
    return entry == entries_.end() ? nullptr : entry->second.watch;
}

bool CConnectionTable::AddWatch(std::uint32_t handle, std::shared_ptr<CConnectionWatch> watch) {
    const CLockGuard guard(lock_);
    const auto entry = entries_.find(handle);
    if (entry == entries_.end() || entry->second.watch != nullptr) {
        return false;
    }
    entry->second.watch = std::move(watch);
    return true;
}

ConnectionEntry CConnectionTable::Take(std::uint32_t handle) {
    const CLockGuard guard(lock_);
    auto node = entries_.extract(handle);
    return node.empty() ? ConnectionEntry{} : std::move(node.mapped());
}

std::pair<std::uint32_t, ConnectionEntry> CConnectionTable::After(std::uint32_t handle) {
    const CLockGuard guard(lock_);
    const auto entry = entries_.upper_bound(handle);
    if (entry == entries_.end()) {
        return {};
    }
    return *entry;
}

}  // namespace onvif_client
