#include <camera_sim/CameraSim.h>

#include <chrono>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "EventsBench.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience{10};

void Trigger(camera_sim::CCamera& camera, bool motion, bool state) {
    camera.Change([motion, state](camera_sim::CameraState& cameraState) {
        if (motion) {
            cameraState.media.videoSources.front().motion = state;
        } else {
            cameraState.inputs.front().active = state;
        }
    });
}

/// @return the milliseconds until the camera holds a pull again.
double AwaitPull(const camera_sim::CCamera& camera) {
    const Clock::time_point started = Clock::now();
    while (Clock::now() < started + kPatience) {
        const auto subscriptions = camera.Subscriptions();
        if (subscriptions.size() == 1 && subscriptions.front().waitingPulls == 1 &&
            subscriptions.front().queued == 0) {
            return Milliseconds(Clock::now() - started);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    throw std::runtime_error("no pull waits");
}

}  // namespace

void MeasureLatency(std::size_t changes) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add({.recordLimit = 1});
    CEar ear(changes);
    std::vector<double> latencies;
    std::vector<double> pauses;
    const StartedLibrary library;
    const unsigned int id = Login(camera.Port());
    ONVIF_CLIENT_AddAlarmStateObserver(id, &ear);
    std::mt19937 random(1);
    std::uniform_int_distribution<int> pauseMicroseconds(0, 20000);
    for (std::size_t i = 0; i < changes; ++i) {
        pauses.push_back(AwaitPull(camera));
        std::this_thread::sleep_for(std::chrono::microseconds(pauseMicroseconds(random)));
        const bool motion = i % 2 == 0;
        const bool state = i % 4 < 2;
        const Clock::time_point triggered = Clock::now();
        Trigger(camera, motion, state);
        const auto told = ear.Await(i + 1);
        if (told.size() != i + 1 || told.back().motion != motion || told.back().state != state) {
            throw std::runtime_error("change " + std::to_string(i) + " was not told, or another");
        }
        latencies.push_back(Milliseconds(told.back().time - triggered));
    }
    ONVIF_CLIENT_DelAlarmStateObserver(id);
    ONVIF_CLIENT_Logout(id);
    std::fprintf(stderr, "%zu changes, all told once\n", changes);
    PrintSpans("change to callback", latencies);
    PrintSpans("callback to the next waiting pull", pauses);
}
