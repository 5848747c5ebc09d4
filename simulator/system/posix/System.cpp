#include "system/System.h"

#include <array>
#include <csignal>

std::vector<std::string> ProgramWords(int argc, char** argv) {
    return {argv + 1, argv + argc};
}

void WriteLinesAsTheyAre() {
    // They are.
}

std::span<const int> EndSignals() {
    static constexpr std::array kSignals = {SIGINT, SIGTERM};
    return kSignals;
}
