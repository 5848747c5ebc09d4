/// @file
/// Reads the messages of a pull's result document source by source. Pure functions; any thread.
#ifndef ONVIF_CLIENT_EVENTS_SOURCEITEMS_H
#define ONVIF_CLIENT_EVENTS_SOURCEITEMS_H

#include "common/XmlDocument.h"
#include "events/AlarmItem.h"

namespace onvif_client {

/// The data items tell the state, by their names, and key items where there are no data. A message
/// that is no alarm, or tells neither a state nor a pulse, has the type kNone.
/// @param notifyMessage  as the result of pullMessages has it.
AlarmItem ReadSourceItem(const XMLElement* notifyMessage);

}  // namespace onvif_client

#endif
