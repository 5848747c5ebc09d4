#include "api/Singletons.h"

#include "platform/PerProcess.h"
#include "platform/Wirelink.h"

namespace onvif_client {

namespace {

constinit CPerProcess<CHttpClientManager> registry;
constinit CPerProcess<COnvifEventCtrol> controller;

/// Ends what goes on in the background at process exit. A forked child has nothing of that unless
/// it has made its own.
class CStopAtExit {
 public:
    CStopAtExit() = default;
    ~CStopAtExit() {
        COnvifEventCtrol* const own = controller.Find();
        if (own != nullptr && !OtherThreadsHaveEnded()) {
            WIRELINK_Quit();
            own->Stop();
        }
    }
    CStopAtExit(const CStopAtExit&) = delete;
    CStopAtExit& operator=(const CStopAtExit&) = delete;
};

}  // namespace

CHttpClientManager& SessionRegistry() {
    return registry.Get();
}

COnvifEventCtrol& EventController() {
    static const CStopAtExit stop;
    return controller.Get(SessionRegistry());
}

}  // namespace onvif_client
