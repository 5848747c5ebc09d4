// All events of a camera, as the device tells them.
#include <optional>

#include "watch/CameraSession.h"
#include "watch/PullPoint.h"

namespace onvifctl {

namespace {

using Clock = std::chrono::steady_clock;

class CEventSession : public ICameraSession {
 public:
    CEventSession(const ConnectionOptions& options, const WatchedPlace& place,
                  const PullTimes& times)
        : host_(options.host), place_(place), times_(times), connection_(options) {
        Subscribe();
    }

    ~CEventSession() override {
        if (pulls_) {
            pulls_->Unsubscribe();
        }
    }

    CEventSession(const CEventSession&) = delete;
    CEventSession& operator=(const CEventSession&) = delete;

    void Begin() override {}

    void Check(bool) override {
        if (!pulls_) {
            Subscribe();
        }
        if (Clock::now() >= renewed_ + times_.lifetime / 2) {
            pulls_->Renew();
            renewed_ = Clock::now();
        }
        const auto began = Clock::now();
        std::vector<DeviceEvent> events;
        try {
            events = pulls_->Pull(times_.patience);
        } catch (const CFailure&) {
            pulls_.reset();
            throw;
        }
        // A device that does not wait for events is not asked without a pause.
        constexpr std::chrono::milliseconds kShortestWait(250);
        const bool waited = !events.empty() || Clock::now() - began >= kShortestWait;
        pause_ = waited ? std::chrono::milliseconds(0) : kShortestWait;
        for (DeviceEvent& event : events) {
            event.time = std::chrono::system_clock::now();
            event.camera = place_.camera;
            place_.news.Add(std::move(event));
        }
    }

    std::chrono::milliseconds Pause() const override { return pause_; }

 private:
    void Subscribe() {
        pulls_.emplace(connection_, host_, times_.lifetime);
        renewed_ = Clock::now();
    }

    const std::string host_;
    const WatchedPlace place_;
    const PullTimes times_;
    const CConnection connection_;
    std::optional<CPullPoint> pulls_;  // nothing: to be made anew
    Clock::time_point renewed_;
    std::chrono::milliseconds pause_{0};
};

}  // namespace

std::unique_ptr<ICameraSession> LogInForEvents(const ConnectionOptions& options,
                                               const WatchedPlace& place, const PullTimes& times) {
    return std::make_unique<CEventSession>(options, place, times);
}

}  // namespace onvifctl
