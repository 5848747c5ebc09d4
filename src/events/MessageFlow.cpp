#include "events/MessageFlow.h"

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

void CMessageFlow::EndPull(bool broughtItems) {
    if (broughtItems && source_ == MessageSource::kEither) {
        source_ = MessageSource::kPulls;
    }
    pullEnded_ = true;
}

bool CMessageFlow::TakePull(std::uint32_t now) {
    if (!Pulls() || (!pullEnded_ && !HavePassed(now, askedTicks_, kPullTimeoutMs))) {
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
