#include "api/Singletons.h"

#include "platform/Immortal.h"
#include "platform/Wirelink.h"

namespace onvif_client {

namespace {

/// Ends what goes on in the background at process exit.
class CStopAtExit {
 public:
    explicit CStopAtExit(COnvifEventCtrol& controller) : controller_(controller) {}
    ~CStopAtExit() {
        WIRELINK_Quit();
        controller_.Stop();
    }
    CStopAtExit(const CStopAtExit&) = delete;
    CStopAtExit& operator=(const CStopAtExit&) = delete;

 private:
    COnvifEventCtrol& controller_;
};

}  // namespace

CHttpClientManager& SessionRegistry() {
    static CHttpClientManager& registry = MakeImmortal<CHttpClientManager>();
    return registry;
}

COnvifEventCtrol& EventController() {
    static COnvifEventCtrol& controller = MakeImmortal<COnvifEventCtrol>(SessionRegistry());
    static const CStopAtExit stop(controller);
    return controller;
}

}  // namespace onvif_client
