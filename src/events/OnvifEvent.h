/// @file
/// The alarm side: subscriptions at devices, and observers that hear of motion and alarm inputs.
///
/// Every device with an observer has a record (EventDeviceRecord) in a table. One event thread
/// passes every 10 ms over those that have something to do (VisitSchedule) and decides
/// (ControlLoop); it alone calls observers. Tasks on a thread pool talk to the devices
/// (DeviceTasks, DeviceExchanges). What devices answer comes on the socket layer's threads
/// (EventParse), and so do notifications that devices post (NotificationReceiver, NotifyDelivery).
#ifndef ONVIF_CLIENT_EVENTS_ONVIFEVENT_H
#define ONVIF_CLIENT_EVENTS_ONVIFEVENT_H

#include <atomic>
#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "events/ControlLoop.h"
#include "events/DeviceTable.h"
#include "events/NotificationReceiver.h"
#include "events/NotifyDelivery.h"
#include "platform/Corekit.h"
#include "platform/Mutex.h"

class CONVIFAlarmStateObserver;

namespace onvif_client {

class CDeviceTasks;

/// All operations may be called from any thread, and from inside the callbacks of observers.
class COnvifEventCtrol final : private ITaskQueue {
 public:
    static constexpr std::uint16_t kListenPort = 6699;

    /// @p sessions must outlive the controller.
    explicit COnvifEventCtrol(ISessionSource& sessions);
    /// Ends the socket layer first, so that nothing of it waits or calls any more, then as Stop.
    ~COnvifEventCtrol() override;
    COnvifEventCtrol(const COnvifEventCtrol&) = delete;
    COnvifEventCtrol& operator=(const COnvifEventCtrol&) = delete;

    /// Listens for notifications (a port that is taken is no error: nothing depends on it), starts
    /// the event thread, and goes on with the devices that are in the table. The socket layer runs.
    void Start();

    /// Ends the event thread and the tasks; devices stay in the table. No observer is called once
    /// it has returned; from inside a callback it returns at once, and that callback is the last.
    void Stop();

    /// Registers the observer of a device in the place of an earlier one, and subscribes at the
    /// device before it returns (8 s at most), or, with the extension for it, in the background. A
    /// device that does not answer is tried again later.
    /// @param observer       not owned; null: nobody is told.
    /// @param deviceAddress  dotted IPv4; empty when the login id is unknown.
    void AddDevice(std::uint32_t loginId, CONVIFAlarmStateObserver* observer,
                   const std::string& deviceAddress);

    /// Removes a device's observer. The observer is not called once it has returned; a callback
    /// that runs on the event thread is waited for, unless the caller is one.
    void DeleteDevice(std::uint32_t loginId);

 private:
    /// One run of the control loop, from a start to the next stop.
    struct EventThread {
        explicit EventThread(COnvifEventCtrol& owner) : controller(owner) {}

        COnvifEventCtrol& controller;
        CorekitThreadHandle handle = nullptr;
        std::atomic<bool> running = true;
    };
    using EventThreads = std::list<EventThread>;

    static void EventThreadMain(void* eventThread);
    void Run(const EventThread& own);
    /// The threads before @p own, which have left the loop; stopped from callbacks, so nobody could
    /// wait for them.
    EventThreads TakePredecessors(const EventThread& own);
    /// Waits for threads that may want the lock themselves.
    void Join(const EventThreads& threads) EXCLUDES(lifecycleLock_);
    /// From inside a callback: its thread holds the loop lock, which no analysis of this function
    /// can see.
    void InterruptPass() NO_THREAD_SAFETY_ANALYSIS { loop_.Interrupt(); }

    /// Ends the device's record; another one, or null, takes its place.
    void Replace(std::uint32_t loginId, const CDeviceTable::Record& record);
    std::string NextCallbackAddress(const std::string& deviceAddress);
    bool QueueTask(std::shared_ptr<EventDeviceRecord> record, DeviceTask task) override;

    ISessionSource& sessions_;
    CDeviceTable devices_;
    CMutex loopLock_;  // held by the event thread in charge; before every other lock
    CControlLoop loop_ GUARDED_BY(loopLock_);
    CNotifyDelivery delivery_;
    CNotificationReceiver receiver_;

    CMutex lifecycleLock_;  // behind a visit lock, before the tasks' and the table's
    std::unique_ptr<CDeviceTasks> tasks_ GUARDED_BY(lifecycleLock_);  // null while stopped
    // The last one is in charge unless stopped.
    EventThreads threads_ GUARDED_BY(lifecycleLock_);
    std::vector<std::string> localAddresses_ GUARDED_BY(lifecycleLock_);
    std::uint32_t nextSubscriptionNumber_ GUARDED_BY(lifecycleLock_) = 0;
};

}  // namespace onvif_client

#endif
