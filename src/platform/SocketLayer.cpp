#include "platform/SocketLayer.h"

#include "platform/Corekit.h"
#include "platform/PerProcess.h"

namespace onvif_client {

namespace {

thread_local int callbackDepth = 0;

}  // namespace

CSocketLayer& CSocketLayer::Instance() {
    static constinit CPerProcess<CSocketLayer> layer;
    return layer.Get();
}

bool CSocketLayer::Start() {
    const CLockGuard guard(lock_);
    WaitForStopLocked();
    if (!running_ && !stopping_) {
        // Anew: the system may have had no descriptor left for the last one.
        sockets_.emplace();
        abort_.emplace();
        running_ = *sockets_ && *abort_;
    }
    return running_;
}

void CSocketLayer::Stop(const std::function<void()>& cleanUp) {
    CUniqueLock guard(lock_);
    if (!running_) {
        WaitForStopLocked();
        WaitForCallbacksLocked();
        return;
    }
    running_ = false;
    stopping_ = true;
    abort_->Set();
    while (inside_ > 0) {
        changed_.Wait(lock_);
    }
    abort_.reset();
    guard.Unlock();
    try {
        cleanUp();
    } catch (...) {
        // Whoever waits for the end of the stop goes on all the same.
        COREKIT_AbnormalOutput("ASSERT", "Wirelink", "what ends the layer threw");
    }
    guard.Lock();
    sockets_.reset();
    stopping_ = false;
    changed_.NotifyAll();
    WaitForCallbacksLocked();
}

void CSocketLayer::WaitForStopLocked() {
    // Whoever stops the layer waits for its callbacks, so these must not wait for the stop.
    while (stopping_ && callbackDepth == 0) {
        changed_.Wait(lock_);
    }
}

void CSocketLayer::WaitForCallbacksLocked() {
    while (callbacks_ > 0 && callbackDepth == 0) {
        changed_.Wait(lock_);
    }
}

CSocketLayer::CCallback::CCallback() {
    ++callbackDepth;
    CSocketLayer& layer = Instance();
    const CLockGuard guard(layer.lock_);
    ++layer.callbacks_;
}

CSocketLayer::CCallback::~CCallback() {
    --callbackDepth;
    CSocketLayer& layer = Instance();
    const CLockGuard guard(layer.lock_);
    if (--layer.callbacks_ == 0) {
        layer.changed_.NotifyAll();
    }
}

CSocketLayer::CVisit CSocketLayer::Enter() {
    const CLockGuard guard(lock_);
    if (running_) {
        ++inside_;
    }
    return {*this, running_};
}

CSocketLayer::CVisit::~CVisit() {
    if (!inside_) {
        return;
    }
    const CLockGuard guard(layer_.lock_);
    if (--layer_.inside_ == 0 && layer_.stopping_) {
        layer_.changed_.NotifyAll();
    }
}

}  // namespace onvif_client
