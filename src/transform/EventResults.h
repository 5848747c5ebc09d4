/// @file
/// Result builders of the event service.
#ifndef ONVIF_CLIENT_TRANSFORM_EVENTRESULTS_H
#define ONVIF_CLIENT_TRANSFORM_EVENTRESULTS_H

#include "transform/ResultFrame.h"

namespace onvif_client {

extern const ResultFrame kCreatePullPointSubscriptionResult;
extern const ResultFrame kSubscribeResult;
/// Rooted at GetResponse, although renew is a Set command.
extern const ResultFrame kRenewResult;
extern const ResultFrame kPullMessagesResult;

}  // namespace onvif_client

#endif
