/// @file
/// One device with an observer.
///
/// A record is shared by the device table, the control loop while it visits the device, and the
/// tasks that are queued for it; whoever lets go of it last closes its connection. Three kinds of
/// threads meet here: the control loop decides, one task at a time (Claim) talks to the device, and
/// the socket layer's threads hand over what it answered. The rules that they follow are in
/// Subscription, MessageFlow, and AlarmStates or SourceStates.
#ifndef ONVIF_CLIENT_EVENTS_EVENTDEVICERECORD_H
#define ONVIF_CLIENT_EVENTS_EVENTDEVICERECORD_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "client/PreparedRequest.h"
#include "common/Extensions.h"
#include "common/LogPoints.h"
#include "events/AlarmStates.h"
#include "events/EventParse.h"
#include "events/MessageFlow.h"
#include "events/PullConnection.h"
#include "events/SessionSource.h"
#include "events/Subscription.h"
#include "events/VisitSchedule.h"
#include "events/WakeList.h"
#include "platform/Mutex.h"

namespace onvif_client {

class EventDeviceRecord final : public IPullSink {
 public:
    /// @param name        of the device in log lines.
    /// @param extensions  of the device's session; asked here how alarms are told and who makes the
    ///                    first subscription.
    EventDeviceRecord(ISessionSource& sessions, std::uint32_t loginId,
                      CONVIFAlarmStateObserver* observer, std::string callbackAddress,
                      std::string name = {}, CExtensions extensions = {});
    ~EventDeviceRecord() override;
    EventDeviceRecord(const EventDeviceRecord&) = delete;
    EventDeviceRecord& operator=(const EventDeviceRecord&) = delete;

    std::uint32_t LoginId() const { return loginId_; }
    /// Of the device, in log lines.
    const std::string& Name() const { return name_; }
    /// Where the device would post its messages.
    const std::string& CallbackAddress() const { return callbackAddress_; }

    /// Held by the control loop while it visits the device, callbacks of the observer included, and
    /// by whoever removes the record. Recursive: an observer may remove itself.
    CRecursiveMutex& VisitLock() RETURN_CAPABILITY(visitLock_) { return visitLock_; }
    IAlarmStates& States() REQUIRES(visitLock_) { return *states_; }
    bool Removed() const REQUIRES(visitLock_) { return removed_; }
    void Remove() REQUIRES(visitLock_);

    /// Reserves the record for a task that talks to the device.
    /// @return false while another one has it.
    bool Claim() { return !claimed_.exchange(true); }
    /// At the end of a task.
    void Unclaim() noexcept {
        DropClaim();
        Wake();
    }
    /// When no task came of it.
    void DropClaim() noexcept { claimed_ = false; }

    // When the control loop visits the device: whatever changes the record from outside a visit
    // wakes it, the end of a task too.
    /// Before anything is to be told. The list must outlive the record's use.
    void WakeBy(CWakeList& wakes) noexcept;
    void Wake() const noexcept;
    /// What wakes it from now on leads to another visit.
    void BeginVisit() noexcept { awake_.exchange(false); }
    NextVisit WhenToVisit(std::uint32_t now, std::int64_t calendarNow) const REQUIRES(visitLock_);

    // Messages; any thread.
    bool Pulls() const override;
    void OnPullReply(ExchangeEnd end, std::string_view reply) override;
    void OnPullAnswer(const PullAnswer& answer) override;
    void OnNoReply() override;
    void OnNoConnection() override;
    void OnNoSocket() override;
    /// Items of a post; ignored while the device is pulled from.
    void AddNotifiedItems(std::span<const AlarmItem> items);
    std::vector<AlarmItem> TakeItems();
    /// Puts items back that nobody was told of.
    void ReturnItems(std::span<const AlarmItem> items);
    /// Lets the device post its messages, to a subscription that is renewed at @p renewAddress. No
    /// device is asked to do so today.
    void UseNotifications(const std::string& renewAddress);
    /// The address of a subscription whose messages are posted; empty: the device does not post.
    std::string RenewAddress() const;

    // What is due, for the control loop. A task that was taken counts as done from @p now on.
    bool TakeRenewal(std::uint32_t now);
    bool TakePull(std::uint32_t now);
    std::optional<DueSubscription> SubscriptionDue(std::int64_t calendarNow) const;
    /// Whether the device answered what it was asked last.
    bool Answers() const;
    /// Whether there was no socket for a pull since this was asked last.
    bool TakeLackOfSockets();
    /// The socket layer was started. What its last end broke off is due at once: a pull whose
    /// connection is gone, and a subscription that could not be made.
    void Resume() EXCLUDES(lock_);

    /// True until the first subscription is tried, where that is left to a task. Until then there
    /// is nothing to pull from.
    bool AwaitsFirstSubscription() const;

    // For the task that has the record.
    void BeginSubscribing();
    /// @param answer  nothing: the device did not subscribe.
    void EndSubscribing(const std::optional<SubscriptionAnswer>& answer);
    /// Whether the device is to be asked for its inputs: once, and only where they are told apart.
    bool AsksForInputs() const;
    /// @param tokens  in the device's order.
    void SetInputs(std::vector<std::string> tokens);
    PullPoint Pull() const;
    /// What all pulls from a pull point have in common; null when there is nothing to ask for.
    /// @param prepare  called for a pull point that is new.
    const PreparedRequest* PreparedPull(
        const std::function<std::optional<PreparedRequest>(const PullPoint&)>& prepare);
    /// Forgets that of a device whose last two pulls did not both bring messages: most devices say
    /// nothing for hours, but for their states when they are subscribed to.
    void ForgetIdlePull();
    /// Ends the pull in progress, if any.
    void EndPull() EXCLUDES(lock_);
    /// Begins a pull, unless there is nothing to send; none may be in progress.
    void BeginPull(PullRequest request) EXCLUDES(lock_);

 private:
    void Log(const DeviceNews& news) const EXCLUDES(lock_);
    /// What states by source have to know beside messages; others are told nothing of it.
    void AddNewsLocked(AlarmNews news, std::string source = {}) REQUIRES(lock_);

    const std::uint32_t loginId_;
    const std::string callbackAddress_;
    const std::string name_;
    const bool perSource_;
    const bool keepsAlive_;
    std::atomic<bool> reuseFailed_ = false;  // the device closed where it had said it would not

    // Behind the loop lock, before every other lock: an observer may call any export.
    CRecursiveMutex visitLock_;
    const std::unique_ptr<IAlarmStates> states_ GUARDED_BY(visitLock_);
    bool removed_ GUARDED_BY(visitLock_) = false;

    std::atomic<bool> claimed_ = false;
    std::atomic<CWakeList*> wakes_ = nullptr;
    mutable std::atomic<bool> awake_ = false;  // it is in the list, unless a visit has begun

    mutable CMutex lock_;  // leaf
    CSubscription subscription_ GUARDED_BY(lock_);
    CMessageFlow flow_ GUARDED_BY(lock_);
    std::vector<AlarmItem> pendingItems_ GUARDED_BY(lock_);
    bool inputsAsked_ GUARDED_BY(lock_) = false;
    bool lacksSocket_ GUARDED_BY(lock_) = false;
    unsigned int toldInARow_ GUARDED_BY(lock_) = 0;   // answers with messages, until one without
    bool newSubscription_ GUARDED_BY(lock_) = false;  // nothing has been pulled from it yet
    std::shared_ptr<CExchangeTrace> trace_ GUARDED_BY(lock_);  // of the pull in progress

    // Only the task that has the record uses them.
    std::optional<PreparedRequest> preparedPull_;
    unsigned int preparedFor_ = 0;

    CEventParse parser_;
    CPullConnection connection_;  // ends first: it calls the others
};

/// Ends a record's claim, unless that has been passed on or dropped.
class CClaim {
 public:
    /// Takes a claim over.
    explicit CClaim(EventDeviceRecord& record) : record_(&record) {}
    ~CClaim() {
        if (record_ != nullptr) {
            record_->Unclaim();
        }
    }
    CClaim(const CClaim&) = delete;
    CClaim& operator=(const CClaim&) = delete;

    void PassOn() { record_ = nullptr; }
    void Drop() {
        record_->DropClaim();
        record_ = nullptr;
    }

 private:
    EventDeviceRecord* record_;
};

}  // namespace onvif_client

#endif
