// Measures the alarm side against simulated cameras: how long a change takes to the observer, and
// what many cameras cost. See docs/performance.md.
#include "EventsBench.h"

#include <sys/resource.h>

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

namespace {

void AllowManyDescriptors() {
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

}  // namespace

int main(int argc, char** argv) try {
    constexpr int kMost = 1000000;
    constexpr int kMostCameras = 15000;
    setenv("ONVIF_CLIENT_LOG", "off", 0);
    setenv("ONVIF_CLIENT_LISTEN_ADDRESS", "127.0.0.1", 0);
    CLI::App app("Measures the alarm side. The figures go to standard error.", "events_bench");
    std::size_t changes = 1000;
    Load load;
    std::size_t alarms = 30;
    CLI::App* latency = app.add_subcommand("latency", "one camera, one change after the other");
    latency->add_option("--changes", changes)->check(CLI::Range(1, kMost))->capture_default_str();
    CLI::App* many = app.add_subcommand("load", "many cameras in other processes");
    many->add_option("--cameras", load.cameras)
        ->check(CLI::Range(1, kMostCameras))
        ->capture_default_str();
    many->add_option("--alarms", alarms, "of each camera: a change on and a change off")
        ->check(CLI::Range(1, kMost))
        ->capture_default_str();
    many->add_option("--rate", load.rate,
                     "changes a second of all cameras together; otherwise one of each")
        ->check(CLI::Range(1, kMost));
    many->add_option("--threads", load.threads, "that log in and add observers")
        ->check(CLI::Range(1, 64))
        ->capture_default_str();
    many->add_option("--idle", load.idle, "seconds before the changes")
        ->check(CLI::Range(1, kMost))
        ->capture_default_str();
    many->add_flag("--keep-alive", load.keepAlive, "the cameras keep connections open");
    many->add_option("--figures", load.figures, "file that gets the figures as a line of JSON");
    std::size_t dead = 200;
    CLI::App* beside = app.add_subcommand("dead", "the same beside devices without power");
    beside->add_option("--cameras", load.cameras)
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    beside->add_option("--dead", dead)->check(CLI::Range(1, 1000))->capture_default_str();
    beside->add_option("--alarms", alarms)->check(CLI::Range(1, kMost))->capture_default_str();
    app.require_subcommand(1);
    CLI11_PARSE(app, argc, argv);
    if (many->parsed()) {
        AllowManyDescriptors();
        load.changes = 2 * alarms;
        load.rate = load.rate > 0 ? load.rate : static_cast<double>(load.cameras);
        return MeasureLoad(load) ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    if (beside->parsed()) {
        return MeasureDead(load.cameras, dead, 2 * alarms) ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    MeasureLatency(changes);
    return EXIT_SUCCESS;
} catch (const std::exception& failure) {
    std::fprintf(stderr, "events_bench: %s\n", failure.what());
    return EXIT_FAILURE;
}
