/// @file
/// The rules of the alarm side: what is done with each device, and when.
#ifndef ONVIF_CLIENT_EVENTS_CONTROLLOOP_H
#define ONVIF_CLIENT_EVENTS_CONTROLLOOP_H

#include <array>
#include <cstdint>
#include <limits>
#include <memory>

#include "events/DeviceTable.h"

namespace onvif_client {

/// What a device can need that takes network traffic.
enum class DeviceTask {
    kPull,
    kResubscribe,
    kRenew,
};

/// Has tasks run in the background. Any thread.
class ITaskQueue {
 public:
    virtual ~ITaskQueue() = default;
    /// Takes a record that the caller has claimed; the claim then ends with the task.
    /// @return false when the task is not taken: it may be tried again later.
    virtual bool QueueTask(std::shared_ptr<EventDeviceRecord> record, DeviceTask task) = 0;
};

/// Looks after every device in passes: tells the observer what came, has the subscription renewed
/// every 100 s and the next pull sent when a reply is complete or none came for 60 s, and clears
/// alarms that the device stopped to report. Only devices that have something to do are visited
/// (VisitSchedule); a visit more would change nothing. Nothing here waits for a device, so that one
/// that does not answer delays no other; an observer that does not return delays all.
class CControlLoop {
 public:
    CControlLoop(CDeviceTable& devices, ITaskQueue& tasks) : devices_(devices), tasks_(tasks) {}

    /// One pass over these devices in ascending login id order. One thread at a time.
    void Pass();

    /// How many there were, of all devices. On the thread of the passes.
    std::uint64_t Visits() const { return visits_; }

    /// From inside a callback: makes that the last one of the pass. What is left to tell stays for
    /// a later pass.
    void Interrupt() { interrupted_ = true; }

 private:
    static constexpr std::int64_t kEverybodysTurn = std::numeric_limits<std::int64_t>::max();

    void Visit(const CDeviceTable::Record& record);
    /// Once: whoever reads it changes a limit and starts the process again.
    void TellLackOfSockets();
    /// Has the task run that is due, if one is and none runs yet.
    void QueueDueTask(const CDeviceTable::Record& record);
    /// Not every subscription that is due can be made at once: the longest due go first, among the
    /// devices that answer and among the others.
    bool QueueResubscription(const CDeviceTable::Record& record, const DueSubscription& due);

    CDeviceTable& devices_;
    ITaskQueue& tasks_;
    // Of the pass that runs, and used by its thread only:
    bool interrupted_ = false;
    std::uint64_t visits_ = 0;
    bool toldLackOfSockets_ = false;
    // Subscriptions made later than this wait: those of devices that answer, and of the others.
    std::array<std::int64_t, 2> turns_ = {};
    std::array<std::int64_t, 2> nextTurns_ = {kEverybodysTurn, kEverybodysTurn};
};

}  // namespace onvif_client

#endif
