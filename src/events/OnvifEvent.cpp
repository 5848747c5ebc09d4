#include "events/OnvifEvent.h"

#include <algorithm>
#include <utility>

#include "common/GbkTexts.h"
#include "common/LogText.h"
#include "common/TraceText.h"
#include "events/CallbackAddress.h"
#include "events/DeviceExchanges.h"
#include "events/DeviceTasks.h"
#include "platform/Clock.h"
#include "platform/LocalAddresses.h"
#include "platform/OrNothing.h"
#include "platform/Wirelink.h"

namespace onvif_client {

namespace {

constexpr std::uint32_t kPassPauseMs = 10;

/// The controller whose event thread this is.
thread_local const COnvifEventCtrol* callingObserversOf = nullptr;

void Remove(const CDeviceTable::Record& record) {
    if (record != nullptr) {
        // Waits for a visit, so that no callback runs afterwards.
        const CLockGuard visit(record->VisitLock());
        record->Remove();
    }
}

/// As log lines name the device. Empty without memory: an observer matters more than its name.
std::string NameOf(std::uint32_t loginId, ISessionSource& sessions) {
    return OrNothing([&] {
        const CSessionReference reference(sessions, loginId);
        const CHttpClient* session = reference.Session();
        return session == nullptr ? "login id " + std::to_string(loginId)
                                  : DeviceName(session->DeviceAddress(), session->Port());
    });
}

}  // namespace

COnvifEventCtrol::COnvifEventCtrol(ISessionSource& sessions)
    : sessions_(sessions), loop_(devices_, *this), delivery_(devices_), receiver_(delivery_) {}

COnvifEventCtrol::~COnvifEventCtrol() {
    WIRELINK_Quit();
    Stop();
}

void COnvifEventCtrol::Start() {
    WIRELINK_StartListen(kListenPort, &receiver_, 0, true);
    const CLockGuard guard(lifecycleLock_);
    localAddresses_ = ReachableAddresses();
    // Also under an event thread that runs: the socket layer can have been stopped alone.
    for (auto record = devices_.From(0); record != nullptr;
         record = devices_.From(std::uint64_t{record->LoginId()} + 1)) {
        record->Resume();
    }
    if (!threads_.empty() && threads_.back().running) {
        return;
    }
    tasks_ = std::make_unique<CDeviceTasks>(sessions_);
    EventThread& thread = threads_.emplace_back(*this);
    thread.handle = COREKIT_CreateRunOneThread(&COnvifEventCtrol::EventThreadMain, &thread, false,
                                               logpoint::kEventThreadMade.label,
                                               logpoint::kEventThreadMade.line, kEventThreadName);
    if (thread.handle == nullptr) {
        threads_.pop_back();
    }
}

void COnvifEventCtrol::Stop() {
    std::unique_ptr<CDeviceTasks> tasks;
    EventThreads ended;
    {
        const CLockGuard guard(lifecycleLock_);
        for (EventThread& each : threads_) {
            each.running = false;
        }
        tasks = std::move(tasks_);
        if (callingObserversOf != this) {
            ended = std::move(threads_);
        }
    }
    if (callingObserversOf == this) {
        InterruptPass();
    }
    tasks.reset();
    Join(ended);
    WIRELINK_StopListen(kListenPort);
}

void COnvifEventCtrol::EventThreadMain(void* eventThread) {
    const auto* own = static_cast<const EventThread*>(eventThread);
    own->controller.Run(*own);
}

void COnvifEventCtrol::Run(const EventThread& own) {
    callingObserversOf = this;
    Join(TakePredecessors(own));
    const CLockGuard inCharge(loopLock_);
    while (own.running) {
        loop_.Pass();
        SleepMilliseconds(kPassPauseMs);
    }
}

COnvifEventCtrol::EventThreads COnvifEventCtrol::TakePredecessors(const EventThread& own) {
    const CLockGuard guard(lifecycleLock_);
    const auto place = std::find_if(threads_.begin(), threads_.end(),
                                    [&own](const EventThread& each) { return &each == &own; });
    EventThreads before;
    if (place != threads_.end()) {  // a stop may have taken it, with all others
        before.splice(before.end(), threads_, threads_.begin(), place);
    }
    return before;
}

void COnvifEventCtrol::Join(const EventThreads& threads) {
    for (const EventThread& each : threads) {
        COREKIT_DestroyThread(each.handle, logpoint::kEventThreadEnded.label,
                              logpoint::kEventThreadEnded.line);
    }
}

void COnvifEventCtrol::AddDevice(std::uint32_t loginId, CONVIFAlarmStateObserver* observer,
                                 const std::string& deviceAddress) {
    const auto record = std::make_shared<EventDeviceRecord>(
        sessions_, loginId, observer, NextCallbackAddress(deviceAddress),
        NameOf(loginId, sessions_), sessions_.ExtensionsOf(loginId));
    if (record->AwaitsFirstSubscription()) {
        Replace(loginId, record);  // the control loop does the rest
        return;
    }
    record->Claim();
    const CClaim claim(*record);
    // In the table before anything can fail: what does is then due there.
    Replace(loginId, record);
    Subscribe(*record, sessions_);
    SendPull(*record, sessions_);
}

void COnvifEventCtrol::DeleteDevice(std::uint32_t loginId) {
    Replace(loginId, nullptr);
}

void COnvifEventCtrol::Replace(std::uint32_t loginId, const CDeviceTable::Record& record) {
    const std::uint32_t started = TickCount();
    Remove(record == nullptr ? devices_.Take(loginId) : devices_.Put(record));
    // In the middle of a visit somebody else can have taken it out, its own observer for one.
    if (const auto visited = devices_.Visited(loginId); visited != record) {
        Remove(visited);
    }
    Trace("#####################delete ipc  %u \r\n", TickCount() - started);
}

std::string COnvifEventCtrol::NextCallbackAddress(const std::string& deviceAddress) {
    const CLockGuard guard(lifecycleLock_);
    return CallbackAddress(ClosestAddress(localAddresses_, deviceAddress), kListenPort,
                           nextSubscriptionNumber_++);
}

bool COnvifEventCtrol::QueueTask(std::shared_ptr<EventDeviceRecord> record, DeviceTask task) {
    const CLockGuard guard(lifecycleLock_);
    return tasks_ != nullptr && tasks_->QueueTask(std::move(record), task);
}

}  // namespace onvif_client
