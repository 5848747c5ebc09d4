// door_bench IP PORT: what a devInfo takes by the C++ exports and by the functions for C, in turns;
// beside it bench/python_bench measures Python. Prints the two medians in microseconds.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "onvif_client/OnvifClient.h"
#include "onvif_client/onvif_client_c.h"

namespace {

constexpr int kTurns = 1000;
constexpr const char* kRequest = "<Get version=\"1.0\" systemType=\"ipc\"><devInfo/></Get>";

bool AskByExports(unsigned int id) {
    char* response = nullptr;
    int length = 0;
    const bool success = ONVIF_CLIENT_GetCfg(id, kRequest, response, &length);
    ONVIF_CLIENT_DelResponseBuff(response);
    return success && length > 0;
}

bool AskByC(unsigned int id) {
    char* result = nullptr;
    std::size_t size = 0;
    const int error = onvif_client_get(id, kRequest, &result, &size);
    onvif_client_free(result);
    return error == onvif_client_success && size > 0;
}

double Microseconds(bool (*ask)(unsigned int), unsigned int id) {
    const auto start = std::chrono::steady_clock::now();
    if (!ask(id)) {
        std::abort();
    }
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start)
        .count();
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
    onvif_client_id id = 0;
    onvif_client_start();
    if (argc != 3 || onvif_client_login(argv[1], static_cast<std::uint16_t>(std::atoi(argv[2])),
                                        "admin", "camera-1", &id) != onvif_client_success) {
        return 1;
    }
    std::vector<double> byExports;
    std::vector<double> byC;
    for (int turn = 0; turn < kTurns; ++turn) {
        byExports.push_back(Microseconds(AskByExports, id));
        byC.push_back(Microseconds(AskByC, id));
    }
    std::printf("%.1f %.1f\n", Median(byExports), Median(byC));
    onvif_client_stop();
    return 0;
}
