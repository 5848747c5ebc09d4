/// @file
/// What the alarm side does with a device over the network. Each function is run by whoever has the
/// record for itself: the thread that adds a device, or a task that has claimed it. All fail
/// quietly: what is due comes again.
#ifndef ONVIF_CLIENT_EVENTS_DEVICEEXCHANGES_H
#define ONVIF_CLIENT_EVENTS_DEVICEEXCHANGES_H

#include "events/EventDeviceRecord.h"

namespace onvif_client {

/// Subscribes at the device, 8 s at most. Where inputs are told apart, the first time asks for
/// them, too: 8 s more at most.
/// @return true when the device gave a subscription.
bool Subscribe(EventDeviceRecord& record, ISessionSource& sessions);

/// Ends the subscription, if one was tried, makes a new one and pulls from that, 18 s at most.
void Resubscribe(EventDeviceRecord& record, ISessionSource& sessions);

/// Renews a subscription whose messages are posted, 2.5 s at most.
void Renew(EventDeviceRecord& record, ISessionSource& sessions);

/// Gives up the pull in progress, if any, and begins a new one, which the socket layer sends over a
/// connection of its own (PullConnection). Waits for nothing, unless the last pull was refused and
/// the session keeps the device's clock (16 s at most). The reply goes to the record's parser.
void SendPull(EventDeviceRecord& record, ISessionSource& sessions);

}  // namespace onvif_client

#endif
