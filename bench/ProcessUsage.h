/// @file
/// What this process has used so far.
#ifndef ONVIF_CLIENT_BENCH_PROCESSUSAGE_H
#define ONVIF_CLIENT_BENCH_PROCESSUSAGE_H

#include <sys/resource.h>

#include <fstream>
#include <string>

/// Milliseconds of processor time, in the process and in the system for it.
inline double ProcessorMilliseconds() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    const auto milliseconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
    };
    return milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
}

/// A number from the system's account of the process: "RssAnon" (memory of its own that is in
/// memory, in KiB), "Threads". 0 when there is no such line.
inline long ProcessStatus(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(name + ":")) {
            return std::stol(line.substr(name.size() + 1));
        }
    }
    return 0;
}

#endif
