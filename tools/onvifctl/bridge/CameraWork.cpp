#include "bridge/CameraWork.h"

#include <algorithm>
#include <utility>

#include "ExitCode.h"
#include "bridge/CommandAtCamera.h"

namespace onvifctl {

namespace {

constexpr std::size_t kMostThreads = 8;
constexpr std::size_t kMostOfCamera = 8;
constexpr std::size_t kMostWaiting = 256;
/// What nobody has taken: a picture each at worst.
constexpr std::size_t kMostDone = 16;

}  // namespace

struct CCameraWork::Place {
    ConnectionOptions options;
    std::deque<CameraJob> jobs{};
    bool underWay = false;
    std::unique_ptr<CCommandSession> session{};  // of whose thread has it under way
};

CCameraWork::CCameraWork(const std::vector<ConnectionOptions>& cameras, std::function<void()> wake)
    : wake_(std::move(wake)) {
    for (const ConnectionOptions& camera : cameras) {
        places_.push_back(std::make_unique<Place>(Place{camera}));
    }
    for (std::size_t i = 0; i < std::min(cameras.size(), kMostThreads); ++i) {
        threads_.emplace_back([this] { Work(); });
    }
}

CCameraWork::~CCameraWork() {
    Stop();
    threads_.clear();
}

void CCameraWork::Stop() {
    const std::lock_guard guard(lock_);
    stopped_ = true;
    changed_.notify_all();
}

bool CCameraWork::Enter(CameraJob job) {
    const std::lock_guard guard(lock_);
    Place& place = *places_[job.camera];
    if (job.command) {
        if (place.jobs.size() >= kMostOfCamera || waiting_ >= kMostWaiting) {
            return false;
        }
        ++waiting_;
    }
    if (place.jobs.empty() && !place.underWay) {
        due_.push_back(job.camera);
        changed_.notify_one();
    }
    place.jobs.push_back(std::move(job));
    return true;
}

std::vector<CameraJobDone> CCameraWork::Take() {
    const std::lock_guard guard(lock_);
    changed_.notify_all();
    return std::exchange(done_, {});
}

void CCameraWork::Work() {
    std::unique_lock lock(lock_);
    while (true) {
        changed_.wait(lock,
                      [this] { return stopped_ || (!due_.empty() && done_.size() < kMostDone); });
        if (stopped_) {
            return;
        }
        const std::size_t camera = due_.front();
        due_.pop_front();
        Place& place = *places_[camera];
        CameraJob job = std::move(place.jobs.front());
        place.jobs.pop_front();
        waiting_ -= job.command ? 1 : 0;
        place.underWay = true;
        lock.unlock();
        CameraJobDone done = Do(place, std::move(job));
        lock.lock();
        place.underWay = false;
        if (!place.jobs.empty()) {
            due_.push_back(camera);
            changed_.notify_one();
        }
        done_.push_back(std::move(done));
        if (done_.size() == 1) {
            wake_();
        }
    }
}

CameraJobDone CCameraWork::Do(Place& place, CameraJob job) const {
    CameraJobDone done;
    try {
        if (place.session == nullptr) {
            place.session = std::make_unique<CCommandSession>(place.options);
        }
        if (job.command) {
            done.picture = place.session->Do(*job.command, job.payload);
        } else {
            done.inventory = place.session->TakeInventory();
        }
    } catch (const CFailure& failure) {
        done.error = failure.what();
        if (failure.Code() != ExitCode::kUsage) {
            place.session.reset();  // the next one begins anew
        }
    } catch (const std::exception& error) {
        done.error = error.what();
        place.session.reset();
    }
    done.job = std::move(job);
    return done;
}

}  // namespace onvifctl
