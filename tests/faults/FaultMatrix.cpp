// Every command, the login and the observers against cameras whose replies are spoiled in every way
// that the simulated camera knows. Each session has a camera, a kind and a seed of its own; a
// finding names them, and the program begins with that session when it is given both.
#include <cstdio>
#include <thread>

#include "faults/Session.h"
#include "support/System.h"

namespace client_test {
namespace {

using namespace std::chrono_literals;
using Kinds = std::vector<const camera_sim::SpoilKind*>;

/// Sessions on several threads, from the start of the library to its end.
/// @return the number behind that of the last session.
std::size_t RunSessions(std::uint64_t seed, const Kinds& kinds, std::size_t first,
                        std::chrono::milliseconds time, CFindings& findings) {
    constexpr int kThreads = 12;
    const std::vector<std::string> steps = Steps();
    std::atomic<std::size_t> next = first;
    std::atomic<bool> end = false;
    ONVIF_CLIENT_Initial();
    std::vector<std::jthread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            while (!end) {
                const std::size_t number = next++;
                // Short runs of neighbouring seeds begin with other kinds.
                const auto& kind = *kinds[(number + seed * 19) % kinds.size()];
                CSession(kind, seed + number / kinds.size(), findings).Run(steps, end);
            }
        });
    }
    std::this_thread::sleep_for(time);
    end = true;
    // What still waits for a silent camera is broken off.
    findings.Run("quit", 20, ONVIF_CLIENT_Quit);
    threads.clear();
    return next;
}

void ExpectNoMore(const Holdings& before, CFindings& findings) {
    Holdings now = Held();
    // A thread that has been waited for may be in its last instructions.
    for (int i = 0; now.threads > before.threads && i < 1000; ++i, now = Held()) {
        std::this_thread::sleep_for(10ms);
    }
    const std::string text = std::to_string(now.handles) + " handles, " +
                             std::to_string(now.threads) + " threads, " +
                             std::to_string(now.bytes) + " bytes are left";
    findings.Write(text + " of " + std::to_string(before.handles) + ", " +
                   std::to_string(before.threads) + ", " + std::to_string(before.bytes));
    // Wine makes some handles of its own late; a leak would have as many as there are sessions.
    constexpr std::size_t kLate = 4;
    if (now.handles > before.handles + kLate || now.threads > before.threads ||
        now.bytes > before.bytes + (1 << 20)) {
        findings.Add("after Quit", text);
    }
}

int RunMatrix(std::uint64_t seed, const Kinds& kinds, std::chrono::seconds time) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + time;
    CFindings findings;
    RunSessions(seed, kinds, 0, 500ms, findings);  // what is made once, is then there
    const Holdings before = Held();
    std::size_t sessions = 0;
    while (Clock::now() < end) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        sessions = RunSessions(seed, kinds, sessions, std::min(left, 60'000ms), findings);
        ExpectNoMore(before, findings);
    }
    findings.Write(std::to_string(findings.Calls()) + " calls, " + std::to_string(kinds.size()) +
                   " kinds, " + std::to_string(findings.Count()) + " findings, " +
                   std::to_string(sessions) + " sessions");
    return findings.Count() == 0 ? 0 : 1;
}

}  // namespace
}  // namespace client_test

// NOLINTNEXTLINE(bugprone-exception-escape): what is thrown here is a finding of its own
int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    client_test::Kinds kinds;
    for (const auto& each : camera_sim::SpoilKinds()) {
        if (arguments.size() < 3 || arguments[2] == each.name) {
            kinds.push_back(&each);
        }
    }
    // The library's traces go to standard output, which this does not own.
    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory)
    const bool silent = std::freopen(client_test::kNowhere, "w", stdout) != nullptr;
    if (arguments.size() < 2 || kinds.empty() || !silent) {
        std::cerr << "fault_matrix SEED SECONDS [KIND], see onvif-camera-sim --spoil list\n";
        return 2;
    }
    return client_test::RunMatrix(std::stoull(arguments[0]), kinds,
                                  std::chrono::seconds(std::stoi(arguments[1])));
}
