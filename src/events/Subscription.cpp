#include "events/Subscription.h"

namespace onvif_client {

namespace {

/// Far less than the time that is asked for: a device that forgot its subscriptions is back soon.
constexpr std::int64_t kReplacedAfterSeconds = 100;

}  // namespace

void CSubscription::AwaitFirst() {
    awaitsFirst_ = true;
    answers_ = false;
}

void CSubscription::Begin() {
    awaitsFirst_ = false;
    stands_ = false;
    resumed_ = false;
}

void CSubscription::End(const std::optional<SubscriptionAnswer>& answer, std::int64_t now) {
    stands_ = answers_ = answer.has_value();
    lost_ = !stands_;
    if (answer) {
        // What the device allowed ended with the subscription before.
        ++pullNumber_;
        pull_ = {.address = answer->address, .id = answer->id, .idAttribute = answer->idAttribute};
    }
    attemptedAt_ = !answer && resumed_ ? 0 : now;
}

void CSubscription::Resume() {
    resumed_ = true;
    if (!stands_) {
        attemptedAt_ = 0;
    }
}

std::optional<DueSubscription> CSubscription::Due(std::int64_t now) const {
    const std::int64_t passed = now - attemptedAt_;
    // Negative: the machine's clock was set back.
    if (passed >= 0 && passed < kReplacedAfterSeconds) {
        return std::nullopt;
    }
    return DueSubscription{attemptedAt_, answers_};
}

std::int64_t CSubscription::DueAt() const {
    return attemptedAt_ + kReplacedAfterSeconds;
}

void CSubscription::Limit(const PullAnswer& answer) {
    if (!answer.maxTimeout.empty()) {
        ++pullNumber_;
        pull_.timeout = answer.maxTimeout;
    }
    if (answer.maxMessageLimit != 0) {
        ++pullNumber_;
        pull_.messageLimit = answer.maxMessageLimit;
    }
}

}  // namespace onvif_client
