/// @file
/// The request documents that the alarm side sends, and what it reads in the results. Pure
/// functions of their arguments; any thread.
#ifndef ONVIF_CLIENT_EVENTS_EVENTDOCUMENTS_H
#define ONVIF_CLIENT_EVENTS_EVENTDOCUMENTS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "client/HttpClient.h"
#include "commands/ServiceRequests.h"
#include "events/AlarmItem.h"
#include "events/PullPacing.h"

namespace onvif_client {

/// How long a device is asked to keep a subscription.
constexpr std::uint32_t kSubscriptionSeconds = 600;

/// What a pull asks for, and where.
struct PullPoint {
    std::string address;  // of the subscription; empty: there was none yet
    std::string id = kNoIdentifier;
    std::string idAttribute = kNoIdentifier;
    std::string timeout = "PT1M";
    std::uint16_t messageLimit = 1024;
};

std::string CreateDocument(std::string_view callbackAddress);
std::string PullDocument(const PullPoint& pull);
std::string UnsubscribeDocument(std::string_view subscriptionAddress);
std::string RenewDocument(std::string_view renewAddress);

/// Asks for the tokens of the device's inputs.
std::string InputsDocument();
std::vector<std::string> ReadInputs(std::string_view result);

/// Where a subscription is to be found.
struct SubscriptionAnswer {
    std::string address;
    std::string id = kNoIdentifier;
    std::string idAttribute = kNoIdentifier;
};

/// Nothing for a result without an address, or with one that no pull could repeat: the device did
/// not subscribe.
std::optional<SubscriptionAnswer> ReadSubscription(std::string_view result);

/// What a pull gave.
struct PullAnswer {
    std::vector<AlarmItem> items;
    // What the device allows at most, when it refused the pull; empty and 0: it does not say, or
    // not as a duration of at most 17 characters. Pulls repeat it, so it has to be short.
    std::string maxTimeout;
    std::uint16_t maxMessageLimit = 0;
    PullOutcome outcome = PullOutcome::kFailed;
};

/// @param perSource  how messages are read: ReadSourceItem, or their first item as the state.
PullAnswer ReadPull(const PullReply& reply, bool perSource = false);

}  // namespace onvif_client

#endif
