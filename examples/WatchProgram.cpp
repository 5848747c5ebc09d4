// Watches the alarms of one device for ten minutes.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "onvif_client/OnvifClient.h"

class CEar : public CONVIFAlarmStateObserver {
 public:
    void OnMotionAlarmState(unsigned int, bool state) override { Tell("motion", state, motion_); }
    void OnAlarmInState(unsigned int, unsigned int, bool state) override {
        Tell("alarm input", state, alarmIn_);
    }

 private:
    // An active state is told again and again while the device does not confirm it.
    static void Tell(const char* kind, bool state, bool& last) {
        if (state != last) {
            last = state;
            std::printf("%s %s\n", kind, state ? "begins" : "ends");
        }
    }
    bool motion_ = false;
    bool alarmIn_ = false;
};

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr, "usage: %s IP PORT USER PASSWORD\n", argv[0]);
        return 2;
    }
    ONVIF_CLIENT_Initial();
    unsigned int error = 0;
    const unsigned int id = ONVIF_CLIENT_Login(ONVIF_CLIENT_NO_LOGIN_ID, argv[1],
                                               static_cast<unsigned short>(std::atoi(argv[2])),
                                               argv[3], argv[4], &error);
    CEar ear;
    if (id != ONVIF_CLIENT_NO_LOGIN_ID) {
        ONVIF_CLIENT_AddAlarmStateObserver(id, &ear);
        std::this_thread::sleep_for(std::chrono::minutes(10));
        ONVIF_CLIENT_DelAlarmStateObserver(id);
    }
    ONVIF_CLIENT_Logout(id);
    ONVIF_CLIENT_Quit();
    return error == 0 ? 0 : 1;
}
