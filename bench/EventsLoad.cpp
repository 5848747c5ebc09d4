#include <camera_sim/CameraSim.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "BareExchange.h"
#include "BarePeer.h"
#include "CameraProcess.h"
#include "EventsBench.h"
#include "ProcessUsage.h"
#include "support/DroppingPort.h"

namespace {

using Clock = CCameraProcess::Clock;
using std::chrono::seconds;

/// More than one process' descriptors and one thread's work would carry.
constexpr std::size_t kCamerasOfProcess = 2500;

/// What the process used of the processor in the time since it was made.
class CProcessorTime {
 public:
    double Milliseconds() const { return ProcessorMilliseconds() - used_; }
    double MillisecondsPerSecond() const {
        return Milliseconds() / ::Milliseconds(Clock::now() - started_) * 1e3;
    }

 private:
    const double used_ = ProcessorMilliseconds();
    const Clock::time_point started_ = Clock::now();
};

/// The cameras in their processes, with an observer each.
struct Site {
    /// @param period  from one beginning of a camera's motion to the next.
    Site(std::size_t count, std::size_t changes, Clock::duration period, bool keepAlive = false) {
        for (std::size_t from = 0; from < count; from += kCamerasOfProcess) {
            processes.push_back(std::make_unique<CCameraProcess>(
                std::min(kCamerasOfProcess, count - from), changes, period, keepAlive));
        }
        for (std::size_t i = 0; i < count; ++i) {
            ears.push_back(std::make_unique<CEar>(2 * changes));
        }
    }

    CCameraProcess& ProcessOf(std::size_t camera) const {
        return *processes[camera / kCamerasOfProcess];
    }
    std::uint16_t Port(std::size_t camera) const {
        return ProcessOf(camera).Port(camera % kCamerasOfProcess);
    }
    std::uint64_t Messages(std::size_t camera) const {
        return ProcessOf(camera).Messages(camera % kCamerasOfProcess);
    }
    Clock::time_point ChangeTime(std::size_t camera, std::size_t change) const {
        return ProcessOf(camera).ChangeTime(camera % kCamerasOfProcess, change);
    }
    void RunChanges() const {
        for (const auto& each : processes) {
            each->StartChanges();
        }
        for (const auto& each : processes) {
            each->AwaitChanges();
        }
    }

    std::vector<std::unique_ptr<CCameraProcess>> processes;
    std::vector<std::unique_ptr<CEar>> ears;
    std::vector<unsigned int> ids;
};

/// The latencies of a camera whose every change was told once and in order, starting with motion's
/// beginning; none of any other.
std::vector<double> LatenciesOf(const Site& site, std::size_t camera,
                                const std::vector<CEar::Told>& told, std::size_t changes) {
    std::vector<double> latencies;
    if (told.size() != changes || site.Messages(camera) != changes) {
        return latencies;
    }
    for (std::size_t i = 0; i < changes; ++i) {
        if (!told[i].motion || told[i].state != (i % 2 == 0)) {
            return {};
        }
        latencies.push_back(Milliseconds(told[i].time - site.ChangeTime(camera, i)));
    }
    return latencies;
}

/// Has many threads work on all cameras, as applications do. @return the milliseconds it took.
template <typename Work>
double OnThreads(std::size_t threads, std::size_t count, const Work& work) {
    const Clock::time_point started = Clock::now();
    std::atomic<std::size_t> next = 0;
    std::vector<std::jthread> workers;
    for (std::size_t i = 0; i < threads; ++i) {
        workers.emplace_back([&] {
            for (std::size_t camera = next++; camera < count; camera = next++) {
                work(camera);
            }
        });
    }
    workers.clear();
    return Milliseconds(Clock::now() - started);
}

double LogIn(Site& site, std::size_t threads) {
    site.ids.resize(site.ears.size(), ONVIF_CLIENT_NO_LOGIN_ID);
    return OnThreads(threads, site.ids.size(),
                     [&site](std::size_t i) { site.ids[i] = Login(site.Port(i)); });
}

double AddObservers(const Site& site, std::size_t threads) {
    const double took = OnThreads(threads, site.ids.size(), [&site](std::size_t i) {
        ONVIF_CLIENT_AddAlarmStateObserver(site.ids[i], site.ears[i].get());
    });
    std::fprintf(stderr, "%zu observers added in %.0f ms\n", site.ids.size(), took);
    return took;
}

void AwaitAll(const Site& site, std::size_t changes) {
    for (const auto& ear : site.ears) {
        ear->Await(changes);
    }
    std::this_thread::sleep_for(seconds(2));
}

double LogOut(const Site& site, std::size_t threads) {
    return OnThreads(threads, site.ids.size(), [&site](std::size_t i) {
        ONVIF_CLIENT_DelAlarmStateObserver(site.ids[i]);
        ONVIF_CLIENT_Logout(site.ids[i]);
    });
}

/// Leaves out what was told again: an active state is when the next change is late by seconds.
std::vector<CEar::Told> WithoutRepetitions(std::vector<CEar::Told> told) {
    const auto repeats = [](const CEar::Told& one, const CEar::Told& other) {
        return one.motion == other.motion && one.state == other.state;
    };
    told.erase(std::unique(told.begin(), told.end(), repeats), told.end());
    return told;
}

/// What was told of a camera that did not tell every change once and in order.
void PrintInexact(const Site& site, std::size_t camera, const std::vector<CEar::Told>& told,
                  std::size_t changes) {
    constexpr std::size_t kMostShown = 8;
    std::fprintf(stderr, "camera %zu, port %d:", camera, int{site.Port(camera)});
    for (std::size_t i = 0; i < changes; ++i) {
        std::fprintf(stderr, " changed at %.0f ms",
                     Milliseconds(site.ChangeTime(camera, i) - site.ChangeTime(camera, 0)));
    }
    for (std::size_t i = 0; i < std::min(told.size(), kMostShown); ++i) {
        std::fprintf(stderr, ", told %s at %.0f ms", told[i].state ? "on" : "off",
                     Milliseconds(told[i].time - site.ChangeTime(camera, 0)));
    }
    std::fprintf(stderr, ", %zu times in all\n", told.size());
}

struct Deliveries {
    std::size_t made = 0;
    std::size_t told = 0;
    bool exact = false;  // every change was told once and in order
    std::vector<double> latencies;
};

Deliveries PrintDeliveries(const Site& site, std::size_t changes, bool repetitions) {
    const std::size_t count = site.ears.size();
    Deliveries deliveries;
    std::size_t exact = 0;
    for (std::size_t i = 0; i < count; ++i) {
        auto heard = site.ears[i]->Await(0);
        if (repetitions) {
            heard = WithoutRepetitions(std::move(heard));
        }
        const auto own = LatenciesOf(site, i, heard, changes);
        deliveries.latencies.insert(deliveries.latencies.end(), own.begin(), own.end());
        deliveries.made += site.Messages(i);
        deliveries.told += heard.size();
        exact += own.empty() ? 0U : 1U;
        if (own.empty()) {
            PrintInexact(site, i, heard, changes);
        }
    }
    deliveries.exact = exact == count;
    std::sort(deliveries.latencies.begin(), deliveries.latencies.end());
    std::fprintf(stderr,
                 "%zu changes made, %zu told; every change once and in order: %zu of %zu cameras\n",
                 deliveries.made, deliveries.told, exact, count);
    PrintSpans("change to callback", deliveries.latencies);
    return deliveries;
}

/// Memory of the process that is its own, in KB.
double Memory() {
    return static_cast<double>(ProcessStatus("RssAnon")) * 1.024;
}

/// The processor time of a bare exchange of as many bytes as a pull and its message have, in
/// microseconds.
double BareExchangeCost(std::uint16_t port) {
    constexpr std::size_t kRequestSize = 2000;
    constexpr int kExchanges = 4000;
    const std::string request(kRequestSize, ' ');
    std::vector<char> reply(65536);
    const CProcessorTime time;
    for (int i = 0; i < kExchanges; ++i) {
        if (BareExchange(port, request, reply.data(), reply.size()) == 0) {
            throw std::runtime_error("no reply from the bare peer");
        }
    }
    return time.Milliseconds() * 1e3 / kExchanges;
}

double At(const std::vector<double>& ascending, double share) {
    return ascending.empty() ? 0
                             : ascending[static_cast<std::size_t>(
                                   share * static_cast<double>(ascending.size() - 1))];
}

}  // namespace

bool MeasureLoad(const Load& load) {
    constexpr std::size_t kReplySize = 1700;
    const CBarePeer peer(kReplySize);
    const auto count = static_cast<double>(load.cameras);
    const auto inAll = static_cast<double>(load.changes) * count;
    Site site(load.cameras, load.changes,
              std::chrono::nanoseconds(static_cast<std::int64_t>(2 * count / load.rate * 1e9)),
              load.keepAlive);
    nlohmann::ordered_json figures = {{"cameras", load.cameras}, {"rate", load.rate}};
    const auto print = [&figures](const char* name, const char* what, double value) {
        figures[name] = value;
        std::fprintf(stderr, "%s: %.2f\n", what, value);
    };
    const StartedLibrary library;
    std::this_thread::sleep_for(seconds(1));
    const CProcessorTime alone;
    const double memoryAlone = Memory();
    std::this_thread::sleep_for(seconds(5));
    const double pause = alone.MillisecondsPerSecond();
    print("alone_ms_per_s", "processor time without a camera, ms a second", pause);

    print("login_ms", "all logins, ms", LogIn(site, load.threads));
    const double memoryLoggedIn = Memory();
    print("observers_ms", "all observers, ms", AddObservers(site, load.threads));
    std::this_thread::sleep_for(seconds(2));
    const CProcessorTime quiet;
    std::this_thread::sleep_for(seconds(load.idle));
    const double idle = quiet.MillisecondsPerSecond();
    print("idle_ms_per_s", "processor time while pulls wait, ms a second", idle);
    print("session_kb", "memory of each session, KB", (memoryLoggedIn - memoryAlone) / count);
    print("observed_kb", "memory of each observed camera beside that, KB",
          (Memory() - memoryLoggedIn) / count);

    const CProcessorTime busy;
    const Clock::time_point started = Clock::now();
    site.RunChanges();
    AwaitAll(site, load.changes);
    const double took = Milliseconds(Clock::now() - started) / 1e3;
    const double cost = (busy.Milliseconds() - idle * took) * 1e3 / inAll;
    print("change_us", "processor time of a change beside that, us", cost);
    const double bare = BareExchangeCost(peer.Port());
    print("bare_us", "processor time of a bare exchange of as many bytes, us", bare);
    std::fprintf(stderr, "threads of the process: %ld\n", ProcessStatus("Threads"));

    const Deliveries deliveries = PrintDeliveries(site, load.changes, false);
    figures["changes_made"] = deliveries.made;
    figures["changes_told"] = deliveries.told;
    figures["exact"] = deliveries.exact;
    figures["latency_median_ms"] = At(deliveries.latencies, 0.5);
    figures["latency_p99_ms"] = At(deliveries.latencies, 0.99);
    figures["latency_max_ms"] = At(deliveries.latencies, 1);
    print("logout_ms", "all removed and logged out, ms", LogOut(site, load.threads));
    if (!load.figures.empty()) {
        std::ofstream(load.figures, std::ios::app) << figures.dump() << '\n';
    }
    return deliveries.exact;
}

bool MeasureDead(std::size_t cameras, std::size_t dead, std::size_t changes) {
    constexpr double kLongestStallMs = 250;
    constexpr std::size_t kThreads = 1;
    Site site(cameras, changes, seconds(2));
    const StartedLibrary library;
    LogIn(site, kThreads);
    AddObservers(site, kThreads);
    CEar deaf(1);
    std::uint16_t port = 0;
    std::vector<unsigned int> deadIds;
    {
        camera_sim::CCameraHost host;
        port = host.Add({.recordLimit = 1}).Port();
        for (std::size_t i = 0; i < dead; ++i) {
            deadIds.push_back(Login(port));
            ONVIF_CLIENT_AddAlarmStateObserver(deadIds.back(), &deaf);
        }
    }
    const client_test::CDroppingPort withoutPower(port);
    if (!withoutPower.Drops()) {
        throw std::runtime_error("the port was taken meanwhile");
    }
    std::fprintf(stderr, "%zu devices have lost their power\n", dead);
    site.RunChanges();
    AwaitAll(site, changes);
    ONVIF_CLIENT_Quit();  // breaks off what still waits for the dead
    for (const unsigned int id : deadIds) {
        ONVIF_CLIENT_DelAlarmStateObserver(id);
        ONVIF_CLIENT_Logout(id);
    }
    LogOut(site, kThreads);
    const Deliveries deliveries = PrintDeliveries(site, changes, true);
    const auto stalls = std::ranges::count_if(deliveries.latencies,
                                              [](double each) { return each > kLongestStallMs; });
    std::fprintf(stderr, "changes told after more than %.0f ms: %td\n", kLongestStallMs, stalls);
    return deliveries.exact && stalls == 0;
}
