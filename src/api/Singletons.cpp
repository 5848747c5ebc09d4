#include "api/Singletons.h"

namespace onvif_client {

CHttpClientManager& SessionRegistry() {
    static CHttpClientManager registry;
    return registry;
}

COnvifEventCtrol& EventController() {
    static COnvifEventCtrol controller(SessionRegistry());
    return controller;
}

}  // namespace onvif_client
