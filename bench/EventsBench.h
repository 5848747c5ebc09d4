/// @file
/// What the measurements of the alarm side have in common. Their figures go to standard error:
/// standard output gets the library's traces.
#ifndef ONVIF_CLIENT_BENCH_EVENTSBENCH_H
#define ONVIF_CLIENT_BENCH_EVENTSBENCH_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

#include "onvif_client/OnvifClient.h"

/// One camera, one change after the other, each at a random moment while a pull waits. A change
/// that is not told within ten seconds, or told as another, is thrown as std::runtime_error.
void MeasureLatency(std::size_t changes);

struct Load {
    std::size_t cameras = 200;
    std::size_t changes = 60;  // of each camera
    double rate = 0;           // changes a second of all cameras together
    std::size_t threads = 1;   // that log in and add observers
    std::size_t idle = 10;     // seconds in which nothing happens, before the changes
    bool keepAlive = false;    // the cameras keep connections open
    std::string figures;       // a file that gets them as a line of JSON; empty: none
};

/// Many cameras in other processes (forked: nothing may have started a thread yet). The motion of
/// each is off when it is subscribed to, changes an even number of times, and then stays off.
/// Changes begin when all pulls wait; what is told counts until two seconds after the last change
/// was told, or ten seconds after none came any more.
/// @return true when every change of every camera was told once and in order.
bool MeasureLoad(const Load& load);

/// As MeasureLoad, beside devices that have lost their power: they were logged in and observed, and
/// then nothing answers attempts to connect to them.
/// @return true when no change took more than 250 ms to its observer, none was lost or told twice.
bool MeasureDead(std::size_t cameras, std::size_t dead, std::size_t changes);

double Milliseconds(std::chrono::steady_clock::duration span);

void PrintSpans(const char* what, std::vector<double> milliseconds);

/// Throws std::runtime_error when it fails.
unsigned int Login(unsigned short port);

/// The library, started while it lives.
struct StartedLibrary {
    StartedLibrary() { ONVIF_CLIENT_Initial(); }
    ~StartedLibrary() { ONVIF_CLIENT_Quit(); }
    StartedLibrary(const StartedLibrary&) = delete;
    StartedLibrary& operator=(const StartedLibrary&) = delete;
};

/// Keeps when it was told what.
class CEar final : public CONVIFAlarmStateObserver {
 public:
    struct Told {
        bool motion;
        bool state;
        std::chrono::steady_clock::time_point time;
    };

    /// So that nothing grows while it is measured.
    explicit CEar(std::size_t expected) : told_(expected) { told_.clear(); }

    void OnMotionAlarmState(unsigned int, bool state) override { Keep(true, state); }
    void OnAlarmInState(unsigned int, unsigned int, bool state) override { Keep(false, state); }

    /// Waits until it has been told that often, ten seconds at most. @return all that it was told.
    std::vector<Told> Await(std::size_t count) {
        std::unique_lock guard(lock_);
        heard_.wait_for(guard, std::chrono::seconds(10),
                        [this, count] { return told_.size() >= count; });
        return told_;
    }

 private:
    void Keep(bool motion, bool state) {
        const std::lock_guard guard(lock_);
        told_.push_back({motion, state, std::chrono::steady_clock::now()});
        heard_.notify_all();
    }

    std::mutex lock_;  // guards told_; leaf
    std::condition_variable heard_;
    std::vector<Told> told_;
};

#endif
