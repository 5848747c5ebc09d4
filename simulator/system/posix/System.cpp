#include "system/System.h"

#include <sys/resource.h>

#include <array>
#include <csignal>

std::vector<std::string> ProgramWords(int argc, char** argv) {
    return {argv + 1, argv + argc};
}

void WriteLinesAsTheyAre() {
    // They are.
}

std::size_t AllowManyDescriptors() {
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) {
        return 0;
    }
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
    return limit.rlim_max;
}

std::span<const int> EndSignals() {
    static constexpr std::array kSignals = {SIGINT, SIGTERM};
    return kSignals;
}
