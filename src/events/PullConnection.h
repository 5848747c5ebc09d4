/// @file
/// The connection of a pull: made and written to in the background, so that no thread waits for a
/// device.
#ifndef ONVIF_CLIENT_EVENTS_PULLCONNECTION_H
#define ONVIF_CLIENT_EVENTS_PULLCONNECTION_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "client/ExchangeTrace.h"
#include "events/EventParse.h"
#include "platform/Mutex.h"
#include "platform/WirelinkHandle.h"

namespace onvif_client {

/// What goes out, and to whom.
struct PullRequest {
    std::string host;  // dotted IPv4
    std::uint16_t port = 0;
    std::string text;
    bool mayReuse = false;  // goes over the connection of the pull before where that still stands
    std::shared_ptr<CExchangeTrace> trace = nullptr;  // where exchanges are traced
};

/// Any thread; Begin and Close come from one at a time.
class CPullConnection final : private CSendableObserver {
 public:
    /// @param sink    hears when there is no way to the device.
    /// @param parser  gets what the device answers.
    CPullConnection(IPullSink& sink, CEventParse& parser) : sink_(sink), parser_(parser) {}
    ~CPullConnection() override { Close(); }
    CPullConnection(const CPullConnection&) = delete;
    CPullConnection& operator=(const CPullConnection&) = delete;

    /// Connects, 600 ms at most for each of three tries, sends the request and lets the parser
    /// read. Returns at once. While the socket layer is stopped nothing comes of it.
    void Begin(PullRequest request) EXCLUDES(lock_);
    /// Breaks off; returns when no callback of the connection runs.
    void Close() EXCLUDES(lock_);
    /// The same, but the connection stays for the next pull.
    void Rest() EXCLUDES(lock_);
    /// Whether the pull goes over the connection of one before.
    bool Reuses() const EXCLUDES(lock_);
    /// False when there is no connection, or none any more because the socket layer was stopped.
    bool Exists() const;

 private:
    void OnSendable(std::uint32_t handle, bool ready) override;
    /// Uses one of the tries that are left.
    /// @return false when there is no socket for it.
    bool TryLocked() REQUIRES(lock_);
    /// Over the connection that rests.
    /// @return false when that is not open and silent.
    bool ReuseLocked() REQUIRES(lock_);
    /// @return false when the connection is broken.
    bool SendLocked() REQUIRES(lock_);

    IPullSink& sink_;
    CEventParse& parser_;
    mutable CMutex lock_;  // behind a device's lock, before those of the socket layer
    PullRequest request_ GUARDED_BY(lock_);
    int triesLeft_ GUARDED_BY(lock_) = 0;
    bool stands_ GUARDED_BY(lock_) = false;
    bool rests_ GUARDED_BY(lock_) = false;
    bool reuses_ GUARDED_BY(lock_) = false;
    std::size_t sent_ GUARDED_BY(lock_) = 0;
    CWirelinkHandle connection_ GUARDED_BY(lock_);
};

}  // namespace onvif_client

#endif
