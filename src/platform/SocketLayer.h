/// @file
/// The state of the socket layer: whether it runs, and who is inside. Internal to this folder.
#ifndef ONVIF_CLIENT_PLATFORM_SOCKETLAYER_H
#define ONVIF_CLIENT_PLATFORM_SOCKETLAYER_H

#include <functional>
#include <optional>

#include "platform/Mutex.h"
#include "platform/Sockets.h"

namespace onvif_client {

/// Counts the exchanges that run, and breaks them off when the layer stops. Any thread.
class CSocketLayer {
 public:
    /// The one of this process.
    static CSocketLayer& Instance();

    CSocketLayer() = default;
    ~CSocketLayer() = default;
    CSocketLayer(const CSocketLayer&) = delete;
    CSocketLayer& operator=(const CSocketLayer&) = delete;

    /// @return true when the layer runs afterwards.
    bool Start();
    /// Sets Abort, waits until nobody is inside, runs @p cleanUp, and leaves
    /// the layer stopped. A layer that is being stopped already is waited for, and so is every
    /// callback of the layer, unless the caller is one: whoever stops it waits for that one.
    void Stop(const std::function<void()>& cleanUp);

    /// Somebody inside; made by Enter.
    class CVisit {
     public:
        CVisit(CSocketLayer& layer, bool inside) : layer_(layer), inside_(inside) {}
        ~CVisit();
        CVisit(const CVisit&) = delete;
        CVisit& operator=(const CVisit&) = delete;
        /// False: the layer does not run.
        explicit operator bool() const { return inside_; }

     private:
        CSocketLayer& layer_;
        bool inside_;
    };
    CVisit Enter();

    /// A callback of the layer, while it runs.
    class CCallback {
     public:
        CCallback();
        ~CCallback();
        CCallback(const CCallback&) = delete;
        CCallback& operator=(const CCallback&) = delete;
    };

    /// Set from the moment that everybody inside has to leave.
    /// Only for whoever is inside: it lasts as long.
    const CWakeUp& Abort() const { return *abort_; }

 private:
    void WaitForStopLocked() REQUIRES(lock_);
    void WaitForCallbacksLocked() REQUIRES(lock_);

    std::optional<CSystemSockets> sockets_;  // as long as the layer runs
    std::optional<CWakeUp> abort_;           // changes while nobody is inside
    CMutex lock_;                            // leaf
    CCondition changed_;
    bool running_ GUARDED_BY(lock_) = false;
    bool stopping_ GUARDED_BY(lock_) = false;
    unsigned int inside_ GUARDED_BY(lock_) = 0;
    unsigned int callbacks_ GUARDED_BY(lock_) = 0;
};

}  // namespace onvif_client

#endif
