/// @file
/// What a bridge does at its cameras beside listening to them: commands, and the look at what
/// inputs and relays a camera has. A few threads do it, a camera's jobs one after the other; the
/// queues are short, so that a flood of commands is refused and not remembered.
#ifndef ONVIFCTL_BRIDGE_CAMERAWORK_H
#define ONVIFCTL_BRIDGE_CAMERAWORK_H

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Connection.h"
#include "bridge/Topics.h"

namespace onvifctl {

/// What a camera lists.
struct Inventory {
    unsigned int inputs = 0;
    unsigned int relays = 0;
};

struct CameraJob {
    std::size_t camera = 0;
    std::optional<BridgeCommand> command;  // nothing: take the inventory
    std::string payload;
    std::string responseTopic;
    std::string correlation;
};

struct CameraJobDone {
    CameraJob job;
    std::string error;  // empty: it succeeded
    std::string picture;
    Inventory inventory;
};

class CCameraWork {
 public:
    /// @p wake is called, on any thread, when there is something to take.
    CCameraWork(const std::vector<ConnectionOptions>& cameras, std::function<void()> wake);
    /// Waits for what is under way: the library must have been stopped, which breaks it off.
    ~CCameraWork();
    CCameraWork(const CCameraWork&) = delete;
    CCameraWork& operator=(const CCameraWork&) = delete;

    /// False when too many jobs are waiting, of this camera or at all. The inventory always fits.
    bool Enter(CameraJob job);
    std::vector<CameraJobDone> Take();
    /// Nothing more is begun.
    void Stop();

 private:
    struct Place;

    void Work();
    CameraJobDone Do(Place& place, CameraJob job) const;

    const std::function<void()> wake_;
    std::mutex lock_;  // guards what follows
    std::condition_variable changed_;
    std::vector<std::unique_ptr<Place>> places_;
    std::deque<std::size_t> due_;  // cameras with jobs that nobody does
    std::size_t waiting_ = 0;      // commands
    std::vector<CameraJobDone> done_;
    bool stopped_ = false;
    std::vector<std::jthread> threads_;
};

}  // namespace onvifctl

#endif
