#include "watch/AlarmWatch.h"

#include <algorithm>
#include <set>
#include <utility>

#include "onvif_client/OnvifClient.h"

namespace onvifctl {

void CAlarmNews::Add(LoginOutcome outcome) {
    const std::lock_guard guard(lock_);
    waiting_.logins.push_back(std::move(outcome));
    WakeOnceLocked();
}

void CAlarmNews::Add(const AlarmChange& change) {
    constexpr std::size_t kMostWaiting = 10000;
    const std::lock_guard guard(lock_);
    if (waiting_.changes.size() == kMostWaiting) {
        waiting_.changes.pop_front();
        ++waiting_.lost;
    }
    waiting_.changes.push_back(change);
    WakeOnceLocked();
}

AlarmNews CAlarmNews::Take() {
    const std::lock_guard guard(lock_);
    woken_ = false;
    return std::exchange(waiting_, {});
}

void CAlarmNews::WakeOnceLocked() {
    if (!woken_) {
        woken_ = true;
        wake_();
    }
}

/// One camera and its session. The library repeats the state of an alarm that lasts; only changes
/// are passed on.
class CAlarmWatch::CCamera : public CONVIFAlarmStateObserver {
 public:
    CCamera(ConnectionOptions options, std::size_t place, CAlarmNews& news)
        : options_(std::move(options)), place_(place), news_(news) {}

    ~CCamera() override {
        if (connection_) {
            ONVIF_CLIENT_DelAlarmStateObserver(connection_->LoginId());
        }
    }

    CCamera(const CCamera&) = delete;
    CCamera& operator=(const CCamera&) = delete;

    void LogIn() {
        try {
            connection_.emplace(options_);
            ONVIF_CLIENT_AddAlarmStateObserver(connection_->LoginId(), this);
            news_.Add({place_, ExitCode::kDone, ""});
        } catch (const CFailure& failure) {
            news_.Add({place_, failure.Code(), failure.what()});
        } catch (const std::exception& error) {
            news_.Add({place_, ExitCode::kLoginFailed, error.what()});
        }
    }

    void OnMotionAlarmState(unsigned int, bool state) override { Note(std::nullopt, state); }

    void OnAlarmInState(unsigned int, unsigned int alarmIn, bool state) override {
        Note(alarmIn, state);
    }

 private:
    void Note(std::optional<unsigned int> input, bool active) {
        const bool changes = active ? active_.insert(input).second : active_.erase(input) > 0;
        if (changes) {
            news_.Add({std::chrono::system_clock::now(), place_, input, active});
        }
    }

    const ConnectionOptions options_;
    const std::size_t place_;
    CAlarmNews& news_;
    // What is active; nothing stands for motion. Only for the callbacks, which are never
    // concurrent.
    std::set<std::optional<unsigned int>> active_;
    std::optional<CConnection> connection_;
};

CAlarmWatch::CAlarmWatch(const ConnectionOptions& options, const std::vector<std::string>& hosts,
                         std::function<void()> wake)
    : news_(std::move(wake)), library_(options) {
    constexpr std::size_t kMostThreads = 16;
    for (const std::string& host : hosts) {
        ConnectionOptions one = options;
        one.host = host;
        cameras_.push_back(std::make_unique<CCamera>(std::move(one), cameras_.size(), news_));
    }
    for (std::size_t i = 0; i < std::min(hosts.size(), kMostThreads); ++i) {
        threads_.emplace_back([this] { LogInOneAfterTheOther(); });
    }
}

CAlarmWatch::~CAlarmWatch() {
    next_ = cameras_.size();
    library_.reset();
}

void CAlarmWatch::LogInOneAfterTheOther() {
    for (std::size_t i = next_++; i < cameras_.size(); i = next_++) {
        cameras_[i]->LogIn();
    }
}

}  // namespace onvifctl
