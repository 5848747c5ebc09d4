#include "platform/Connections.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <utility>

#include "platform/Immortal.h"

namespace onvif_client {

ConnectState CConnection::Poll() {
    pollfd polled = {Descriptor(), POLLOUT, 0};
    ConnectState connecting = ConnectState::kConnecting;
    if (state_ != connecting || poll(&polled, 1, 0) != 1) {
        return state_;
    }
    // Whoever broke it off meanwhile is right.
    state_.compare_exchange_strong(connecting, ConnectOutcome(Descriptor()));
    return state_;
}

std::size_t CConnection::Send(const char* data, std::size_t length, int waitMs,
                              bool& broken) const {
    broken = state_ == ConnectState::kFailed;
    for (bool waited = false; !broken;) {
        const ssize_t sent = send(Descriptor(), data, length, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent >= 0) {
            return static_cast<std::size_t>(sent);
        }
        if (errno == EINTR) {
            continue;
        }
        broken = !WouldHaveWaited();
        if (waited || waitMs == 0) {
            break;
        }
        pollfd polled = {Descriptor(), POLLOUT, 0};
        poll(&polled, 1, waitMs);
        waited = true;
    }
    return 0;
}

std::size_t CConnection::Receive(char* buffer, std::size_t capacity, bool& closed) const {
    closed = state_ == ConnectState::kFailed;
    while (state_ == ConnectState::kEstablished && capacity > 0) {
        const ssize_t received = recv(Descriptor(), buffer, capacity, MSG_DONTWAIT);
        if (received > 0) {
            return static_cast<std::size_t>(received);
        }
        if (received < 0 && errno == EINTR) {
            continue;
        }
        closed = received == 0 || !WouldHaveWaited();
        break;
    }
    return 0;
}

void CConnection::Break() {
    state_ = ConnectState::kFailed;
    shutdown(Descriptor(), SHUT_RDWR);
}

CConnectionTable& CConnectionTable::Instance() {
    static CConnectionTable& table = MakeImmortal<CConnectionTable>();
    return table;
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

std::shared_ptr<CReadRegistration> CConnectionTable::FindRegistration(std::uint32_t handle) {
    const CLockGuard guard(lock_);
    const auto entry = entries_.find(handle);
    return entry == entries_.end() ? nullptr : entry->second.registration;
}

bool CConnectionTable::SetRegistration(std::uint32_t handle,
                                       std::shared_ptr<CReadRegistration> registration) {
    const CLockGuard guard(lock_);
    const auto entry = entries_.find(handle);
    if (entry == entries_.end() || entry->second.registration != nullptr) {
        return false;
    }
    entry->second.registration = std::move(registration);
    return true;
}

std::shared_ptr<CReadRegistration> CConnectionTable::TakeRegistration(std::uint32_t handle) {
    const CLockGuard guard(lock_);
    const auto entry = entries_.find(handle);
    return entry == entries_.end() ? nullptr : std::exchange(entry->second.registration, nullptr);
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
