// The camera's part in events: deferred pulls, notifications and the end of everything at a reboot.
#include <algorithm>
#include <utility>

#include "camera_sim/CameraCore.h"
#include "camera_sim/events/EventReplies.h"

namespace camera_sim {

Reply CCameraCore::DeferLocked(PullWait pull) {
    Reply reply;
    reply.ending = Reply::Ending::kDeferred;
    reply.ticket = ++lastTicket_;
    deferred_[reply.ticket].pull = std::move(pull);
    return reply;
}

Reply CCameraCore::Resume(std::uint64_t ticket) {
    const std::lock_guard guard(lock_);
    return ResumeLocked(ticket);
}

Reply CCameraCore::ResumeLocked(std::uint64_t ticket) {
    Reply reply;
    reply.ending = Reply::Ending::kClose;
    const auto found = deferred_.find(ticket);
    if (found == deferred_.end()) {
        return reply;
    }
    const PullWait& pull = found->second.pull;
    Subscription* subscription = events_.Find(pull.subscription);
    if (subscription != nullptr && subscription->queue.empty() &&
        CEventHub::Clock::now() < pull.until) {
        reply.ending = Reply::Ending::kDeferred;
        reply.ticket = ticket;
        reply.until = std::min(pull.until, subscription->end);
        return reply;
    }

    const auto& fault = found->second.fault;
    const bool xmlProlog = options_.xmlProlog && !(fault && fault->kind == Fault::Kind::kNoProlog);
    reply = subscription == nullptr ? FaultReply(NoSuchSubscription(state_), xmlProlog)
                                    : PulledLocked(pull, *subscription, xmlProlog);
    FrameLocked(reply, found->second.keepAlive);
    if (fault) {
        DisturbReply(reply, *fault);
    }
    spoiler_.Spoil("PullMessages", reply);
    evidence_.SetStatus(found->second.record, reply.status);
    deferred_.erase(found);
    return reply;
}

Reply CCameraCore::PulledLocked(const PullWait& pull, Subscription& subscription, bool xmlProlog) {
    CXmlWriter out(style_, options_.prettyXml);
    WriteAddressing(out, pull.action, pull.relatesTo);
    {
        const CXmlWriter::CScope response(out, Ns::kEvents, "PullMessagesResponse");
        evidence_.CountEvents("event:pulled", WritePulled(out, state_, subscription, pull.limit));
    }
    return HttpReply(200, kSoapType, out.Envelope(xmlProlog));
}

void CCameraCore::Abandon(std::uint64_t ticket) {
    const std::lock_guard guard(lock_);
    deferred_.erase(ticket);
}

void CCameraCore::PublishLocked() {
    if (!options_.events) {
        return;
    }
    evidence_.CountEvents("event:messages", events_.Observe(state_));
    for (auto& [id, subscription] : events_.All()) {
        NotifyLocked(subscription);
    }
    for (auto& [ticket, deferred] : deferred_) {
        const Subscription* subscription = events_.Find(deferred.pull.subscription);
        if (deferred.wake && (subscription == nullptr || !subscription->queue.empty())) {
            deferred.wake();
        }
    }
}

void CCameraCore::NotifyLocked(Subscription& subscription) {
    if (!subscription.consumer || subscription.posting || subscription.queue.empty()) {
        return;
    }
    CXmlWriter out(style_, options_.prettyXml);
    WriteNotify(out, options_, subscription);
    subscription.posting = true;
    outlets_.notify(subscription.id, *subscription.consumer, out.Envelope(options_.xmlProlog));
}

void CCameraCore::NotificationSent(std::uint64_t subscription, bool accepted) {
    const std::lock_guard guard(lock_);
    evidence_.CountEvents(accepted ? "event:notified" : "event:failed", 1);
    Subscription* found = events_.Find(subscription);
    if (found == nullptr) {
        return;
    }
    found->posting = false;
    ++(accepted ? found->delivered : found->dropped);
    NotifyLocked(*found);
}

void CCameraCore::Reboot() {
    const std::lock_guard guard(lock_);
    RebootLocked();
}

void CCameraCore::RebootLocked() {
    events_.Clear();
    deferred_.clear();
    outlets_.dropConnections();
}

std::vector<SubscriptionInfo> CCameraCore::Subscriptions() const {
    const std::lock_guard guard(lock_);
    std::vector<SubscriptionInfo> list;
    for (const auto& [id, subscription] : events_.All()) {
        SubscriptionInfo info;
        info.id = id;
        if (subscription.consumer) {
            info.consumer = subscription.consumer->address;
        }
        info.rest = std::chrono::ceil<std::chrono::milliseconds>(subscription.end -
                                                                 CEventHub::Clock::now());
        info.waitingPulls = static_cast<std::size_t>(std::count_if(
            deferred_.begin(), deferred_.end(),
            [&info](const auto& entry) { return entry.second.pull.subscription == info.id; }));
        info.queued = subscription.queue.size();
        info.delivered = subscription.delivered;
        info.dropped = subscription.dropped;
        list.push_back(std::move(info));
    }
    return list;
}

}  // namespace camera_sim
