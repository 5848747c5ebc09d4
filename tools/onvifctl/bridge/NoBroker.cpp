// In the place of MosquittoBroker.cpp where there is no libmosquitto.
#include "ExitCode.h"
#include "bridge/Broker.h"

namespace onvifctl {

void CheckBrokerClient() {
    throw CFailure(ExitCode::kUsage,
                   "this build of onvifctl has no broker client: it was made without libmosquitto");
}

std::unique_ptr<IBroker> MakeBroker(const BrokerOptions&, std::function<void()>) {
    CheckBrokerClient();
    return nullptr;
}

}  // namespace onvifctl
