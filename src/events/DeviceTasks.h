/// @file
/// The tasks of the alarm side that take network traffic, on a thread pool.
#ifndef ONVIF_CLIENT_EVENTS_DEVICETASKS_H
#define ONVIF_CLIENT_EVENTS_DEVICETASKS_H

#include <list>
#include <memory>

#include "common/ThreadPool.h"
#include "events/ControlLoop.h"
#include "platform/Mutex.h"

namespace onvif_client {

/// Any thread. Its end waits for the tasks that run and drops the ones that wait; what they held is
/// released.
class CDeviceTasks final : public ITaskQueue {
 public:
    explicit CDeviceTasks(ISessionSource& sessions);
    ~CDeviceTasks() override;
    CDeviceTasks(const CDeviceTasks&) = delete;
    CDeviceTasks& operator=(const CDeviceTasks&) = delete;

    /// A new subscription is not taken while as many are being made as leaves workers for pulls, at
    /// a silent device also when one less is being made: a site full of silent devices does not
    /// hold up the others.
    bool QueueTask(std::shared_ptr<EventDeviceRecord> record, DeviceTask task) override;

 private:
    /// What a pool task works on; ends the record's claim with itself.
    class CTask;
    class CEnding;
    using Tasks = std::list<CTask>;

    static void Run(void* argument);
    void End(const CTask& task);

    ISessionSource& sessions_;
    CMutex lock_;                    // behind the lifecycle lock, before a record's and the pool's
    Tasks tasks_ GUARDED_BY(lock_);  // queued or running
    int resubscriptions_ GUARDED_BY(lock_) = 0;
    CThreadPool pool_;  // ends first: its tasks use the members above
};

}  // namespace onvif_client

#endif
