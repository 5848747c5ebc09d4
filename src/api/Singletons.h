/// @file
/// The two objects that a process has one of each.
#ifndef ONVIF_CLIENT_API_SINGLETONS_H
#define ONVIF_CLIENT_API_SINGLETONS_H

#include "api/HttpClientManager.h"
#include "events/EventController.h"

namespace onvif_client {

/// Made on first use; any thread.
CHttpClientManager& SessionRegistry();

/// Made on first use; any thread. Ends at process exit before the registry does.
COnvifEventCtrol& EventController();

}  // namespace onvif_client

#endif
