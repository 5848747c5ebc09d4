#include "events/EventDeviceRecord.h"

#include <utility>

#include "events/EventParse.h"
#include "events/Ticks.h"
#include "platform/Clock.h"
#include "platform/Wirelink.h"

namespace onvif_client {

namespace {

constexpr std::int32_t kPullTimeoutMs = 60000;
constexpr std::int32_t kRenewalMs = (static_cast<std::int32_t>(kSubscriptionSeconds) - 8) * 1000;
/// Far less than the time that is asked for: a device that forgot its subscriptions is back soon.
constexpr std::int64_t kResubscriptionSeconds = 100;

}  // namespace

EventDeviceRecord::EventDeviceRecord(ISessionSource& sessions, std::uint32_t loginId,
                                     CONVIFAlarmStateObserver* observer,
                                     std::string callbackAddress)
    : loginId_(loginId),
      callbackAddress_(std::move(callbackAddress)),
      states_(loginId, observer),
      lastPullTicks_(TickCount()),
      parser_(std::make_unique<CEventParse>(*this, sessions)) {}

EventDeviceRecord::~EventDeviceRecord() {
    CloseConnection();
}

void EventDeviceRecord::Remove() {
    removed_ = true;
    states_.Silence();
}

void EventDeviceRecord::AddPulledItems(std::span<const AlarmItem> items) {
    const std::uint32_t now = TickCount();
    const std::lock_guard guard(lock_);
    if (!items.empty() && !sourceFixed_) {
        sourceFixed_ = true;
        lastPullTicks_ = now;
        notifyMode_ = false;
    }
    pendingItems_.insert(pendingItems_.end(), items.begin(), items.end());
}

void EventDeviceRecord::AddNotifiedItems(std::span<const AlarmItem> items) {
    const std::lock_guard guard(lock_);
    if (!notifyMode_ || items.empty()) {
        return;
    }
    if (!sourceFixed_) {
        sourceFixed_ = true;
        subscribed_ = false;
    }
    pendingItems_.insert(pendingItems_.end(), items.begin(), items.end());
}

std::vector<AlarmItem> EventDeviceRecord::TakeItems() {
    const std::lock_guard guard(lock_);
    return std::exchange(pendingItems_, {});
}

void EventDeviceRecord::ReturnItems(std::span<const AlarmItem> items) {
    const std::lock_guard guard(lock_);
    pendingItems_.insert(pendingItems_.begin(), items.begin(), items.end());
}

void EventDeviceRecord::UseNotifications(const std::string& renewAddress) {
    const std::lock_guard guard(lock_);
    notifyMode_ = true;
    renewAddress_ = renewAddress;
}

bool EventDeviceRecord::MayPost() const {
    const std::lock_guard guard(lock_);
    return !renewAddress_.empty();
}

bool EventDeviceRecord::Pulls() const {
    const std::lock_guard guard(lock_);
    return subscribed_;
}

std::string EventDeviceRecord::RenewAddress() const {
    const std::lock_guard guard(lock_);
    return renewAddress_;
}

bool EventDeviceRecord::TakeRenewal(std::uint32_t now) {
    const std::lock_guard guard(lock_);
    if (!notifyMode_ || !HavePassed(now, lastPullTicks_, kRenewalMs)) {
        return false;
    }
    lastPullTicks_ = now;
    return true;
}

bool EventDeviceRecord::TakePull(std::uint32_t now) {
    const std::lock_guard guard(lock_);
    if (!subscribed_ || (!replyComplete_ && !HavePassed(now, lastPullTicks_, kPullTimeoutMs))) {
        return false;
    }
    replyComplete_ = false;
    lastPullTicks_ = now;
    return true;
}

bool EventDeviceRecord::ResubscriptionIsDue(std::int64_t calendarNow) const {
    const std::lock_guard guard(lock_);
    const std::int64_t passed = calendarNow - subscribeLocalTime_;
    // Negative: the machine's clock was set back.
    return subscribed_ && (passed >= kResubscriptionSeconds || passed < 0);
}

std::int64_t EventDeviceRecord::SubscribedAt() const {
    const std::lock_guard guard(lock_);
    return subscribeLocalTime_;
}

PullPoint EventDeviceRecord::Pull() const {
    const std::lock_guard guard(lock_);
    return pull_;
}

void EventDeviceRecord::BeginSubscribing() {
    const std::lock_guard guard(lock_);
    subscriptionStands_ = false;
    resumed_ = false;
}

void EventDeviceRecord::EndSubscribing(const std::optional<SubscriptionAnswer>& answer) {
    const std::int64_t now = CalendarSeconds();
    const std::lock_guard guard(lock_);
    subscriptionStands_ = answers_ = answer.has_value();
    if (answer) {
        pull_.address = answer->address;
        pull_.id = answer->id;
        pull_.idAttribute = answer->idAttribute;
    }
    // What a stop of the socket layer broke off is due again since the start after it.
    subscribeLocalTime_ = !answer && resumed_ ? 0 : now;
}

void EventDeviceRecord::MarkSilent() {
    const std::lock_guard guard(lock_);
    answers_ = false;
}

bool EventDeviceRecord::Answers() const {
    const std::lock_guard guard(lock_);
    return answers_;
}

void EventDeviceRecord::LimitPulls(const std::string& timeout, std::uint16_t messageLimit) {
    const std::lock_guard guard(lock_);
    if (!timeout.empty()) {
        pull_.timeout = timeout;
    }
    if (messageLimit != 0) {
        pull_.messageLimit = messageLimit;
    }
}

void EventDeviceRecord::CompleteReply() {
    const std::lock_guard guard(lock_);
    replyComplete_ = true;
    answers_ = true;
}

void EventDeviceRecord::PullAtOnce() {
    const std::lock_guard guard(lock_);
    replyComplete_ = true;
}

void EventDeviceRecord::Resume() {
    std::uint32_t handle = 0;
    {
        const std::lock_guard guard(lock_);
        handle = connection_;
    }
    int ignored = 0;
    if (handle == 0 || !WIRELINK_PopConnectResult(handle, ignored, 0)) {
        PullAtOnce();
    }
    const std::lock_guard guard(lock_);
    resumed_ = true;
    if (!subscriptionStands_) {
        subscribeLocalTime_ = 0;
    }
}

void EventDeviceRecord::MarkPulled() {
    const std::uint32_t now = TickCount();
    const std::lock_guard guard(lock_);
    lastPullTicks_ = now;
}

void EventDeviceRecord::SetConnection(std::uint32_t handle) {
    const std::lock_guard guard(lock_);
    connection_ = handle;
}

void EventDeviceRecord::CloseConnection() {
    std::uint32_t handle = 0;
    {
        const std::lock_guard guard(lock_);
        handle = std::exchange(connection_, 0);
    }
    if (handle != 0) {
        // Waits for a data callback, which takes the lock.
        WIRELINK_Stop(handle);
        WIRELINK_UnRegisterNode(handle);
        WIRELINK_DestroyHNetCommunication(handle);
    }
    parser_->Reset();
    const std::lock_guard guard(lock_);
    replyComplete_ = false;
}

}  // namespace onvif_client
