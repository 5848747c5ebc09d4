/// @file
/// The observers of sessions.
#ifndef ONVIF_CLIENT_BINDINGS_C_LISTENERS_H
#define ONVIF_CLIENT_BINDINGS_C_LISTENERS_H

#include <map>
#include <memory>
#include <mutex>

#include "onvif_client/OnvifClient.h"
#include "onvif_client/onvif_client_c.h"

namespace onvif_client_c {

/// Passes what the library tells on to a function. The library knows it by its address, so it lives
/// as long as it may be registered.
class CListener final : public CONVIFAlarmStateObserver,
                        public std::enable_shared_from_this<CListener> {
 public:
    void Aim(onvif_client_observer observer, void* context);
    void OnMotionAlarmState(unsigned int loginId, bool state) override;
    void OnAlarmInState(unsigned int loginId, unsigned int alarmIn, bool state) override;

 private:
    void Tell(unsigned int loginId, int alarm, unsigned int input, bool active);

    std::mutex lock_;  // guards the members below; leaf, not held during a callback
    onvif_client_observer observer_ = nullptr;
    void* context_ = nullptr;
};

/// The listeners of a process: one for every session that was observed, until its logout. Any
/// thread, and every callback.
class CListeners {
 public:
    /// Those of this process: a forked child begins without any. May throw.
    static CListeners& Instance();

    void Observe(onvif_client_id id, onvif_client_observer observer, void* context);
    void Forget(onvif_client_id id);
    /// Before the logout of a session, for good.
    void Close(onvif_client_id id);

 private:
    struct Entry {
        std::shared_ptr<CListener> listener = std::make_shared<CListener>();
        int adding = 0;       // calls that are about to register it
        bool closed = false;  // the last of these takes it out again
    };
    std::shared_ptr<CListener> BeginAdding(onvif_client_id id);
    void EndAdding(onvif_client_id id);

    std::mutex lock_;  // guards the member below; leaf, not held while the library is called
    std::map<onvif_client_id, Entry> entries_;
};

}  // namespace onvif_client_c

#endif
