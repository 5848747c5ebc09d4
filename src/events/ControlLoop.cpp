#include "events/ControlLoop.h"

#include <algorithm>
#include <exception>
#include <utility>
#include <vector>

#include "common/LogText.h"
#include "platform/Clock.h"

namespace onvif_client {

namespace {

/// For requests, the log and what the application has itself.
constexpr std::size_t kOtherDescriptors = 64;

}  // namespace

void CControlLoop::Pass() {
    interrupted_ = false;
    turns_ = std::exchange(nextTurns_, {kEverybodysTurn, kEverybodysTurn});
    for (auto record = devices_.VisitFrom(0); record != nullptr && !interrupted_;
         record = devices_.VisitFrom(std::uint64_t{record->LoginId()} + 1)) {
        try {
            Visit(record);
        } catch (const std::exception&) {
            // Out of memory: the other devices, and the next passes, may do better.
            LogAssert(loglabel::kOnvifEvent, "a visit threw", record->Name());
            record->Wake();
        }
    }
    if (interrupted_) {
        devices_.WakeEveryone();
    }
    devices_.EndVisits();
}

void CControlLoop::Visit(const CDeviceTable::Record& record) {
    const CLockGuard visit(record->VisitLock());
    record->BeginVisit();
    ++visits_;
    if (record->Removed()) {
        return;
    }
    const std::vector<AlarmItem> items = record->TakeItems();
    auto untold = items.begin();
    while (untold != items.end() && !interrupted_) {
        record->States().Report(*untold++, TickCount());
    }
    record->ReturnItems({untold, items.end()});
    if (record->TakeLackOfSockets()) {
        TellLackOfSockets();
    }
    if (!interrupted_ && !record->Removed()) {
        QueueDueTask(record);
    }
    record->States().CheckTimes(TickCount(), interrupted_);
    if (!record->Removed()) {
        devices_.VisitAgain(record->LoginId(), record->WhenToVisit(TickCount(), CalendarSeconds()));
    }
}

void CControlLoop::TellLackOfSockets() {
    if (std::exchange(toldLackOfSockets_, true)) {
        return;
    }
    const std::size_t observed = devices_.Count();
    LogNormal(loglabel::kOnvifEvent,
              "no sockets are left: %zu devices are observed, and each has one for its pull; the "
              "process needs at least %zu descriptors",
              observed, observed + kOtherDescriptors);
}

void CControlLoop::QueueDueTask(const CDeviceTable::Record& record) {
    if (!record->Claim()) {
        return;
    }
    CClaim claim(*record);
    const std::uint32_t now = TickCount();
    bool queued = false;
    if (record->TakeRenewal(now)) {
        queued = tasks_.QueueTask(record, DeviceTask::kRenew);
    } else if (const auto due = record->SubscriptionDue(CalendarSeconds())) {
        queued = QueueResubscription(record, *due);
    }
    if (!queued && record->TakePull(now)) {
        queued = tasks_.QueueTask(record, DeviceTask::kPull);
    }
    if (queued) {
        claim.PassOn();
    } else {
        claim.Drop();
    }
}

bool CControlLoop::QueueResubscription(const CDeviceTable::Record& record,
                                       const DueSubscription& due) {
    const std::size_t kind = due.answers ? 0 : 1;
    if (due.lastAttempt <= turns_[kind] && tasks_.QueueTask(record, DeviceTask::kResubscribe)) {
        return true;
    }
    nextTurns_[kind] = std::min(nextTurns_[kind], due.lastAttempt);
    return false;
}

}  // namespace onvif_client
