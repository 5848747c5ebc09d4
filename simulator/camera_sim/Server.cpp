// The server of all cameras: one thread that listens for each.
#include <algorithm>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>
// Asio uses std::exchange without including it.
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

#include "camera_sim/CameraCore.h"
#include "camera_sim/CameraSim.h"
#include "camera_sim/Connections.h"
#include "camera_sim/Models.h"
#include "camera_sim/ProbePorts.h"
#include "camera_sim/events/NotifyPost.h"

namespace camera_sim {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

constexpr std::chrono::milliseconds kAcceptPause{100};

/// Takes a port on the loopback interface; 0: the system chooses one.
tcp::acceptor Listen(asio::io_context& io, std::uint16_t port, error_code& error) {
    tcp::acceptor acceptor(io);
    const tcp::endpoint endpoint(asio::ip::address_v4::loopback(), port);
    acceptor.open(endpoint.protocol(), error);
    if (!error) {
        acceptor.set_option(tcp::acceptor::reuse_address(true), error);
    }
    if (!error) {
        acceptor.bind(endpoint, error);
    }
    if (!error) {
        acceptor.listen(tcp::acceptor::max_listen_connections, error);
    }
    return acceptor;
}

/// Accepts a camera's connections. Kept alive by its pending accept.
class CListener : public std::enable_shared_from_this<CListener> {
 public:
    CListener(tcp::acceptor acceptor, CCameraCore& core)
        : acceptor_(std::move(acceptor)), pause_(acceptor_.get_executor()), connections_(core) {}

    void DropConnections() { connections_.Drop(); }

    void Accept() {
        acceptor_.async_accept([self = shared_from_this()](error_code error, tcp::socket socket) {
            if (!error) {
                self->connections_.Serve(std::move(socket));
                return self->Accept();
            }
            // Most likely too many open files: others will close.
            self->pause_.expires_after(kAcceptPause);
            self->pause_.async_wait([self](error_code) { self->Accept(); });
        });
    }

 private:
    tcp::acceptor acceptor_;
    asio::steady_timer pause_;
    CConnections connections_;
};

/// Changes something of a camera at regular intervals. Kept alive by its timer.
class CSchedule : public std::enable_shared_from_this<CSchedule> {
 public:
    CSchedule(asio::io_context& io, CCameraCore& core, std::chrono::milliseconds period,
              void (*change)(CameraState&))
        : timer_(io, period), core_(core), period_(period), change_(change) {}

    void Run() {
        timer_.async_wait([self = shared_from_this()](error_code) {
            self->core_.Change(self->change_);
            self->timer_.expires_after(self->period_);
            self->Run();
        });
    }

 private:
    asio::steady_timer timer_;
    CCameraCore& core_;
    const std::chrono::milliseconds period_;
    void (*const change_)(CameraState&);
};

void ToggleMotion(CameraState& state) {
    for (VideoSource& source : state.media.videoSources) {
        source.motion = !source.motion;
    }
}
void ToggleInputs(CameraState& state) {
    for (DigitalInput& input : state.inputs) {
        input.active = !input.active;
    }
}

/// Why no camera can be made so, as far as the options tell; empty when they are fine.
std::string WhatIsWrong(const CameraOptions& options) {
    constexpr int kMostChannels = 255;
    if (options.channels < 1 || options.channels > kMostChannels) {
        return "a recorder has 1 to 255 channels";
    }
    if (FindPrefixStyle(options.prefixStyle) == nullptr) {
        return "unknown prefix style \"" + options.prefixStyle + "\"";
    }
    for (const std::string& realm : {options.snapshotRealm, options.httpRealm}) {
        if (realm.find_first_of("\r\n") != std::string::npos) {
            return "the realm holds a line break";
        }
    }
    if (FindTopicStyle(options.topicStyle) == nullptr) {
        return "unknown topic style \"" + options.topicStyle + "\"";
    }
    const auto refusals = ClockRefusalNames();
    if (!options.clockRefusal.empty() &&
        std::find(refusals.begin(), refusals.end(), options.clockRefusal) == refusals.end()) {
        return "unknown refusal of the clock \"" + options.clockRefusal + "\"";
    }
    const auto styles = SubscriptionStyleNames();
    if (std::find(styles.begin(), styles.end(), options.subscriptionStyle) == styles.end()) {
        return "unknown subscription style \"" + options.subscriptionStyle + "\"";
    }
    return {};
}

}  // namespace

class CCameraHost::CImpl {
 public:
    CImpl() : work_(asio::make_work_guard(io_)), thread_([this] { io_.run(); }) {}

    // Sessions and listeners die with the io_context, which goes before the cameras.
    ~CImpl() {
        io_.stop();
        thread_.join();
    }

    CCamera* TryAdd(CameraOptions options, std::string& error) {
        error = WhatIsWrong(options);
        if (!error.empty()) {
            return nullptr;
        }
        auto state = MakeModel(options);
        if (!state) {
            error = "unknown model \"" + options.model + "\"";
            return nullptr;
        }
        error_code failure;
        tcp::acceptor acceptor = Listen(io_, options.port, failure);
        if (!failure) {
            options.port = acceptor.local_endpoint(failure).port();
        }
        if (failure) {
            error = "cannot listen on 127.0.0.1:" + std::to_string(options.port) + ": " +
                    failure.message();
            return nullptr;
        }
        const PrefixStyle& style = *FindPrefixStyle(options.prefixStyle);
        auto core = std::make_unique<CCameraCore>(std::move(options), *std::move(state), style);
        auto listener = std::make_shared<CListener>(std::move(acceptor), *core);
        Attach(*core, listener);
        CCameraCore* const searched = core.get();
        auto camera = std::make_unique<CCamera>(std::move(core));
        asio::post(io_, [listener] { listener->Accept(); });
        const std::lock_guard guard(lock_);
        cores_.push_back(searched);
        return cameras_.emplace_back(std::move(camera)).get();
    }

    std::optional<std::uint16_t> TryAnswerProbes(const DiscoveryOptions& options,
                                                 std::string& error) {
        const auto answer = [this](std::string_view datagram) { return AnswersTo(datagram); };
        return ReceiveProbes(io_, options, answer, error);
    }

 private:
    /// Of all cameras that are meant.
    std::vector<std::string> AnswersTo(std::string_view datagram) {
        std::vector<std::string> answers;
        const CProbe probe(datagram);
        const std::lock_guard guard(lock_);
        for (CCameraCore* each : cores_) {
            if (auto answer = each->AnswerProbe(probe, {start_, sent_ + 1})) {
                answers.push_back(*std::move(answer));
                ++sent_;
            }
        }
        return answers;
    }

    void Attach(CCameraCore& core, const std::shared_ptr<CListener>& listener) {
        core.Attach({
            [this, weak = std::weak_ptr(listener)] {
                asio::post(io_, [weak] {
                    if (const auto strong = weak.lock()) {
                        strong->DropConnections();
                    }
                });
            },
            [this, &core](std::uint64_t subscription, NotifyTarget target, std::string body) {
                asio::post(io_, [this, &core, subscription, target = std::move(target),
                                 body = std::move(body)]() mutable {
                    PostNotification(io_, target, body, [&core, subscription](bool accepted) {
                        core.NotificationSent(subscription, accepted);
                    });
                });
            },
        });
        const CameraOptions& options = core.Options();
        Repeat(core, options.motionPeriod, ToggleMotion);
        Repeat(core, options.inputPeriod, ToggleInputs);
    }

    void Repeat(CCameraCore& core, std::chrono::milliseconds period, void (*change)(CameraState&)) {
        if (period.count() <= 0) {
            return;
        }
        asio::post(io_, [schedule = std::make_shared<CSchedule>(io_, core, period, change)] {
            schedule->Run();
        });
    }

    const std::int64_t start_ =
        std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now())
            .time_since_epoch()
            .count();
    std::mutex lock_;  // guards the three below; before the cameras' own
    std::vector<std::unique_ptr<CCamera>> cameras_;
    std::vector<CCameraCore*> cores_;
    std::uint64_t sent_ = 0;  // answers to probes
    asio::io_context io_{1};
    asio::executor_work_guard<asio::io_context::executor_type> work_;
    std::thread thread_;
};

CCameraHost::CCameraHost() : impl_(std::make_unique<CImpl>()) {}
CCameraHost::~CCameraHost() = default;

CCamera* CCameraHost::TryAdd(CameraOptions options, std::string& error) {
    return impl_->TryAdd(std::move(options), error);
}

CCamera& CCameraHost::Add(CameraOptions options) {
    std::string error;
    CCamera* camera = TryAdd(std::move(options), error);
    if (camera == nullptr) {
        throw std::runtime_error(error);
    }
    return *camera;
}

std::optional<std::uint16_t> CCameraHost::TryAnswerProbes(const DiscoveryOptions& options,
                                                          std::string& error) {
    return impl_->TryAnswerProbes(options, error);
}

std::uint16_t CCameraHost::AnswerProbes(const DiscoveryOptions& options) {
    std::string error;
    const auto port = TryAnswerProbes(options, error);
    if (!port) {
        throw std::runtime_error(error);
    }
    return *port;
}

}  // namespace camera_sim
