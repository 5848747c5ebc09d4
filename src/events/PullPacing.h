/// @file
/// How long to wait before the next pull, so that a device that answers without telling anything is
/// not asked without a pause for ever.
#ifndef ONVIF_CLIENT_EVENTS_PULLPACING_H
#define ONVIF_CLIENT_EVENTS_PULLPACING_H

#include <cstdint>

namespace onvif_client {

enum class PullOutcome {
    kMessages,    ///< the device told something
    kNoMessages,  ///< it answered properly, with nothing to tell
    kRefused,     ///< it refused the credentials
    kFailed,      ///< it answered something else
    kAskedAnew,   ///< it asked for credentials in a way that the next pull can answer
};

/// A value without lock or clock. A device that answers as it should (messages, or a second and
/// more of waiting for them) is pulled from again at once, and sets back what it was counted for
/// before. Of the others the first few replies are followed at once, refused credentials never,
/// unless the device asked for them in a new way: that is followed at once, but not twice in a row.
class CPullPacing {
 public:
    /// A reply came.
    /// @param tookMs  from the request to the reply.
    /// @return how many milliseconds later the next pull is due.
    std::uint32_t Pause(PullOutcome outcome, std::uint32_t tookMs);
    /// A new subscription stands: begins anew.
    void SetBack() { *this = {}; }

    /// True from the first pause on until the counts are set back.
    bool Paces() const { return paces_; }

 private:
    std::uint32_t PauseAfter(PullOutcome outcome, std::uint32_t tookMs);

    // Replies of a kind since the counts were set back.
    unsigned int refused_ = 0;
    unsigned int failed_ = 0;
    unsigned int empty_ = 0;
    bool askedAnew_ = false;  // by the last reply
    bool paces_ = false;
};

}  // namespace onvif_client

#endif
