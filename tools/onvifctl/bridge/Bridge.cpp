// The bridge and its broker: connections, what is sent, the end.
#include "bridge/Bridge.h"

#include <algorithm>
#include <utility>

#include "output/Notices.h"
#include "watch/WatchDisplay.h"
#include "watch/WatchTexts.h"

namespace onvifctl {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr const char* kOffline = "offline";

BrokerOptions WithWill(BrokerOptions options, const std::string& topic) {
    options.lastWill = {topic, kOffline, true, seconds(0), "", ""};
    return options;
}

}  // namespace

CBridge::CBridge(const BridgeOptions& options, const std::vector<ConnectionOptions>& cameras,
                 const std::function<void()>& wake)
    : options_(options),
      topics_(options.prefix, options.number),
      availability_(topics_.OfBridge("availability")),
      marker_(topics_.OfBridge("marker")) {
    for (const ConnectionOptions& each : cameras) {
        places_.emplace(LevelOf(each.name), cameras_.size());
        Camera& camera = cameras_.emplace_back();
        camera.name = each.name;
        EndStates(camera);
        Set(camera, "bridge", std::to_string(options.number));
    }
    states_.Set(availability_, kOffline, seconds(0));
    // The library first: it sets the environment, which other threads read.
    if (!cameras.empty()) {
        watch_.emplace(cameras, options.raw ? WatchFor::kBoth : WatchFor::kAlarms, wake);
        work_ = std::make_unique<CCameraWork>(cameras, wake);
    }
    broker_ = MakeBroker(WithWill(options.broker, availability_), wake);
}

CBridge::~CBridge() {
    if (work_) {
        work_->Stop();
    }
}

CBridge::Clock::time_point CBridge::Advance() {
    TakeBrokerNews();
    TakeCameraNews();
    TakeWorkDone();
    const auto now = Clock::now();
    if (phase_ == Phase::kReconciles && now >= reconcilesUntil_) {
        FinishReconciling();
    }
    Pump();
    if (phase_ == Phase::kReconciles) {
        return reconcilesUntil_;
    }
    return states_.NextRefresh().value_or(now + std::chrono::hours(1));
}

void CBridge::TakeBrokerNews() {
    using Kind = BrokerNews::Item::Kind;
    const std::string name = options_.broker.address.Text();
    const BrokerNews news = broker_->Take();
    for (const BrokerNews::Item& item : news.items) {
        switch (item.kind) {
            case Kind::kConnected:
                Tell("connected to the broker " + name);
                brokerTrouble_.clear();
                Connected();
                break;
            case Kind::kLost:
                phase_ = Phase::kAway;
                states_.Hold();
                if (!ends_ && std::exchange(brokerTrouble_, item.text) != item.text) {
                    Tell("no connection to the broker " + name + ": " + item.text);
                }
                break;
            case Kind::kRemark:
                Tell(item.text);
                break;
            case Kind::kDelivery:
                TakeDelivery(item.delivery);
                break;
        }
    }
    if (news.dropped > 0) {
        Tell(std::to_string(news.dropped) + " messages of the broker came too fast");
    }
}

void CBridge::Connected() {
    for (const std::string& filter : topics_.CommandFilters()) {
        broker_->Subscribe(filter, Retained::kNever);
    }
    if (reconciled_) {
        FinishReconciling();
        return;
    }
    constexpr seconds kPatience(10);
    phase_ = Phase::kReconciles;
    reconcilesUntil_ = Clock::now() + kPatience;
    for (const std::string& filter : topics_.StateFilters()) {
        broker_->Subscribe(filter, Retained::kSend);
    }
    // It comes back behind all that was retained.
    broker_->Subscribe(marker_, Retained::kSend);
    broker_->Publish({marker_, "end", false, seconds(0), "", ""});
}

void CBridge::FinishReconciling() {
    if (!std::exchange(reconciled_, true)) {
        for (const std::string& filter : topics_.StateFilters()) {
            broker_->Unsubscribe(filter);
        }
        broker_->Unsubscribe(marker_);
    }
    phase_ = Phase::kThere;
    if (!ends_) {
        states_.Set(availability_, "online", options_.expiry);
    }
    states_.SendAll(availability_);
}

void CBridge::TakeDelivery(const Delivery& delivery) {
    if (phase_ == Phase::kReconciles && delivery.topic == marker_) {
        FinishReconciling();
        return;
    }
    const auto parts = topics_.PartsOf(delivery.topic);
    const auto place = parts ? places_.find(parts->level) : places_.end();
    if (place == places_.end() || ends_) {
        return;  // of another bridge
    }
    const auto command = CTopics::CommandOf(parts->rest);
    if (command && !delivery.retained) {
        Order(*command, place->second, delivery);
    } else if (phase_ == Phase::kReconciles && IsNumberedState(parts->rest) &&
               !states_.Has(delivery.topic)) {
        states_.Set(delivery.topic, "", options_.expiry);
    }
}

void CBridge::Reply(Publication answer) {
    constexpr std::size_t kMostBytes = std::size_t{16} << 20U;  // pictures above all
    if (phase_ != Phase::kThere) {
        return;  // nobody waits for it when the broker is back
    }
    answerBytes_ += sizeof answer + answer.payload.size();
    answers_.push_back(std::move(answer));
    while (answerBytes_ > kMostBytes) {
        answerBytes_ -= sizeof answer + answers_.front().payload.size();
        answers_.pop_front();
    }
}

void CBridge::Pump() {
    if (phase_ != Phase::kThere) {
        answers_.clear();
        answerBytes_ = 0;
        return;
    }
    while (broker_->Takes()) {
        if (auto state = states_.Next(Clock::now())) {
            broker_->Publish(std::move(*state));
        } else if (!answers_.empty()) {
            answerBytes_ -= sizeof answers_.front() + answers_.front().payload.size();
            broker_->Publish(std::move(answers_.front()));
            answers_.pop_front();
        } else if (auto event = NextEvent()) {
            broker_->Publish(std::move(*event));
        } else {
            return;
        }
    }
}

std::optional<Publication> CBridge::NextEvent() {
    if (events_.empty() && watch_ && options_.raw) {
        WatchNews news = watch_->TakeEvents();
        TellOfLost(news);
        events_ = std::move(news.items);
    }
    while (!events_.empty()) {
        const News news = std::move(events_.front());
        events_.pop_front();
        if (std::holds_alternative<DeviceEvent>(news)) {
            const std::string& name = cameras_[MomentOf(news).camera].name;
            return Publication{topics_.OfCamera(name, "event"),
                               JsonOf(news, name),
                               false,
                               seconds(0),
                               "application/json",
                               ""};
        }
    }
    return std::nullopt;
}

bool CBridge::End(const std::function<void(milliseconds)>& pause) {
    constexpr seconds kPatience(5);
    const auto end = Clock::now() + kPatience;
    ends_ = true;
    states_.Set(availability_, kOffline, seconds(0));
    for (Camera& camera : cameras_) {
        EndStates(camera);
    }
    bool done = false;
    while (phase_ == Phase::kThere && !done && Clock::now() < end) {
        TakeBrokerNews();
        while (broker_->Takes()) {
            auto state = states_.Next(Clock::now());
            if (!state) {
                break;
            }
            broker_->Publish(std::move(*state));
        }
        done = !states_.IsWaiting() && broker_->IsIdle();
        if (!done) {
            constexpr milliseconds kShort(20);
            pause(kShort);
        }
    }
    return broker_->End(done, seconds(2));
}

}  // namespace onvifctl
