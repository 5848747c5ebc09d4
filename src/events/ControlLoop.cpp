#include "events/ControlLoop.h"

#include "platform/Clock.h"

namespace onvif_client {

void CControlLoop::Pass() {
    std::uint64_t next = 0;
    while (const CDeviceTable::Record record = devices_.From(next)) {
        next = std::uint64_t{record->LoginId()} + 1;
        Visit(record);
    }
}

void CControlLoop::Visit(const CDeviceTable::Record& record) {
    const std::lock_guard visit(record->VisitLock());
    if (record->Removed()) {
        return;
    }
    record->States().Report(record->TakeItems(), TickCount());
    if (!record->Removed()) {
        QueueDueTask(record);
    }
    record->States().CheckTimes(TickCount());
}

void CControlLoop::QueueDueTask(const CDeviceTable::Record& record) {
    if (!record->Claim()) {
        return;
    }
    const std::uint32_t now = TickCount();
    if (record->TakeRenewal(now)) {
        tasks_.QueueTask(record, DeviceTask::kRenew);
    } else if (record->ResubscriptionIsDue(CalendarSeconds()) &&
               tasks_.QueueTask(record, DeviceTask::kResubscribe)) {
        // Its pull is the next one.
    } else if (record->TakePull(now)) {
        tasks_.QueueTask(record, DeviceTask::kPull);
    } else {
        record->Unclaim();
    }
}

}  // namespace onvif_client
