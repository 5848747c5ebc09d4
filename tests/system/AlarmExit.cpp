/// An application that ends without telling the library, while the library is at work:
/// alarm_exit PORT main|callback|callback-after-quit. Its exit status is 7.
#include <atomic>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>

#include "onvif_client/OnvifClient.h"

namespace {

constexpr int kStatus = 7;
constexpr int kCalls = 5;

class CEndingObserver final : public CONVIFAlarmStateObserver {
 public:
    explicit CEndingObserver(const std::string& from)
        : exits_(from != "main"), quits_(from == "callback-after-quit") {}
    void OnMotionAlarmState(unsigned int, bool) override { Count(); }
    void OnAlarmInState(unsigned int, unsigned int, bool) override { Count(); }
    void Wait() const {
        while (calls_ < kCalls || exits_) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

 private:
    void Count() {
        if (++calls_ != kCalls || !exits_) {
            return;
        }
        if (quits_) {
            ONVIF_CLIENT_Quit();
        }
        std::exit(kStatus);  // NOLINT(concurrency-mt-unsafe): that is the point
    }

    const bool exits_;
    const bool quits_;
    std::atomic<int> calls_ = 0;
};

void Ask(unsigned int id, const char* request) {
    for (;;) {
        char* response = nullptr;
        ONVIF_CLIENT_GetCfg(id, request, response, nullptr);
        ONVIF_CLIENT_DelResponseBuff(response);
    }
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        return EXIT_FAILURE;
    }
    // Never destroyed: exit() would do that under the threads that use it.
    CEndingObserver& observer = *std::make_unique<CEndingObserver>(arguments[2]).release();
    ONVIF_CLIENT_Initial();
    const auto port = static_cast<unsigned short>(std::strtoul(arguments[1], nullptr, 10));
    const unsigned int id = ONVIF_CLIENT_Login(ONVIF_CLIENT_NO_LOGIN_ID, "127.0.0.1", port, "admin",
                                               "camera-1", nullptr);
    ONVIF_CLIENT_AddAlarmStateObserver(id, &observer);
    for (int i = 0; i < 2; ++i) {
        std::thread(Ask, id, "<Get version=\"1.0\" systemType=\"ipc\"><devInfo/></Get>").detach();
    }
    observer.Wait();
    return kStatus;
}
