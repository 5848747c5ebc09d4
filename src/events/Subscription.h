/// @file
/// The subscription at a device: what it asks of pulls, and when it is to be made anew.
#ifndef ONVIF_CLIENT_EVENTS_SUBSCRIPTION_H
#define ONVIF_CLIENT_EVENTS_SUBSCRIPTION_H

#include <cstdint>
#include <optional>

#include "events/EventDocuments.h"

namespace onvif_client {

/// An attempt to subscribe that is due.
struct DueSubscription {
    std::int64_t lastAttempt = 0;  ///< 0: it is due at once
    bool answers = false;          ///< whether the device answered what it was asked last
};

/// A value without lock or clock; times are seconds of the calendar. A subscription is replaced
/// long before its end, and a failed attempt made up for after the same time.
class CSubscription {
 public:
    /// The first attempt is due at once, as one at a device of which nobody knows yet that it
    /// answers. Before anything else.
    void AwaitFirst();
    /// True from then until that attempt begins.
    bool AwaitsFirst() const { return awaitsFirst_; }
    /// An attempt to subscribe begins.
    void Begin();
    /// @param answer  nothing: the device did not subscribe.
    void End(const std::optional<SubscriptionAnswer>& answer, std::int64_t now);
    /// The socket layer was started. What its last end broke off is due at once: an attempt that
    /// failed, also one that is still to fail.
    void Resume();

    /// Nothing as long as no attempt is due.
    std::optional<DueSubscription> Due(std::int64_t now) const;

    /// The second of the calendar at which one is, unless it is already, or something happens.
    std::int64_t DueAt() const;

    /// Whether the last attempt failed.
    bool Lost() const { return lost_; }
    /// Whether the device answered what it was asked last.
    bool Answers() const { return answers_; }
    void SetAnswers(bool answers) { answers_ = answers; }

    /// What the next pull asks for.
    const PullPoint& Pull() const { return pull_; }
    /// Another number for every other pull point.
    unsigned int PullNumber() const { return pullNumber_; }
    /// Keeps to what the device allows at most, where it says so.
    void Limit(const PullAnswer& answer);

 private:
    bool awaitsFirst_ = false;
    bool stands_ = false;
    bool lost_ = false;
    bool answers_ = true;
    bool resumed_ = false;          // since the last attempt began
    std::int64_t attemptedAt_ = 0;  // when the last attempt ended
    PullPoint pull_;
    unsigned int pullNumber_ = 1;
};

}  // namespace onvif_client

#endif
