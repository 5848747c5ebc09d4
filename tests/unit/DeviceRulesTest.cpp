#include <gtest/gtest.h>

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
                flow.EndPull(step == 'i');
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
}

}  // namespace
}  // namespace onvif_client
