// Measures the alarm side against simulated cameras: how long a change takes to the observer, and
// what many cameras cost. See docs/performance.md.
#include "EventsBench.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>

double Milliseconds(std::chrono::steady_clock::duration span) {
    return std::chrono::duration<double, std::milli>(span).count();
}

void PrintSpans(const char* what, std::vector<double> milliseconds) {
    if (milliseconds.empty()) {
        return;
    }
    std::sort(milliseconds.begin(), milliseconds.end());
    const auto at = [&milliseconds](double share) {
        return milliseconds[static_cast<std::size_t>(share *
                                                     static_cast<double>(milliseconds.size() - 1))];
    };
    std::fprintf(stderr, "%s: minimum %.2f ms, median %.2f, 99th percentile %.2f, maximum %.2f\n",
                 what, at(0), at(0.5), at(0.99), at(1));
}

unsigned int Login(unsigned short port) {
    unsigned int error = 0;
    const unsigned int id = ONVIF_CLIENT_Login(ONVIF_CLIENT_NO_LOGIN_ID, "127.0.0.1", port, "admin",
                                               "camera-1", &error);
    if (id == ONVIF_CLIENT_NO_LOGIN_ID) {
        throw std::runtime_error("login failed: " + std::to_string(error));
    }
    return id;
}

int main(int argc, char** argv) try {
    constexpr int kMost = 1000000;
    setenv("ONVIF_CLIENT_LOG", "off", 0);
    setenv("ONVIF_CLIENT_LISTEN_ADDRESS", "127.0.0.1", 0);
    CLI::App app("Measures the alarm side. The figures go to standard error.", "events_bench");
    std::size_t changes = 1000;
    std::size_t cameras = 200;
    std::size_t alarms = 30;
    CLI::App* latency = app.add_subcommand("latency", "one camera, one change after the other");
    latency->add_option("--changes", changes)->check(CLI::Range(1, kMost))->capture_default_str();
    CLI::App* load = app.add_subcommand("load", "many cameras in another process");
    load->add_option("--cameras", cameras)->check(CLI::Range(1, 1000))->capture_default_str();
    load->add_option("--alarms", alarms, "of each camera, a second on and a second off")
        ->check(CLI::Range(1, kMost))
        ->capture_default_str();
    std::size_t dead = 200;
    CLI::App* beside = app.add_subcommand("dead", "the same beside devices without power");
    beside->add_option("--cameras", cameras)->check(CLI::Range(1, 1000))->capture_default_str();
    beside->add_option("--dead", dead)->check(CLI::Range(1, 1000))->capture_default_str();
    beside->add_option("--alarms", alarms)->check(CLI::Range(1, kMost))->capture_default_str();
    app.require_subcommand(1);
    CLI11_PARSE(app, argc, argv);
    if (load->parsed()) {
        return MeasureLoad(cameras, 2 * alarms) ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    if (beside->parsed()) {
        return MeasureDead(cameras, dead, 2 * alarms) ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    MeasureLatency(changes);
    return EXIT_SUCCESS;
} catch (const std::exception& failure) {
    std::fprintf(stderr, "events_bench: %s\n", failure.what());
    return EXIT_FAILURE;
}
