#include "events/EventDeviceRecord.h"

#include <utility>

#include "platform/Clock.h"
#include "platform/Wirelink.h"

namespace onvif_client {

EventDeviceRecord::EventDeviceRecord(ISessionSource& sessions, std::uint32_t loginId,
                                     CONVIFAlarmStateObserver* observer,
                                     std::string callbackAddress)
    : loginId_(loginId),
      callbackAddress_(std::move(callbackAddress)),
      states_(loginId, observer),
      flow_(TickCount()),
      parser_(*this, sessions, loginId) {}

EventDeviceRecord::~EventDeviceRecord() {
    CloseConnection();
}

void EventDeviceRecord::Remove() {
    removed_ = true;
    states_.Silence();
}

bool EventDeviceRecord::Pulls() const {
    const CLockGuard guard(lock_);
    return flow_.Pulls();
}

void EventDeviceRecord::OnPullAnswer(const PullAnswer& answer) {
    const CLockGuard guard(lock_);
    subscription_.Limit(answer);
    pendingItems_.insert(pendingItems_.end(), answer.items.begin(), answer.items.end());
    flow_.EndPull(!answer.items.empty());
    subscription_.SetAnswers(true);
}

void EventDeviceRecord::AddNotifiedItems(std::span<const AlarmItem> items) {
    const CLockGuard guard(lock_);
    if (!items.empty() && flow_.AcceptPost()) {
        pendingItems_.insert(pendingItems_.end(), items.begin(), items.end());
    }
}

std::vector<AlarmItem> EventDeviceRecord::TakeItems() {
    const CLockGuard guard(lock_);
    return std::exchange(pendingItems_, {});
}

void EventDeviceRecord::ReturnItems(std::span<const AlarmItem> items) {
    const CLockGuard guard(lock_);
    pendingItems_.insert(pendingItems_.begin(), items.begin(), items.end());
}

void EventDeviceRecord::UseNotifications(const std::string& renewAddress) {
    const CLockGuard guard(lock_);
    flow_.OfferPosts(renewAddress);
}

std::string EventDeviceRecord::RenewAddress() const {
    const CLockGuard guard(lock_);
    return flow_.RenewAddress();
}

bool EventDeviceRecord::TakeRenewal(std::uint32_t now) {
    const CLockGuard guard(lock_);
    return flow_.TakeRenewal(now);
}

bool EventDeviceRecord::TakePull(std::uint32_t now) {
    const CLockGuard guard(lock_);
    return flow_.TakePull(now);
}

std::optional<DueSubscription> EventDeviceRecord::SubscriptionDue(std::int64_t calendarNow) const {
    const CLockGuard guard(lock_);
    return flow_.Pulls() ? subscription_.Due(calendarNow) : std::nullopt;
}

bool EventDeviceRecord::Answers() const {
    const CLockGuard guard(lock_);
    return subscription_.Answers();
}

void EventDeviceRecord::Resume() {
    std::uint32_t handle = 0;
    {
        const CLockGuard guard(lock_);
        handle = connection_.Get();
    }
    int ignored = 0;
    const bool connected = handle != 0 && WIRELINK_PopConnectResult(handle, ignored, 0);
    const CLockGuard guard(lock_);
    if (!connected) {
        flow_.PullAtOnce();
    }
    subscription_.Resume();
}

void EventDeviceRecord::BeginSubscribing() {
    const CLockGuard guard(lock_);
    subscription_.Begin();
}

void EventDeviceRecord::EndSubscribing(const std::optional<SubscriptionAnswer>& answer) {
    const std::int64_t now = CalendarSeconds();
    const CLockGuard guard(lock_);
    subscription_.End(answer, now);
}

PullPoint EventDeviceRecord::Pull() const {
    const CLockGuard guard(lock_);
    return subscription_.Pull();
}

void EventDeviceRecord::BeginPull() {
    const std::uint32_t now = TickCount();
    const CLockGuard guard(lock_);
    flow_.BeginPull(now);
}

void EventDeviceRecord::SetConnection(CWirelinkHandle connection) {
    const CLockGuard guard(lock_);
    std::swap(connection_, connection);
}

void EventDeviceRecord::MarkSilent() {
    const CLockGuard guard(lock_);
    subscription_.SetAnswers(false);
}

void EventDeviceRecord::CloseConnection() {
    CWirelinkHandle closed;
    {
        const CLockGuard guard(lock_);
        closed = std::move(connection_);
    }
    closed.Close();  // waits for a data callback, which takes the lock
    parser_.Reset();
    const CLockGuard guard(lock_);
    flow_.ForgetReply();
}

}  // namespace onvif_client
