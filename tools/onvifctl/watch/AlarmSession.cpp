// Motion and alarm inputs of a camera.
#include <map>
#include <mutex>
#include <optional>

#include "onvif_client/OnvifClient.h"
#include "watch/CameraSession.h"
#include "watch/PullPoint.h"

namespace onvifctl {

namespace {

using Time = std::chrono::system_clock::time_point;

/// Passes changes on. The library repeats the state of an alarm that lasts.
class CChanges : public CONVIFAlarmStateObserver {
 public:
    explicit CChanges(const WatchedPlace& place) : place_(place) {}

    void OnMotionAlarmState(unsigned int, bool state) override { Note(std::nullopt, state); }

    void OnAlarmInState(unsigned int, unsigned int alarmIn, bool state) override {
        Note(alarmIn, state);
    }

    /// Tells what is active already, and from now on each change.
    void Begin() {
        const std::lock_guard guard(lock_);
        tells_ = true;
        for (const auto& [input, since] : active_) {
            Tell(since, input, true);
        }
    }

 private:
    using Input = std::optional<unsigned int>;  // nothing stands for motion

    void Note(Input input, bool active) {
        const Time now = std::chrono::system_clock::now();
        const std::lock_guard guard(lock_);
        const bool changes = active ? active_.emplace(input, now).second : active_.erase(input) > 0;
        if (changes && tells_) {
            Tell(now, input, active);
        }
    }

    void Tell(Time time, Input input, bool active) const {
        place_.news.Add(AlarmChange{{time, place_.camera}, input, active});
    }

    const WatchedPlace place_;
    std::mutex lock_;  // guards what follows; before that of the news
    std::map<Input, Time> active_;
    bool tells_ = false;
};

class CAlarmSession : public ICameraSession {
 public:
    CAlarmSession(const ConnectionOptions& options, const WatchedPlace& place,
                  std::chrono::milliseconds pause, bool doubtful)
        : host_(options.host), pause_(pause), connection_(options), changes_(place) {
        if (doubtful) {
            TrySubscription();
        }
        ONVIF_CLIENT_AddAlarmStateObserver(connection_.LoginId(), &changes_);
        sign_ = SignOfLife();
    }

    ~CAlarmSession() override { ONVIF_CLIENT_DelAlarmStateObserver(connection_.LoginId()); }

    CAlarmSession(const CAlarmSession&) = delete;
    CAlarmSession& operator=(const CAlarmSession&) = delete;

    void Begin() override { changes_.Begin(); }

    void Check(bool suspected) override {
        suspected_ = suspected_ || suspected;
        if (sign_ != nullptr && !Answers(connection_, sign_)) {
            throw CFailure(ExitCode::kUnreachable, host_ + " does not answer any more");
        }
        if (suspected_) {
            TrySubscription();
            throw CNoSubscription(ExitCode::kRefused,
                                  host_ + " gave no subscription to its events");
        }
    }

    std::chrono::milliseconds Pause() const override { return pause_; }

 private:
    /// A cheap command that this device answers; null when there is none.
    const char* SignOfLife() const {
        for (const char* command : {"dateAndTime", "devInfo"}) {
            if (Answers(connection_, command)) {
                return command;
            }
        }
        return nullptr;
    }

    void TrySubscription() const {
        constexpr std::chrono::seconds kShort(10);
        CPullPoint(connection_, host_, kShort).Unsubscribe();
    }

    const std::string host_;
    const std::chrono::milliseconds pause_;
    const CConnection connection_;
    CChanges changes_;
    const char* sign_ = nullptr;
    bool suspected_ = false;
};

}  // namespace

std::unique_ptr<ICameraSession> LogInForAlarms(const ConnectionOptions& options,
                                               const WatchedPlace& place,
                                               std::chrono::milliseconds pause, bool doubtful) {
    return std::make_unique<CAlarmSession>(options, place, pause, doubtful);
}

}  // namespace onvifctl
