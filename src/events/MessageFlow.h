/// @file
/// How a device's messages come, and when the next pull or renewal is due.
#ifndef ONVIF_CLIENT_EVENTS_MESSAGEFLOW_H
#define ONVIF_CLIENT_EVENTS_MESSAGEFLOW_H

#include <cstdint>
#include <optional>
#include <string>

#include "events/PullPacing.h"

namespace onvif_client {

enum class MessageSource {
    kPulls,   ///< posts are ignored
    kEither,  ///< the device is pulled from and may post; what brings items first settles it
    kPosts,   ///< nothing is pulled any more
};

/// A value without lock or clock; times are ticks.
class CMessageFlow {
 public:
    explicit CMessageFlow(std::uint32_t now) : askedTicks_(now) {}

    /// Whether the device is pulled from.
    bool Pulls() const { return source_ != MessageSource::kPosts; }

    /// Lets a device that brought nothing yet post, to a subscription renewed at that address.
    void OfferPosts(const std::string& renewAddress);
    /// Empty: the device does not post.
    const std::string& RenewAddress() const { return renewAddress_; }
    /// @return false when the items of the post are to be ignored.
    bool AcceptPost();

    /// A pull is being sent.
    void BeginPull(std::uint32_t now) { askedTicks_ = now; }
    /// A whole reply to the pull has come; the next one is due at once, or after a pause.
    void EndPull(PullOutcome outcome, std::uint32_t now);
    /// The next pull is due, whatever became of the last one.
    void PullAtOnce();
    /// A new subscription stands.
    void EndPauses() { pacing_.SetBack(); }
    /// True while the device's replies make pulls wait.
    bool Paces() const { return pacing_.Paces(); }
    /// Makes ready for the reply to the next pull.
    void ForgetReply() { pullEnded_ = false; }

    /// In how many milliseconds a pull or a renewal is due, if nothing happens before; 0: now.
    std::optional<std::uint32_t> DueIn(std::uint32_t now) const;

    // A true answer counts as done from @p now on.
    bool TakePull(std::uint32_t now);
    bool TakeRenewal(std::uint32_t now);

 private:
    std::uint32_t PullDueIn(std::uint32_t now) const;
    bool TakesPosts() const { return source_ != MessageSource::kPulls; }

    MessageSource source_ = MessageSource::kPulls;
    bool pullEnded_ = false;
    std::uint32_t endedTicks_ = 0;
    std::uint32_t pauseMs_ = 0;
    CPullPacing pacing_;
    std::uint32_t askedTicks_;  // of the last pull or renewal
    std::string renewAddress_;
};

}  // namespace onvif_client

#endif
