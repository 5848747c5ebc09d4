#include "events/EventDeviceRecord.h"

#include <utility>

#include "common/LogText.h"
#include "events/SourceStates.h"
#include "platform/Clock.h"
#include "platform/TraceFile.h"

namespace onvif_client {

namespace {

std::unique_ptr<IAlarmStates> MakeStates(bool perSource, std::uint32_t loginId,
                                         CONVIFAlarmStateObserver* observer,
                                         const std::string& device) {
    if (perSource) {
        return std::make_unique<CSourceStates>(loginId, observer, device);
    }
    return std::make_unique<CAlarmStates>(loginId, observer, device);
}

}  // namespace

EventDeviceRecord::EventDeviceRecord(ISessionSource& sessions, std::uint32_t loginId,
                                     CONVIFAlarmStateObserver* observer,
                                     std::string callbackAddress, std::string name,
                                     CExtensions extensions)
    : loginId_(loginId),
      callbackAddress_(std::move(callbackAddress)),
      name_(std::move(name)),
      perSource_(extensions.Has(Extension::kPerSourceAlarms)),
      keepsAlive_(extensions.Has(Extension::kKeepAlive)),
      states_(MakeStates(perSource_, loginId, observer, name_)),
      flow_(TickCount()),
      parser_(*this, sessions, loginId, extensions, name_),
      connection_(*this, parser_) {
    if (extensions.Has(Extension::kBackgroundSubscription)) {
        subscription_.AwaitFirst();
    }
}

EventDeviceRecord::~EventDeviceRecord() {
    connection_.Close();
    OnPullReply(ExchangeEnd::kStopped, {});
}

void EventDeviceRecord::Remove() {
    removed_ = true;
    states_->Silence();
}

void EventDeviceRecord::WakeBy(CWakeList& wakes) noexcept {
    wakes_ = &wakes;
    Wake();
}

void EventDeviceRecord::Wake() const noexcept {
    CWakeList* const wakes = wakes_;
    if (wakes != nullptr && !awake_.exchange(true)) {
        wakes->Add(loginId_);
    }
}

NextVisit EventDeviceRecord::WhenToVisit(std::uint32_t now, std::int64_t calendarNow) const {
    NextVisit next;
    next.milliseconds = states_->NextCheck(now);
    if (claimed_) {
        return next;  // nothing else is begun before the end of the task
    }
    const CLockGuard guard(lock_);
    next.NotAfter(flow_.DueIn(now));
    if (flow_.Pulls()) {
        next.calendarSeconds = subscription_.DueAt();
        if (subscription_.Due(calendarNow)) {
            next.milliseconds = 0;
        }
    }
    return next;
}

bool EventDeviceRecord::Pulls() const {
    const CLockGuard guard(lock_);
    return flow_.Pulls();
}

void EventDeviceRecord::OnPullReply(ExchangeEnd end, std::string_view reply) {
    if (!TracesExchanges()) {
        return;
    }
    std::shared_ptr<CExchangeTrace> trace;
    {
        const CLockGuard guard(lock_);
        trace.swap(trace_);
    }
    if (trace != nullptr) {
        trace->End({end, reply});
    }
}

void EventDeviceRecord::OnPullAnswer(const PullAnswer& answer) {
    const std::uint32_t now = TickCount();
    bool paced = false;
    bool paces = false;
    {
        const CLockGuard guard(lock_);
        subscription_.Limit(answer);
        toldInARow_ = answer.outcome == PullOutcome::kMessages ? toldInARow_ + 1 : 0;
        pendingItems_.insert(pendingItems_.end(), answer.items.begin(), answer.items.end());
        if (answer.outcome == PullOutcome::kNoMessages) {
            AddNewsLocked(AlarmNews::kAnswer);
        }
        paced = flow_.Paces();
        flow_.EndPull(answer.outcome, now);
        paces = flow_.Paces();
        subscription_.SetAnswers(true);
    }
    Wake();
    if (paces != paced) {
        Log(paces ? logpoint::kPullsPaced : logpoint::kPullsAtOnce);
    }
}

void EventDeviceRecord::OnNoReply() {
    if (!connection_.Reuses()) {
        return;  // the pull runs into its time-out
    }
    reuseFailed_ = true;
    {
        const CLockGuard guard(lock_);
        flow_.PullAtOnce();
    }
    Wake();
}

void EventDeviceRecord::OnNoConnection() {
    OnPullReply(ExchangeEnd::kNoConnection, {});
    {
        const CLockGuard guard(lock_);
        subscription_.SetAnswers(false);
    }
    Wake();
}

void EventDeviceRecord::OnNoSocket() {
    {
        const CLockGuard guard(lock_);
        lacksSocket_ = true;
    }
    OnNoConnection();
}

bool EventDeviceRecord::TakeLackOfSockets() {
    const CLockGuard guard(lock_);
    return std::exchange(lacksSocket_, false);
}

void EventDeviceRecord::AddNotifiedItems(std::span<const AlarmItem> items) {
    {
        const CLockGuard guard(lock_);
        if (!items.empty() && flow_.AcceptPost()) {
            pendingItems_.insert(pendingItems_.end(), items.begin(), items.end());
        }
    }
    Wake();
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
    {
        const CLockGuard guard(lock_);
        flow_.OfferPosts(renewAddress);
    }
    Wake();
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
    return !subscription_.AwaitsFirst() && flow_.TakePull(now);
}

std::optional<DueSubscription> EventDeviceRecord::SubscriptionDue(std::int64_t calendarNow) const {
    const CLockGuard guard(lock_);
    return flow_.Pulls() ? subscription_.Due(calendarNow) : std::nullopt;
}

bool EventDeviceRecord::AwaitsFirstSubscription() const {
    const CLockGuard guard(lock_);
    return subscription_.AwaitsFirst();
}

bool EventDeviceRecord::Answers() const {
    const CLockGuard guard(lock_);
    return subscription_.Answers();
}

void EventDeviceRecord::Resume() {
    const bool connected = connection_.Exists();
    {
        const CLockGuard guard(lock_);
        if (!connected) {
            flow_.PullAtOnce();
        }
        subscription_.Resume();
    }
    Wake();
}

void EventDeviceRecord::BeginSubscribing() {
    const CLockGuard guard(lock_);
    subscription_.Begin();
}

void EventDeviceRecord::EndSubscribing(const std::optional<SubscriptionAnswer>& answer) {
    const std::int64_t now = CalendarSeconds();
    bool lost = false;
    bool regained = false;
    bool paced = false;
    {
        const CLockGuard guard(lock_);
        const bool stood = !subscription_.Lost();
        subscription_.End(answer, now);
        lost = stood && !answer;
        regained = !stood && answer;
        paced = answer && flow_.Paces();
        if (answer) {
            flow_.EndPauses();
            newSubscription_ = true;
        } else {
            AddNewsLocked(AlarmNews::kLoss);
        }
    }
    Wake();
    if (lost || regained) {
        Log(lost ? logpoint::kSubscriptionLost : logpoint::kSubscriptionRegained);
    }
    if (paced) {
        Log(logpoint::kPullsAtOnce);
    }
}

bool EventDeviceRecord::AsksForInputs() const {
    const CLockGuard guard(lock_);
    return perSource_ && !inputsAsked_;
}

void EventDeviceRecord::SetInputs(std::vector<std::string> tokens) {
    {
        const CLockGuard guard(lock_);
        inputsAsked_ = true;
        for (std::string& each : tokens) {
            AddNewsLocked(AlarmNews::kInput, std::move(each));
        }
    }
    Wake();
}

PullPoint EventDeviceRecord::Pull() const {
    const CLockGuard guard(lock_);
    return subscription_.Pull();
}

const PreparedRequest* EventDeviceRecord::PreparedPull(
    const std::function<std::optional<PreparedRequest>(const PullPoint&)>& prepare) {
    PullPoint pull;
    {
        const CLockGuard guard(lock_);
        if (preparedPull_ && preparedFor_ == subscription_.PullNumber()) {
            return &*preparedPull_;
        }
        preparedFor_ = subscription_.PullNumber();
        pull = subscription_.Pull();
    }
    preparedPull_ = prepare(pull);
    return preparedPull_ ? &*preparedPull_ : nullptr;
}

void EventDeviceRecord::ForgetIdlePull() {
    const CLockGuard guard(lock_);
    if (toldInARow_ < 2) {
        preparedPull_.reset();
    }
}

void EventDeviceRecord::EndPull() {
    const bool mayReuse = keepsAlive_ && !reuseFailed_;
    // Both wait for a callback, which takes the lock.
    if (mayReuse) {
        connection_.Rest();
    }
    if (!mayReuse || !parser_.LeavesOpen()) {
        connection_.Close();
    }
    parser_.Reset();
    OnPullReply(ExchangeEnd::kStopped, {});
    const CLockGuard guard(lock_);
    flow_.ForgetReply();
}

void EventDeviceRecord::BeginPull(PullRequest request) {
    const std::uint32_t now = TickCount();
    {
        const CLockGuard guard(lock_);
        flow_.BeginPull(now);
        if (std::exchange(newSubscription_, false)) {
            AddNewsLocked(AlarmNews::kSubscription);  // behind what the one before told
        }
        trace_ = std::move(request.trace);
    }
    Wake();
    if (!request.text.empty()) {
        connection_.Begin(std::move(request));
    }
}

void EventDeviceRecord::AddNewsLocked(AlarmNews news, std::string source) {
    if (perSource_) {
        AlarmItem item;
        item.news = news;
        item.source = std::move(source);
        pendingItems_.push_back(std::move(item));
    }
}

void EventDeviceRecord::Log(const DeviceNews& news) const {
    LogNews(news, name_);
}

}  // namespace onvif_client
