#include "events/PullPacing.h"

#include <algorithm>

namespace onvif_client {

namespace {

constexpr std::uint32_t kPatientMs = 1000;
constexpr unsigned int kFailedAtOnce = 5;
constexpr unsigned int kEmptyAtOnce = 20;
constexpr std::uint32_t kBetweenEmptyMs = 250;
constexpr unsigned int kLongestRefusedSeconds = 60;
constexpr unsigned int kLongestFailedSeconds = 30;

/// 1 s, 2 s, 4 s ... @p longestSeconds.
std::uint32_t DoubledMs(unsigned int times, unsigned int longestSeconds) {
    constexpr unsigned int kMostDoublings = 6;
    return std::min(1U << std::min(times, kMostDoublings), longestSeconds) * 1000;
}

}  // namespace

std::uint32_t CPullPacing::Pause(PullOutcome outcome, std::uint32_t tookMs) {
    if (outcome == PullOutcome::kMessages || tookMs >= kPatientMs) {
        SetBack();
    }
    const bool asksWithoutEnd = outcome == PullOutcome::kAskedAnew && askedAnew_;
    askedAnew_ = outcome == PullOutcome::kAskedAnew;
    const std::uint32_t pause =
        PauseAfter(asksWithoutEnd ? PullOutcome::kRefused : outcome, tookMs);
    paces_ = paces_ || pause > 0;
    return pause;
}

std::uint32_t CPullPacing::PauseAfter(PullOutcome outcome, std::uint32_t tookMs) {
    switch (outcome) {
        case PullOutcome::kMessages:
        case PullOutcome::kAskedAnew:
            break;
        case PullOutcome::kNoMessages:
            if (tookMs < kPatientMs && ++empty_ > kEmptyAtOnce) {
                empty_ = kEmptyAtOnce;
                return kBetweenEmptyMs - std::min(tookMs, kBetweenEmptyMs);
            }
            break;
        case PullOutcome::kRefused:
            return DoubledMs(refused_++, kLongestRefusedSeconds);
        case PullOutcome::kFailed:
            if (++failed_ > kFailedAtOnce) {
                return DoubledMs(failed_ - kFailedAtOnce - 1, kLongestFailedSeconds);
            }
            break;
    }
    return 0;
}

}  // namespace onvif_client
