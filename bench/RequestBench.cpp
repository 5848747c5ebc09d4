// Times a request through the exports against a bare exchange of the same bytes, both with the same
// simulated camera; counts the exchanges of a login and the memory of a session.
#include <benchmark/benchmark.h>
#include <camera_sim/CameraSim.h>
#include <malloc.h>

#include <cstdlib>
#include <iostream>
#include <vector>

#include "BareExchange.h"
#include "onvif_client/OnvifClient.h"

namespace {

constexpr const char* kDevInfo = "<Get version=\"1.0\" systemType=\"ipc\"><devInfo/></Get>";

/// One camera and one session for the whole run.
struct Bed {
    Bed() {
        ONVIF_CLIENT_Initial();
        id = Login();
        Ask();
        const auto request = camera.Requests().back();
        bytes = request.head + request.body;
    }
    ~Bed() { ONVIF_CLIENT_Quit(); }
    Bed(const Bed&) = delete;
    Bed& operator=(const Bed&) = delete;

    unsigned int Login() const {
        unsigned int error = 0;
        return ONVIF_CLIENT_Login(ONVIF_CLIENT_NO_LOGIN_ID, "127.0.0.1", camera.Port(), "admin",
                                  "camera-1", &error);
    }
    bool Ask() const {
        char* response = nullptr;
        int length = 0;
        const bool success = ONVIF_CLIENT_GetCfg(id, kDevInfo, response, &length);
        ONVIF_CLIENT_DelResponseBuff(response);
        return success;
    }

    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add({.refuseReplays = false, .recordLimit = 1});
    unsigned int id = 0;
    std::string bytes;
};

Bed& TheBed() {
    static Bed bed;
    return bed;
}

void BareExchangeOfTheSameBytes(benchmark::State& state) {
    const Bed& bed = TheBed();
    std::vector<char> buffer(8192);
    for ([[maybe_unused]] const auto _ : state) {
        if (BareExchange(bed.camera.Port(), bed.bytes, buffer.data(), buffer.size()) == 0) {
            state.SkipWithError("no reply");
        }
    }
}

void GetCfgDevInfo(benchmark::State& state) {
    const Bed& bed = TheBed();
    for ([[maybe_unused]] const auto _ : state) {
        if (!bed.Ask()) {
            state.SkipWithError("the request failed");
        }
    }
}

void LoginAndLogout(benchmark::State& state) {
    const Bed& bed = TheBed();
    const auto before = bed.camera.Count("*");
    for ([[maybe_unused]] const auto _ : state) {
        ONVIF_CLIENT_Logout(bed.Login());
    }
    state.counters["exchanges"] = benchmark::Counter(
        static_cast<double>(bed.camera.Count("*") - before), benchmark::Counter::kAvgIterations);
}

void MemoryOfASession(benchmark::State& state) {
    constexpr int kSessions = 1000;
    const Bed& bed = TheBed();
    for ([[maybe_unused]] const auto _ : state) {
        std::vector<unsigned int> ids;
        ids.reserve(kSessions);
        const std::size_t before = mallinfo2().uordblks;
        for (int i = 0; i < kSessions; ++i) {
            ids.push_back(bed.Login());
        }
        state.counters["bytes"] = static_cast<double>(mallinfo2().uordblks - before) / kSessions;
        for (const unsigned int id : ids) {
            ONVIF_CLIENT_Logout(id);
        }
    }
}

BENCHMARK(BareExchangeOfTheSameBytes)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(GetCfgDevInfo)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(LoginAndLogout)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(MemoryOfASession)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    setenv("ONVIF_CLIENT_LOG", "off", 0);
    // The traces of the logins would drown the figures; those go to standard error.
    benchmark::Initialize(&argc, argv);
    benchmark::ConsoleReporter reporter(benchmark::ConsoleReporter::OO_Tabular);
    std::ostream figures(std::cerr.rdbuf());
    reporter.SetOutputStream(&figures);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
