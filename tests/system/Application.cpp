/// An application that ends while the library is at work, or that its system fails:
/// test_application PORT MODE, for a busy camera. Its exit status is 7.
#include "system/Application.h"

#include <chrono>
#include <cstdlib>
#include <thread>

namespace client_test {
namespace {

constexpr int kStatus = 7;

unsigned short port = 0;
void (*inCallback)() = [] {};

void QuitAndEnd() {
    ONVIF_CLIENT_Quit();
    End();
}

}  // namespace

void Require(bool holds, int line) {
    if (!holds) {
        std::_Exit(line);
    }
}

void End() {
    std::exit(kStatus);  // NOLINT(concurrency-mt-unsafe): that is the point
}

CAlarmObserver& Observer() {
    // Never destroyed: exit() would do that under the threads that use it.
    static CAlarmObserver& observer =
        *std::make_unique<CAlarmObserver>([](unsigned int) { inCallback(); }).release();
    return observer;
}

unsigned short Port() {
    return port;
}

unsigned int LoginAtCamera() {
    unsigned int error = 0;
    return LoginAt(port, "camera-1", error);
}

void RequireCalls() {
    Require(Await([calls = Observer().calls + 5] { return Observer().calls > calls; }));
}

void Start() {
    ONVIF_CLIENT_Initial();
    const unsigned int id = LoginAtCamera();
    Require(Get(id, "<devInfo/>").has_value());
    ONVIF_CLIENT_AddAlarmStateObserver(id, &Observer());
    RequireCalls();
}

void StartAndKeepAsking() {
    Start();
    for (int i = 0; i < 2; ++i) {
        std::thread([id = LoginAtCamera()] {
            for (;;) {
                Get(id, "<devInfo/>");
            }
        }).detach();
    }
}

void EndFrom(void (*callback)(), void (*start)()) {
    inCallback = callback;
    start();
    std::this_thread::sleep_for(std::chrono::hours(1));
}

}  // namespace client_test

int main(int, char** arguments) {
    using namespace client_test;  // NOLINT(google-build-using-namespace)
    Modes modes = SystemModes();
    modes.merge(Modes{{"main", StartAndKeepAsking},
                      {"callback", [] { EndFrom(End); }},
                      {"callback-after-quit", [] { EndFrom(QuitAndEnd); }}});
    port = static_cast<unsigned short>(std::strtoul(arguments[1], nullptr, 10));
    modes.at(arguments[2])();
    return kStatus;
}
