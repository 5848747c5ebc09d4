#include "platform/SocketLayer.h"

#include <sys/eventfd.h>

#include "platform/Corekit.h"
#include "platform/Immortal.h"

namespace onvif_client {

namespace {

constexpr int kCleanUpThrewLine = 36;

thread_local int callbackDepth = 0;

}  // namespace

CSocketLayer& CSocketLayer::Instance() {
    static CSocketLayer& layer = MakeImmortal<CSocketLayer>();
    return layer;
}

CSocketLayer::CSocketLayer() : abortDescriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

bool CSocketLayer::Start() {
    std::unique_lock guard(lock_);
    // Whoever stops the layer waits for its callbacks, so these must not wait for the stop.
    changed_.wait(guard, [this] { return !stopping_ || callbackDepth > 0; });
    running_ = !stopping_ && abortDescriptor_ >= 0;
    return running_;
}

void CSocketLayer::Stop(const std::function<void()>& cleanUp) {
    std::unique_lock guard(lock_);
    if (!running_) {
        changed_.wait(guard, [this] { return !stopping_ || callbackDepth > 0; });
        WaitForCallbacks(guard);
        return;
    }
    running_ = false;
    stopping_ = true;
    eventfd_write(abortDescriptor_, 1);
    changed_.wait(guard, [this] { return inside_ == 0; });
    eventfd_t drained = 0;
    eventfd_read(abortDescriptor_, &drained);
    guard.unlock();
    try {
        cleanUp();
    } catch (...) {
        // Whoever waits for the end of the stop goes on all the same.
        COREKIT_AbnormalOutput("ASSERT", "Wirelink", kCleanUpThrewLine);
    }
    guard.lock();
    stopping_ = false;
    changed_.notify_all();
    WaitForCallbacks(guard);
}

void CSocketLayer::WaitForCallbacks(std::unique_lock<std::mutex>& guard) {
    changed_.wait(guard, [this] { return callbacks_ == 0 || callbackDepth > 0; });
}

CSocketLayer::CCallback::CCallback() {
    ++callbackDepth;
    CSocketLayer& layer = Instance();
    const std::lock_guard guard(layer.lock_);
    ++layer.callbacks_;
}

CSocketLayer::CCallback::~CCallback() {
    --callbackDepth;
    CSocketLayer& layer = Instance();
    const std::lock_guard guard(layer.lock_);
    if (--layer.callbacks_ == 0) {
        layer.changed_.notify_all();
    }
}

CSocketLayer::CVisit CSocketLayer::Enter() {
    const std::lock_guard guard(lock_);
    if (running_) {
        ++inside_;
    }
    return {*this, running_};
}

CSocketLayer::CVisit::~CVisit() {
    if (!inside_) {
        return;
    }
    const std::lock_guard guard(layer_.lock_);
    if (--layer_.inside_ == 0 && layer_.stopping_) {
        layer_.changed_.notify_all();
    }
}

}  // namespace onvif_client
