#include "watch/AlarmWatch.h"

#include <algorithm>

#include "system/HostName.h"

namespace onvifctl {

namespace {

constexpr std::size_t kMostThreads = 16;
/// A login at a device without power takes many seconds.
constexpr std::size_t kMostLogins = 12;

/// Few cameras are asked often, many less so.
std::chrono::milliseconds PauseBetweenChecks(std::size_t cameras) {
    constexpr std::chrono::milliseconds kForEach(100);
    constexpr std::chrono::milliseconds kShortest(2000);
    constexpr std::chrono::milliseconds kLongest(20000);
    const std::size_t most = kLongest / kForEach;
    return std::max(kForEach * static_cast<int>(std::min(cameras, most)), kShortest);
}

/// While each camera has a worker of its own, it waits for events as long as an exchange may take.
PullTimes TimesOfPulls(std::size_t cameras) {
    using std::chrono::seconds;
    return cameras <= kMostThreads ? PullTimes{seconds(5), seconds(60)}
                                   : PullTimes{seconds(1), seconds(600)};
}

/// "IP:PORT", as the library's log names the device; empty when its name is not known.
std::string AddressInLog(const std::string& host) try {
    const std::string full = FullAddress(host);
    const std::size_t colon = full.rfind(':');
    const auto ip = DottedAddressOf(full.substr(0, colon));
    return ip ? *ip + full.substr(colon) : "";
} catch (const CFailure&) {
    return "";
}

}  // namespace

struct CAlarmWatch::Place {
    Place(CWatchedCamera::MakeSession makeSession, const WatchedPlace& place, std::string at)
        : camera(std::move(makeSession), place), host(std::move(at)) {}

    CWatchedCamera camera;
    const std::string host;
    std::string address{};  // in the log
    bool underWay = false;  // a worker has it
    bool urgent = false;    // it is to be looked after again at once
    Clock::time_point due{};
};

CAlarmWatch::CAlarmWatch(const std::vector<ConnectionOptions>& cameras, WatchFor what,
                         std::function<void()> wake)
    : wake_(std::move(wake)), news_(wake_), events_(wake_) {
    if (what != WatchFor::kEvents) {
        log_.emplace(cameras.front().verbose);
    }
    library_.emplace(cameras.front());
    const auto pause = PauseBetweenChecks(cameras.size());
    const bool untold = log_ && !log_->IsFollowed();
    for (std::size_t i = 0; log_ && i < cameras.size(); ++i) {
        const ConnectionOptions& options = cameras[i];
        const WatchedPlace place = {i, news_};
        AddPlace(options.host, place, [=](bool doubtful) {
            return LogInForAlarms(options, place, pause, doubtful || untold);
        });
    }
    const bool both = what == WatchFor::kBoth;
    const PullTimes times = TimesOfPulls(cameras.size() * (both ? 2 : 1));
    for (std::size_t i = 0; what != WatchFor::kAlarms && i < cameras.size(); ++i) {
        const ConnectionOptions& options = cameras[i];
        const WatchedPlace place = {i, both ? events_ : news_};
        AddPlace(options.host, place, [=](bool) { return LogInForEvents(options, place, times); });
    }
    for (std::size_t i = 0; i < std::min(places_.size(), kMostThreads); ++i) {
        threads_.emplace_back([this] { Work(); });
    }
    if (log_ && log_->IsFollowed()) {
        threads_.emplace_back([this] { FollowLog(); });
    }
}

void CAlarmWatch::AddPlace(const std::string& host, const WatchedPlace& place,
                           CWatchedCamera::MakeSession makeSession) {
    places_.push_back(std::make_unique<Place>(std::move(makeSession), place, host));
    EnterLocked(places_.size() - 1, Clock::now());
}

CAlarmWatch::~CAlarmWatch() {
    {
        const std::lock_guard guard(lock_);
        stopped_ = true;
    }
    changed_.notify_all();
    stopping_.notify_all();
    library_.reset();
    threads_.clear();
}

bool CAlarmWatch::AllGivenUp() const {
    const std::lock_guard guard(lock_);
    return givenUp_ == places_.size();
}

ExitCode CAlarmWatch::Worst() const {
    ExitCode worst = ExitCode::kDone;
    for (const auto& place : places_) {
        worst = std::max(worst, place->camera.LastWord());
    }
    return worst;
}

void CAlarmWatch::Work() {
    std::unique_lock lock(lock_);
    while (!stopped_) {
        Clock::time_point next = Clock::now() + std::chrono::hours(1);
        if (const auto camera = TakeDueLocked(next)) {
            changed_.notify_one();  // somebody else is to wait for what is due after it
            LookAfter(*camera, lock);
        } else {
            changed_.wait_until(lock, next);
        }
    }
}

std::optional<std::size_t> CAlarmWatch::TakeDueLocked(Clock::time_point& next) {
    Agenda* earliest = nullptr;
    for (Agenda* agenda : {&checks_, &logins_}) {
        const bool full = agenda == &logins_ && loginsUnderWay_ == kMostLogins;
        if (!full && !agenda->empty() && agenda->begin()->first < next) {
            next = agenda->begin()->first;
            earliest = agenda;
        }
    }
    if (earliest == nullptr || next > Clock::now()) {
        return std::nullopt;
    }
    return earliest->extract(earliest->begin()).value().second;
}

void CAlarmWatch::LookAfter(std::size_t camera, std::unique_lock<std::mutex>& lock) {
    Place& place = *places_[camera];
    place.underWay = true;
    const bool logsIn = !place.camera.HasSession();
    loginsUnderWay_ += logsIn ? 1 : 0;
    lock.unlock();
    if (logsIn && log_) {
        // Known before the library can tell of it.
        std::string address = AddressInLog(place.host);
        const std::lock_guard guard(lock_);
        place.address = std::move(address);
    }
    const auto pause = place.camera.LookAfter();
    lock.lock();
    loginsUnderWay_ -= logsIn ? 1 : 0;
    place.underWay = false;
    if (pause) {
        const bool atOnce = std::exchange(place.urgent, false) && place.camera.HasSession();
        EnterLocked(camera, Clock::now() + (atOnce ? std::chrono::milliseconds(0) : *pause));
    } else {
        ++givenUp_;
        wake_();  // the news of it may have been taken already
    }
    changed_.notify_one();
}

void CAlarmWatch::EnterLocked(std::size_t camera, Clock::time_point due) {
    Place& place = *places_[camera];
    place.due = due;
    (place.camera.HasSession() ? checks_ : logins_).emplace(due, camera);
}

void CAlarmWatch::FollowLog() {
    constexpr std::chrono::milliseconds kBetween(250);
    std::unique_lock lock(lock_);
    while (!stopping_.wait_for(lock, kBetween, [this] { return stopped_; })) {
        lock.unlock();
        const auto losses = log_->TakeLosses();
        lock.lock();
        for (const std::string& address : losses) {
            SuspectLocked(address);
        }
    }
}

void CAlarmWatch::SuspectLocked(const std::string& address) {
    for (std::size_t i = 0; i < places_.size(); ++i) {
        Place& place = *places_[i];
        if (place.address != address) {
            continue;
        }
        place.camera.Suspect();
        place.urgent = place.underWay;
        if (!place.underWay && checks_.erase({place.due, i}) > 0) {
            EnterLocked(i, Clock::now());
            changed_.notify_one();
        }
    }
}

}  // namespace onvifctl
