#include "events/MessageFlow.h"

#include <algorithm>

#include "events/EventDocuments.h"
#include "events/Ticks.h"

namespace onvif_client {

namespace {

constexpr std::int32_t kPullTimeoutMs = 60000;
constexpr std::int32_t kRenewalMs = (static_cast<std::int32_t>(kSubscriptionSeconds) - 8) * 1000;

}  // namespace

void CMessageFlow::OfferPosts(const std::string& renewAddress) {
    source_ = MessageSource::kEither;
    renewAddress_ = renewAddress;
}

bool CMessageFlow::AcceptPost() {
    if (!TakesPosts()) {
        return false;
    }
    source_ = MessageSource::kPosts;
    return true;
}

void CMessageFlow::EndPull(PullOutcome outcome, std::uint32_t now) {
    if (outcome == PullOutcome::kMessages && source_ == MessageSource::kEither) {
        source_ = MessageSource::kPulls;
    }
    pullEnded_ = true;
    endedTicks_ = now;
    pauseMs_ = pacing_.Pause(outcome, now - askedTicks_);
}

void CMessageFlow::PullAtOnce() {
    pullEnded_ = true;
    pauseMs_ = 0;
}

std::uint32_t CMessageFlow::PullDueIn(std::uint32_t now) const {
    if (!pullEnded_) {
        return UntilPassed(now, askedTicks_, kPullTimeoutMs);
    }
    return pauseMs_ == 0 ? 0
                         : UntilPassed(now, endedTicks_, static_cast<std::int32_t>(pauseMs_) - 1);
}

std::optional<std::uint32_t> CMessageFlow::DueIn(std::uint32_t now) const {
    std::optional<std::uint32_t> due;
    if (Pulls()) {
        due = PullDueIn(now);
    }
    if (TakesPosts()) {
        const std::uint32_t renewal = UntilPassed(now, askedTicks_, kRenewalMs);
        due = std::min(due.value_or(renewal), renewal);
    }
    return due;
}

bool CMessageFlow::TakePull(std::uint32_t now) {
    if (!Pulls() || PullDueIn(now) > 0) {
        return false;
    }
    pullEnded_ = false;
    askedTicks_ = now;
    return true;
}

bool CMessageFlow::TakeRenewal(std::uint32_t now) {
    if (!TakesPosts() || !HavePassed(now, askedTicks_, kRenewalMs)) {
        return false;
    }
    askedTicks_ = now;
    return true;
}

}  // namespace onvif_client
