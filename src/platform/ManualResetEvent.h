/// @file
/// An event that stays signalled until it is reset, after the manual-reset events of Windows.
#ifndef ONVIF_CLIENT_PLATFORM_MANUALRESETEVENT_H
#define ONVIF_CLIENT_PLATFORM_MANUALRESETEVENT_H

#include "platform/Mutex.h"

namespace onvif_client {

/// Created non-signalled. Any thread may call any operation.
class CManualResetEvent {
 public:
    /// Signals the event and releases every waiter. The event must outlive the call, whatever they
    /// do.
    void Set();
    void Reset();
    /// Returns when the event is signalled; the event stays so.
    void Wait();

 private:
    CMutex lock_;  // leaf
    CCondition changed_;
    bool signalled_ GUARDED_BY(lock_) = false;
};

}  // namespace onvif_client

#endif
