#include "Listeners.h"

#include <atomic>

#include "Process.h"

namespace onvif_client_c {

void CListener::Aim(onvif_client_observer observer, void* context) {
    const std::lock_guard guard(lock_);
    observer_ = observer;
    context_ = context;
}

void CListener::OnMotionAlarmState(unsigned int loginId, bool state) {
    Tell(loginId, onvif_client_motion, 0, state);
}

void CListener::OnAlarmInState(unsigned int loginId, unsigned int alarmIn, bool state) {
    Tell(loginId, onvif_client_alarm_input, alarmIn, state);
}

void CListener::Tell(unsigned int loginId, int alarm, unsigned int input, bool active) {
    const auto self = shared_from_this();  // the callback may log out
    onvif_client_observer observer = nullptr;
    void* context = nullptr;
    {
        const std::lock_guard guard(lock_);
        observer = observer_;
        context = context_;
    }
    if (observer != nullptr) {
        observer(context, loginId, alarm, input, active ? 1 : 0);
    }
}

CListeners& CListeners::Instance() {
    struct Made {
        unsigned long process = ProcessId();
        Made* inherited = nullptr;  // kept, as whoever searches for leaks shall find it
        CListeners listeners;
    };
    // Without a lock, which a thread of the parent's could have held at the fork.
    static constinit std::atomic<Made*> made = nullptr;
    Made* found = made;
    if (found != nullptr && found->process == ProcessId()) {
        return found->listeners;
    }
    auto next = std::make_unique<Made>();
    next->inherited = found;
    if (made.compare_exchange_strong(found, next.get())) {
        return next.release()->listeners;
    }
    return found->listeners;
}

void CListeners::Observe(onvif_client_id id, onvif_client_observer observer, void* context) {
    const auto listener = BeginAdding(id);
    if (listener == nullptr) {
        return;
    }
    ONVIF_CLIENT_DelAlarmStateObserver(id);  // what is still to be told is the earlier one's
    listener->Aim(observer, context);
    ONVIF_CLIENT_AddAlarmStateObserver(id, listener.get());
    EndAdding(id);
}

void CListeners::Forget(onvif_client_id id) {
    {
        const std::lock_guard guard(lock_);
        const auto found = entries_.find(id);
        if (found != entries_.end()) {
            found->second.listener->Aim(nullptr, nullptr);
        }
    }
    ONVIF_CLIENT_DelAlarmStateObserver(id);
}

void CListeners::Close(onvif_client_id id) {
    {
        const std::lock_guard guard(lock_);
        const auto found = entries_.find(id);
        if (found == entries_.end()) {
            return;
        }
        found->second.closed = true;
        ++found->second.adding;
    }
    EndAdding(id);
}

std::shared_ptr<CListener> CListeners::BeginAdding(onvif_client_id id) {
    const std::lock_guard guard(lock_);
    Entry& entry = entries_[id];
    if (entry.closed) {
        return nullptr;
    }
    ++entry.adding;
    return entry.listener;
}

void CListeners::EndAdding(onvif_client_id id) {
    std::map<onvif_client_id, Entry>::node_type last;
    {
        const std::lock_guard guard(lock_);
        Entry& entry = entries_.at(id);
        if (--entry.adding > 0 || !entry.closed) {
            return;
        }
        entry.listener->Aim(nullptr, nullptr);
        last = entries_.extract(id);
    }
    ONVIF_CLIENT_DelAlarmStateObserver(id);
}

}  // namespace onvif_client_c
