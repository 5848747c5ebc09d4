#include <gtest/gtest.h>

#include <vector>

#include "events/MessageFlow.h"
#include "events/Subscription.h"

namespace onvif_client {
namespace {

constexpr std::int64_t kStart = 1'700'000'000;

/// "b" an attempt begins, "s" succeeds, "f" fails, "r" the socket layer is started, "+" the device
/// answers a pull, "-" it does not.
void Play(char step, CSubscription& subscription, std::int64_t now) {
    switch (step) {
        case 'b':
            return subscription.Begin();
        case 's':
            return subscription.End(SubscriptionAnswer{"http://h/" + std::to_string(now)}, now);
        case 'f':
            return subscription.End({}, now);
        case 'r':
            return subscription.Resume();
        default:
            return subscription.SetAnswers(step == '+');
    }
}

TEST(Subscription, IsMadeAnewAHundredSecondsAfterAnAttemptOrAtOnceAfterARestart) {
    constexpr std::int64_t kAtOnce = 0;
    constexpr const char* kNone = "";
    const std::string at10 = "http://h/1700000010";
    const struct {
        const char* steps;
        std::int64_t lastAttempt;
        bool answers;
        std::string address;
    } cases[] = {
        {"", kAtOnce, true, kNone},
        {"bs", kStart + 10, true, at10},
        {"bf", kStart + 10, false, kNone},
        {"bsbf", kStart + 30, false, at10},
        {"bsb", kStart + 10, true, at10},
        {"bs-", kStart + 10, false, at10},
        {"bf+", kStart + 10, true, kNone},
        {"bsr", kStart + 10, true, at10},  // it outlives the layer
        {"bfr", kAtOnce, false, kNone},
        {"bsbr", kAtOnce, true, at10},
        {"brf", kAtOnce, false, kNone},  // the layer's end broke it off
        {"bsbrf", kAtOnce, false, at10},
        {"brs", kStart + 20, true, "http://h/1700000020"},
        {"bfrbf", kStart + 40, false, kNone},  // the attempt after the start
    };
    for (const auto& each : cases) {
        CSubscription subscription;
        std::int64_t now = kStart - 10;
        for (const char step : std::string_view(each.steps)) {
            Play(step, subscription, now += 10);
        }
        const auto due = subscription.Due(each.lastAttempt + 100);
        ASSERT_TRUE(due) << each.steps;
        EXPECT_EQ(due->lastAttempt, each.lastAttempt) << each.steps;
        EXPECT_EQ(due->answers, each.answers) << each.steps;
        EXPECT_EQ(subscription.Pull().address, each.address) << each.steps;
        EXPECT_FALSE(subscription.Due(each.lastAttempt + 99)) << each.steps;
        EXPECT_FALSE(subscription.Due(each.lastAttempt)) << each.steps;
        EXPECT_TRUE(subscription.Due(each.lastAttempt - 1)) << "the calendar was set back";
    }
}

TEST(Subscription, PullsKeepToTheLimitsOfTheDevice) {
    CSubscription subscription;
    const SubscriptionAnswer answer{"http://h/next", "7", "urn:x"};
    subscription.End(answer, kStart);
    const auto pull = [&](const PullAnswer& limits) {
        subscription.Limit(limits);
        return PullDocument(subscription.Pull());
    };
    EXPECT_EQ(pull({}), PullDocument({"http://h/next", "7", "urn:x", "PT1M", 1024}));
    EXPECT_EQ(pull({{}, "PT30S", 0}), PullDocument({"http://h/next", "7", "urn:x", "PT30S", 1024}));
    EXPECT_EQ(pull({{}, "", 100}), PullDocument({"http://h/next", "7", "urn:x", "PT30S", 100}));
    subscription.End(answer, kStart);
    EXPECT_EQ(pull({}), PullDocument({"http://h/next", "7", "urn:x", "PT1M", 1024}));
}

TEST(MessageFlow, TheFirstSourceSettlesHowMessagesCome) {
    constexpr std::uint32_t kBeforeTheWrap = 0xFFFFFF00U;
    const struct {
        const char* steps;  // posts are "o" offered, "p" made; a reply is "e" empty, "i" not
        bool pulls;
        bool takesPosts;
    } cases[] = {
        {"", true, false},    {"i", true, false},  {"p", true, false},
        {"o", true, true},    {"oe", true, true},  {"oi", true, false},
        {"oip", true, false}, {"op", false, true}, {"opi", false, true},
    };
    for (const auto& each : cases) {
        CMessageFlow flow(kBeforeTheWrap);
        for (const char step : std::string_view(each.steps)) {
            if (step == 'o') {
                flow.OfferPosts("http://h/manager");
            } else if (step == 'p') {
                flow.AcceptPost();
            } else {
                flow.EndPull(step == 'i' ? PullOutcome::kMessages : PullOutcome::kNoMessages,
                             kBeforeTheWrap);
            }
        }
        EXPECT_EQ(flow.Pulls(), each.pulls) << each.steps;
        EXPECT_EQ(CMessageFlow(flow).AcceptPost(), each.takesPosts) << each.steps;
        EXPECT_FALSE(flow.TakeRenewal(kBeforeTheWrap + 592000)) << each.steps;
        EXPECT_EQ(flow.TakeRenewal(kBeforeTheWrap + 592001), each.takesPosts) << each.steps;
        EXPECT_FALSE(flow.TakeRenewal(kBeforeTheWrap + 592001)) << each.steps;
        EXPECT_EQ(flow.TakePull(kBeforeTheWrap + 652002), each.pulls) << each.steps;
        EXPECT_FALSE(flow.TakePull(kBeforeTheWrap + 712002)) << each.steps;
    }
    CMessageFlow refused(kBeforeTheWrap);
    refused.EndPull(PullOutcome::kRefused, kBeforeTheWrap + 300);
    EXPECT_FALSE(refused.TakePull(kBeforeTheWrap + 299)) << "read before the reply came";
    EXPECT_FALSE(refused.TakePull(kBeforeTheWrap + 1299));
    EXPECT_TRUE(CMessageFlow(refused).TakePull(kBeforeTheWrap + 1300));
    refused.PullAtOnce();
    EXPECT_TRUE(refused.TakePull(kBeforeTheWrap + 300));
}

/// The pauses after replies of a kind, in a row; "reset" stands for a new subscription.
TEST(PullPacing, RepliesThatTellNothingAreFollowedLaterAndLater) {
    constexpr auto kMessages = PullOutcome::kMessages;
    constexpr auto kNone = PullOutcome::kNoMessages;
    constexpr auto kRefused = PullOutcome::kRefused;
    constexpr auto kFailed = PullOutcome::kFailed;
    using Pauses = std::vector<std::uint32_t>;
    const Pauses refused = {1000, 2000, 4000, 8000, 16000, 32000, 60000, 60000};
    const Pauses failed = {0, 0, 0, 0, 0, 1000, 2000, 4000, 8000, 16000, 30000, 30000};
    Pauses empty(20, 0);
    empty.insert(empty.end(), {200, 200});
    const struct {
        PullOutcome outcome;
        std::uint32_t tookMs;
        const Pauses& pauses;
        PullOutcome set;  // what sets the counts back
        std::uint32_t setTookMs;
    } cases[] = {
        {kRefused, 50, refused, kMessages, 50}, {kFailed, 50, failed, kNone, 1000},
        {kNone, 50, empty, kMessages, 0},       {kRefused, 999, refused, kNone, 1000},
        {kFailed, 0, failed, kMessages, 60000},
    };
    for (const auto& each : cases) {
        CPullPacing pacing;
        for (int round = 0; round < 3; ++round) {
            bool paces = false;
            for (const std::uint32_t pause : each.pauses) {
                EXPECT_EQ(pacing.Pause(each.outcome, each.tookMs), pause) << &each - cases;
                EXPECT_EQ(pacing.Paces(), paces = paces || pause > 0);
            }
            if (round == 0) {
                EXPECT_EQ(pacing.Pause(each.set, each.setTookMs), 0U) << &each - cases;
            } else {
                pacing.SetBack();
            }
            EXPECT_FALSE(pacing.Paces());
        }
    }
    CPullPacing slow;
    for (int i = 0; i < 30; ++i) {
        EXPECT_EQ(slow.Pause(kNone, 1000), 0U);
        EXPECT_EQ(slow.Pause(kFailed, 1000), 0U);
        EXPECT_EQ(slow.Pause(kRefused, 1000), 1000U);
        EXPECT_EQ(CPullPacing(slow).Pause(kMessages, 0), 0U);
    }
    CPullPacing mixed;  // a proper answer without messages sets nothing back
    EXPECT_EQ(mixed.Pause(kRefused, 0), 1000U);
    EXPECT_EQ(mixed.Pause(kNone, 0), 0U);
    EXPECT_EQ(mixed.Pause(kRefused, 0), 2000U);
}

}  // namespace
}  // namespace onvif_client
