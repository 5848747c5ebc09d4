// In the place of MosquittoBroker.cpp where there is no libmosquitto.
#include "ExitCode.h"
#include "bridge/Broker.h"

namespace onvifctl {

std::unique_ptr<IBroker> MakeBroker(const BrokerOptions&, std::function<void()>) {
    throw CFailure(
        ExitCode::kUsage,
        "this build of onvifctl has no broker client: it was built without libmosquitto");
}

}  // namespace onvifctl
