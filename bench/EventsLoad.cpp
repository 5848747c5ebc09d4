#include <camera_sim/CameraSim.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include "CameraProcess.h"
#include "EventsBench.h"
#include "ProcessUsage.h"
#include "support/DroppingPort.h"

namespace {

using Clock = CCameraProcess::Clock;
using std::chrono::seconds;

/// What the process used of the processor, per second and camera, in the time since it was made.
class CProcessorShare {
 public:
    void Print(const char* what, std::size_t cameras) const {
        const double spent = ProcessorMilliseconds() - used_;
        const double perSecond = spent / Milliseconds(Clock::now() - started_) * 1e3;
        std::fprintf(stderr, "processor time %s: %.2f ms a second (%.1f us for each camera)\n",
                     what, perSecond, perSecond * 1e3 / static_cast<double>(cameras));
    }

 private:
    const double used_ = ProcessorMilliseconds();
    const Clock::time_point started_ = Clock::now();
};

/// The latencies of a camera whose every change was told once and in order, starting with motion's
/// beginning; none of any other.
std::vector<double> LatenciesOf(const CCameraProcess& cameras, std::size_t camera,
                                const std::vector<CEar::Told>& told, std::size_t changes) {
    std::vector<double> latencies;
    if (told.size() != changes || cameras.Messages(camera) != changes) {
        return latencies;
    }
    for (std::size_t i = 0; i < changes; ++i) {
        if (!told[i].motion || told[i].state != (i % 2 == 0)) {
            return {};
        }
        latencies.push_back(Milliseconds(told[i].time - cameras.ChangeTime(camera, i)));
    }
    return latencies;
}

/// The cameras, with an observer each.
struct Site {
    Site(std::size_t count, std::size_t changes) : cameras(count, changes, seconds(1)) {
        for (std::size_t i = 0; i < count; ++i) {
            ears.push_back(std::make_unique<CEar>(2 * changes));
        }
    }

    CCameraProcess cameras;
    std::vector<std::unique_ptr<CEar>> ears;
    std::vector<unsigned int> ids;
};

void LogIn(Site& site) {
    for (std::size_t i = 0; i < site.ears.size(); ++i) {
        site.ids.push_back(Login(site.cameras.Port(i)));
    }
}

void AddObservers(const Site& site) {
    const Clock::time_point started = Clock::now();
    for (std::size_t i = 0; i < site.ids.size(); ++i) {
        ONVIF_CLIENT_AddAlarmStateObserver(site.ids[i], site.ears[i].get());
    }
    std::fprintf(stderr, "%zu observers added in %.0f ms\n", site.ids.size(),
                 Milliseconds(Clock::now() - started));
}

void AwaitAll(const Site& site, std::size_t changes) {
    for (const auto& ear : site.ears) {
        ear->Await(changes);
    }
    std::this_thread::sleep_for(seconds(2));
}

void LogOut(const Site& site) {
    for (const unsigned int id : site.ids) {
        ONVIF_CLIENT_DelAlarmStateObserver(id);
        ONVIF_CLIENT_Logout(id);
    }
}

/// Leaves out what was told again: an active state is when the next change is late by seconds.
std::vector<CEar::Told> WithoutRepetitions(std::vector<CEar::Told> told) {
    const auto repeats = [](const CEar::Told& one, const CEar::Told& other) {
        return one.motion == other.motion && one.state == other.state;
    };
    told.erase(std::unique(told.begin(), told.end(), repeats), told.end());
    return told;
}

struct Deliveries {
    bool exact = false;  // every change was told once and in order
    std::vector<double> latencies;
};

Deliveries PrintDeliveries(const Site& site, std::size_t changes, bool repetitions) {
    const std::size_t count = site.ears.size();
    std::vector<double> latencies;
    std::size_t made = 0;
    std::size_t told = 0;
    std::size_t exact = 0;
    for (std::size_t i = 0; i < count; ++i) {
        auto heard = site.ears[i]->Await(0);
        if (repetitions) {
            heard = WithoutRepetitions(std::move(heard));
        }
        const auto own = LatenciesOf(site.cameras, i, heard, changes);
        latencies.insert(latencies.end(), own.begin(), own.end());
        made += site.cameras.Messages(i);
        told += heard.size();
        exact += own.empty() ? 0U : 1U;
    }
    std::fprintf(stderr,
                 "%zu changes made, %zu told; every change once and in order: %zu of %zu cameras\n",
                 made, told, exact, count);
    PrintSpans("change to callback", latencies);
    return {exact == count, std::move(latencies)};
}

/// Memory of the process that is its own, in KB.
double Memory() {
    return static_cast<double>(ProcessStatus("RssAnon")) * 1.024;
}

}  // namespace

bool MeasureLoad(std::size_t cameras, std::size_t changes) {
    Site site(cameras, changes);
    const auto count = static_cast<double>(cameras);
    const StartedLibrary library;
    std::this_thread::sleep_for(seconds(1));
    const CProcessorShare alone;
    const double memoryAlone = Memory();
    std::this_thread::sleep_for(seconds(5));
    alone.Print("without a camera", cameras);

    LogIn(site);
    const double memoryLoggedIn = Memory();
    AddObservers(site);
    std::this_thread::sleep_for(seconds(2));
    const CProcessorShare quiet;
    std::this_thread::sleep_for(seconds(10));
    quiet.Print("while pulls wait", cameras);

    const CProcessorShare busy;
    site.cameras.RunChanges();
    busy.Print("with a change a second at each camera", cameras);
    std::fprintf(stderr, "memory of each camera: %.1f KB logged in, %.1f KB more observed\n",
                 (memoryLoggedIn - memoryAlone) / count, (Memory() - memoryLoggedIn) / count);
    std::fprintf(stderr, "threads of the process: %ld\n", ProcessStatus("Threads"));

    AwaitAll(site, changes);
    LogOut(site);
    return PrintDeliveries(site, changes, false).exact;
}

bool MeasureDead(std::size_t cameras, std::size_t dead, std::size_t changes) {
    constexpr double kLongestStallMs = 250;
    Site site(cameras, changes);
    const StartedLibrary library;
    LogIn(site);
    AddObservers(site);
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
    site.cameras.RunChanges();
    AwaitAll(site, changes);
    ONVIF_CLIENT_Quit();  // breaks off what still waits for the dead
    for (const unsigned int id : deadIds) {
        ONVIF_CLIENT_DelAlarmStateObserver(id);
        ONVIF_CLIENT_Logout(id);
    }
    LogOut(site);
    const Deliveries deliveries = PrintDeliveries(site, changes, true);
    const auto stalls = std::ranges::count_if(deliveries.latencies,
                                              [](double each) { return each > kLongestStallMs; });
    std::fprintf(stderr, "changes told after more than %.0f ms: %td\n", kLongestStallMs, stalls);
    return deliveries.exact && stalls == 0;
}
