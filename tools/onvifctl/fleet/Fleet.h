/// @file
/// Work at many cameras at once.
#ifndef ONVIFCTL_FLEET_FLEET_H
#define ONVIFCTL_FLEET_FLEET_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "CommandLine.h"

namespace onvifctl {

/// What is done at one camera, on a thread of its own. @p place: among the cameras.
using CameraWork = std::function<ExitCode(const Session&, std::size_t place)>;

/// The cameras that a command line means, with the started library.
class CFleet {
 public:
    using Clock = std::chrono::steady_clock;

    /// What becomes of a session when the work is done. Kept sessions are there for the next work,
    /// which passes over cameras that failed.
    enum class Sessions { kEnd, kKeep };

    explicit CFleet(const CommandLine& line, Sessions sessions = Sessions::kEnd);
    /// Breaks off work that still runs.
    ~CFleet();
    CFleet(const CFleet&) = delete;
    CFleet& operator=(const CFleet&) = delete;

    std::vector<ConnectionOptions> Cameras() const;

    /// Does it at every camera and writes what came out of it in the cameras' order, below a
    /// heading each when there are several, but in JSON. Failures are told and do not stop the
    /// others. Ends the tool, with the names of the cameras that are not done, when the command
    /// line's time is up.
    /// @return the worst of what the cameras had to say.
    ExitCode Do(const CameraWork& work);

    /// Does it at every camera again and again, at most once in @p period seconds, for so many
    /// seconds; without a number for good. A camera that is slow does not delay the others.
    ExitCode Repeat(const CameraWork& work, double period, std::optional<double> seconds);

 private:
    struct Camera {
        ConnectionOptions options;
        std::unique_ptr<Session> session;
        std::string output;
        ExitCode code = ExitCode::kDone;
        bool done = false;
    };

    void Start(const CameraWork& work, std::optional<Clock::duration> period);
    void WorkOneAfterTheOther(const CameraWork& work, std::optional<Clock::duration> period);
    std::optional<std::size_t> TakeDueLocked(std::unique_lock<std::mutex>& lock);
    ExitCode WorkAt(Camera& camera, std::size_t place, const CameraWork& work);
    void AwaitLocked(std::unique_lock<std::mutex>& lock, const Camera& camera);
    void ShowProgressLocked();
    void GiveUpLocked();
    void Write(const Camera& camera) const;
    ExitCode Worst() const;

    const Clock::time_point start_ = Clock::now();
    const std::optional<double> timeout_;
    const Sessions sessions_;
    const bool headings_;
    std::optional<CStartedLibrary> library_;
    std::mutex lock_;  // guards what follows; taken before that of the notices
    std::condition_variable changed_;
    std::vector<Camera> cameras_;
    std::set<std::pair<Clock::time_point, std::size_t>> due_;  // cameras by when they are next
    std::size_t atWork_ = 0;
    std::size_t done_ = 0;
    std::size_t failed_ = 0;
    bool loggedIn_ = false;  // any of them
    bool ended_ = false;     // no more work begins
    std::vector<std::jthread> threads_;
};

}  // namespace onvifctl

#endif
