/// @file
/// One device with an observer: how its messages come, and what is known of them.
///
/// A record is shared by the device table, the control loop while it visits the device, and the
/// tasks that are queued for it; whoever lets go of it last closes its connection. Three kinds of
/// threads meet here: the control loop decides, one task at a time (Claim) talks to the device, and
/// the socket layer's threads hand over what it answered.
#ifndef ONVIF_CLIENT_EVENTS_EVENTDEVICERECORD_H
#define ONVIF_CLIENT_EVENTS_EVENTDEVICERECORD_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "events/AlarmStates.h"
#include "events/EventDocuments.h"
#include "events/SessionSource.h"

namespace onvif_client {

class CEventParse;

class EventDeviceRecord {
 public:
    EventDeviceRecord(ISessionSource& sessions, std::uint32_t loginId,
                      CONVIFAlarmStateObserver* observer, std::string callbackAddress);
    /// Closes the connection; returns when no data callback of it runs.
    ~EventDeviceRecord();
    EventDeviceRecord(const EventDeviceRecord&) = delete;
    EventDeviceRecord& operator=(const EventDeviceRecord&) = delete;

    std::uint32_t LoginId() const { return loginId_; }
    /// Where the device would post its messages.
    const std::string& CallbackAddress() const { return callbackAddress_; }

    /// Held by the control loop while it visits the device, callbacks of the observer included, and
    /// by whoever removes the record. Recursive: an observer may remove itself.
    std::recursive_mutex& VisitLock() { return visitLock_; }
    // With the visit lock:
    CAlarmStates& States() { return states_; }
    bool Removed() const { return removed_; }
    void Remove();

    /// Reserves the record for a task that talks to the device.
    /// @return false while another one has it.
    bool Claim() { return !claimed_.exchange(true); }
    void Unclaim() { claimed_ = false; }
    bool Claimed() const { return claimed_; }

    // Any thread. The first source that delivers items settles how they come: by pulls or by posts.
    void AddPulledItems(std::span<const AlarmItem> items);
    /// Items of a post; ignored while the device is pulled from.
    void AddNotifiedItems(std::span<const AlarmItem> items);
    std::vector<AlarmItem> TakeItems();
    /// Puts items back that nobody was told of.
    void ReturnItems(std::span<const AlarmItem> items);
    /// Lets the device post its messages, to a subscription that is renewed at @p renewAddress. No
    /// device is asked to do so today.
    void UseNotifications(const std::string& renewAddress);
    bool MayPost() const;
    bool Pulls() const;
    /// The address of a subscription whose messages are posted.
    std::string RenewAddress() const;

    // What is due, for the control loop. A true answer counts as done from @p now on.
    bool TakeRenewal(std::uint32_t now);
    bool TakePull(std::uint32_t now);
    bool ResubscriptionIsDue(std::int64_t calendarNow) const;
    /// When the last attempt to subscribe ended, in seconds of the calendar.
    std::int64_t SubscribedAt() const;

    // For the task that has the record, and the parser.
    PullPoint Pull() const;
    void BeginSubscribing();
    /// @param answer  nothing: the device did not subscribe.
    void EndSubscribing(const std::optional<SubscriptionAnswer>& answer);
    /// A pull found no way to the device.
    void MarkSilent();
    /// Whether the device answered what it was asked last.
    bool Answers() const;
    /// What the device allows at most; empty and 0: it does not say.
    void LimitPulls(const std::string& timeout, std::uint16_t messageLimit);
    void CompleteReply();
    /// Has the next visit pull, whatever became of the last pull.
    void PullAtOnce();
    /// The socket layer was started. What its last end broke off is due at once: a pull whose
    /// connection is gone, and a subscription that could not be made.
    void Resume();

    // For the task that has the record.
    CEventParse& Parser() { return *parser_; }
    void SetConnection(std::uint32_t handle);
    /// A pull is being sent.
    void MarkPulled();
    /// Ends the pull in progress, if any, and makes the parser ready for the next reply.
    void CloseConnection();

 private:
    const std::uint32_t loginId_;
    const std::string callbackAddress_;

    std::recursive_mutex visitLock_;  // guards the next two; before every other lock of this floor
    CAlarmStates states_;
    bool removed_ = false;

    std::atomic<bool> claimed_ = false;

    mutable std::mutex lock_;  // guards the members up to the parser; leaf
    bool notifyMode_ = false;
    bool subscribed_ = true;
    bool sourceFixed_ = false;
    bool replyComplete_ = false;
    bool subscriptionStands_ = false;
    bool answers_ = true;
    bool resumed_ = false;  // since an attempt to subscribe began
    std::uint32_t lastPullTicks_;
    std::int64_t subscribeLocalTime_ = 0;  // seconds, of the last attempt; 0: one is due
    std::string renewAddress_;
    PullPoint pull_;
    std::vector<AlarmItem> pendingItems_;
    std::uint32_t connection_ = 0;

    const std::unique_ptr<CEventParse> parser_;
};

}  // namespace onvif_client

#endif
