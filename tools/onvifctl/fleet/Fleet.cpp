#include "fleet/Fleet.h"

#include <algorithm>
#include <sstream>

#include "output/OutputFile.h"

namespace onvifctl {

namespace {

constexpr std::size_t kMostThreads = 16;
constexpr auto kQuietFor = std::chrono::seconds(1);
constexpr auto kLastWork = std::chrono::seconds(2);
constexpr auto kBlink = std::chrono::milliseconds(200);

CFleet::Clock::duration Seconds(double seconds) {
    return std::chrono::duration_cast<CFleet::Clock::duration>(
        std::chrono::duration<double>(seconds));
}

}  // namespace

CFleet::CFleet(const CommandLine& line, Sessions sessions)
    : timeout_(line.timeout), sessions_(sessions), headings_(line.format != Format::kJson) {
    for (ConnectionOptions& target : Targets(line.hosts, line.connection)) {
        cameras_.emplace_back().options = std::move(target);
    }
    library_.emplace(cameras_.front().options);
}

CFleet::~CFleet() {
    {
        const std::lock_guard guard(lock_);
        ended_ = true;
    }
    changed_.notify_all();
    library_.reset();
    threads_.clear();
}

std::vector<ConnectionOptions> CFleet::Cameras() const {
    std::vector<ConnectionOptions> all;
    for (const Camera& camera : cameras_) {
        all.push_back(camera.options);
    }
    return all;
}

ExitCode CFleet::Do(const CameraWork& work) {
    Start(work, std::nullopt);
    for (Camera& camera : cameras_) {
        std::unique_lock lock(lock_);
        AwaitLocked(lock, camera);
        lock.unlock();
        Write(camera);
        camera.output.clear();
    }
    ShowStatus("");
    threads_.clear();
    return Worst();
}

ExitCode CFleet::Repeat(const CameraWork& work, double period, std::optional<double> seconds) {
    Start(work, Seconds(period));
    std::unique_lock lock(lock_);
    if (seconds) {
        changed_.wait_until(lock, start_ + Seconds(*seconds), [] { return false; });
    } else {
        changed_.wait(lock, [] { return false; });  // a signal ends the tool
    }
    ended_ = true;
    changed_.notify_all();
    changed_.wait_for(lock, kLastWork, [this] { return atWork_ == 0; });
    lock.unlock();
    library_.reset();  // breaks off what is left
    threads_.clear();
    return Worst();
}

void CFleet::Start(const CameraWork& work, std::optional<Clock::duration> period) {
    done_ = failed_ = 0;
    const auto now = Clock::now();
    for (std::size_t i = 0; i < cameras_.size(); ++i) {
        cameras_[i].done = cameras_[i].code != ExitCode::kDone && !cameras_[i].session;
        if (cameras_[i].done) {
            ++done_;
            ++failed_;
        } else {
            due_.emplace(now, i);
        }
    }
    const std::size_t threads = std::min(due_.size(), kMostThreads);
    for (std::size_t i = 0; i < threads; ++i) {
        threads_.emplace_back([this, &work, period] { WorkOneAfterTheOther(work, period); });
    }
}

std::optional<std::size_t> CFleet::TakeDueLocked(std::unique_lock<std::mutex>& lock) {
    while (!ended_ && (!due_.empty() || atWork_ > 0)) {
        if (due_.empty()) {
            changed_.wait(lock);
        } else if (due_.begin()->first > Clock::now()) {
            changed_.wait_until(lock, Clock::time_point(due_.begin()->first));
        } else {
            const std::size_t place = due_.begin()->second;
            due_.erase(due_.begin());
            return place;
        }
    }
    return std::nullopt;
}

void CFleet::WorkOneAfterTheOther(const CameraWork& work, std::optional<Clock::duration> period) {
    std::unique_lock lock(lock_);
    while (const auto place = TakeDueLocked(lock)) {
        Camera& camera = cameras_[*place];
        const auto begun = Clock::now();
        ++atWork_;
        lock.unlock();
        const ExitCode code = WorkAt(camera, *place, work);
        lock.lock();
        --atWork_;
        camera.code = Worse(camera.code, code);
        if (period) {
            due_.emplace(begun + *period, *place);
        } else {
            camera.done = true;
            ++done_;
            failed_ += code == ExitCode::kDone ? 0 : 1;
        }
        changed_.notify_all();
    }
}

ExitCode CFleet::WorkAt(Camera& camera, std::size_t place, const CameraWork& work) {
    const CTellsOf tells(cameras_.size() > 1 ? camera.options.name : "");
    ExitCode code = ExitCode::kDone;
    try {
        if (!camera.session) {
            camera.session = std::make_unique<Session>(camera.options, camera.output);
        }
        {
            const std::lock_guard guard(lock_);
            loggedIn_ = true;
        }
        code = work(*camera.session, place);
    } catch (const std::exception& error) {
        const auto* failure = dynamic_cast<const CFailure*>(&error);
        code = failure == nullptr ? ExitCode::kLoginFailed : failure->Code();
        const std::lock_guard guard(lock_);
        if (!ended_) {
            Tell(error.what());
        }
        camera.session.reset();
    }
    if (sessions_ == Sessions::kEnd) {
        camera.session.reset();
    }
    return code;
}

/// Waits until the camera is done, with a word about what goes on when that takes long.
void CFleet::AwaitLocked(std::unique_lock<std::mutex>& lock, const Camera& camera) {
    const auto quietUntil = start_ + kQuietFor;
    while (!camera.done) {
        const auto now = Clock::now();
        if (timeout_ && now >= start_ + Seconds(*timeout_)) {
            GiveUpLocked();
        }
        if (now >= quietUntil) {
            ShowProgressLocked();
        }
        auto wake = std::max(now + kBlink, quietUntil);
        if (timeout_) {
            wake = std::min(wake, start_ + Seconds(*timeout_));
        }
        changed_.wait_until(lock, wake);
    }
}

void CFleet::ShowProgressLocked() {
    if (cameras_.size() == 1) {
        ShowStatus(loggedIn_ ? "waiting..." : "logging in...");
    } else {
        ShowStatus(std::to_string(done_) + " of " + std::to_string(cameras_.size()) + ", " +
                   std::to_string(failed_) + " failed");
    }
}

/// Not even a name server or a command is waited for.
void CFleet::GiveUpLocked() {
    ended_ = true;
    ShowStatus("");
    const auto next = std::find_if(cameras_.begin(), cameras_.end(),
                                   [](const Camera& camera) { return !camera.done; });
    std::for_each(next, cameras_.end(), [this](const Camera& camera) {
        if (camera.done) {
            Write(camera);
        }
    });
    std::ostringstream seconds;
    seconds << *timeout_;
    for (const Camera& camera : cameras_) {
        if (!camera.done) {
            Tell(camera.options.name + " has not answered within " + seconds.str() + " seconds");
        }
    }
    EndAtOnce(ExitCode::kUnreachable);
}

void CFleet::Write(const Camera& camera) const {
    if (camera.output.empty()) {
        return;
    }
    ShowStatus("");
    const CDataOutput output;
    if (headings_ && cameras_.size() > 1) {
        output.Write("== " + camera.options.name + "\n");
    }
    output.Write(camera.output);
}

ExitCode CFleet::Worst() const {
    ExitCode worst = ExitCode::kDone;
    for (const Camera& camera : cameras_) {
        worst = Worse(worst, camera.code);
    }
    return worst;
}

}  // namespace onvifctl
