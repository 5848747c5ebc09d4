#include "platform/ManualResetEvent.h"

namespace onvif_client {

void CManualResetEvent::Set() {
    {
        const CLockGuard guard(lock_);
        signalled_ = true;
    }
    changed_.NotifyAll();  // without the lock, which those who wake take at once
}

void CManualResetEvent::Reset() {
    const CLockGuard guard(lock_);
    signalled_ = false;
}

void CManualResetEvent::Wait() {
    const CLockGuard guard(lock_);
    while (!signalled_) {
        changed_.Wait(lock_);
    }
}

}  // namespace onvif_client
