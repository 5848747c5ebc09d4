#include "platform/ManualResetEvent.h"

namespace onvif_client {

void CManualResetEvent::Set() {
    const std::lock_guard guard(lock_);
    signalled_ = true;
    changed_.notify_all();
}

void CManualResetEvent::Reset() {
    const std::lock_guard guard(lock_);
    signalled_ = false;
}

void CManualResetEvent::Wait() {
    std::unique_lock guard(lock_);
    changed_.wait(guard, [this] { return signalled_; });
}

}  // namespace onvif_client
