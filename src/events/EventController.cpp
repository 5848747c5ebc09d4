#include "events/EventController.h"

namespace onvif_client {

namespace {

class CNoEvents final : public IEventController {
 public:
    void Start() override {}
    void Stop() override {}
    bool AddDevice(std::uint32_t, CONVIFAlarmStateObserver*, const std::string&) override {
        return true;
    }
    void DeleteDevice(std::uint32_t) override {}
};

}  // namespace

IEventController& EventController() {
    static CNoEvents controller;
    return controller;
}

}  // namespace onvif_client
