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
    bool queued = false;
    if (record->TakeRenewal(now)) {
        queued = tasks_.QueueTask(record, DeviceTask::kRenew);
    } else if (record->ResubscriptionIsDue(CalendarSeconds())) {
        queued = tasks_.QueueTask(record, DeviceTask::kResubscribe);
    }
    if (!queued && record->TakePull(now)) {
        queued = tasks_.QueueTask(record, DeviceTask::kPull);
    }
    if (!queued) {
        record->Unclaim();
    }
}

}  // namespace onvif_client
