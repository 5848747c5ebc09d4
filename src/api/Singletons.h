/// @file
/// The two objects that a process has one of each. They are never destroyed: the application's
/// threads may still be inside while the process ends, and so may be an observer that ends it.
#ifndef ONVIF_CLIENT_API_SINGLETONS_H
#define ONVIF_CLIENT_API_SINGLETONS_H

#include "api/HttpClientManager.h"
#include "events/OnvifEvent.h"

namespace onvif_client {

/// Made on first use; any thread.
CHttpClientManager& SessionRegistry();

/// Made on first use; any thread. Stops at process exit.
COnvifEventCtrol& EventController();

}  // namespace onvif_client

#endif
