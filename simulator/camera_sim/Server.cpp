// The HTTP server of all cameras: one thread, one connection per request.
#include <algorithm>
#include <exception>
#include <limits>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <unordered_set>
#include <utility>
// Asio uses std::exchange without including it.
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>

#include "camera_sim/CameraCore.h"
#include "camera_sim/CameraSim.h"
#include "camera_sim/Models.h"
#include "camera_sim/control/Control.h"
#include "camera_sim/events/NotifyPost.h"

namespace camera_sim {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
using asio::ip::tcp;
using boost::system::error_code;

constexpr std::size_t kHeadLimit = std::size_t{16} * 1024;
constexpr std::size_t kBodyLimit = std::size_t{256} * 1024;
constexpr std::size_t kWatchSize = 64;
constexpr std::chrono::seconds kIdleLimit{30};
constexpr std::chrono::seconds kDrainLimit{2};
constexpr std::chrono::milliseconds kAcceptPause{100};
constexpr std::string_view kContinue = "HTTP/1.1 100 Continue\r\n\r\n";

class Session;
/// A camera's open connections. Only the server's thread uses it.
using Connections = std::unordered_set<Session*>;

/// One connection: reads a request, has it answered, sends the reply. Kept alive by the operation
/// that it waits for.
class Session : public std::enable_shared_from_this<Session> {
 public:
    Session(tcp::socket socket, CameraCore& core, std::shared_ptr<Connections> connections)
        : stream_(std::move(socket)),
          timer_(stream_.get_executor()),
          core_(core),
          connections_(std::move(connections)) {
        connections_->insert(this);
    }
    ~Session() { connections_->erase(this); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void Start() {
        error_code ignored;
        stream_.socket().set_option(tcp::no_delay(true), ignored);
        stream_.expires_after(kIdleLimit);
        asio::async_read_until(stream_, asio::dynamic_buffer(input_, kHeadLimit), "\r\n\r\n",
                               [self = shared_from_this()](error_code error, std::size_t headSize) {
                                   if (error == asio::error::not_found) {
                                       self->Refuse(431);
                                   } else if (!error) {
                                       self->ReadBody(headSize);
                                   }
                               });
    }

    /// Ends the connection without a further word, unless it serves a control request.
    void Drop() {
        if (isControl_) return;
        waiting_ = false;
        reply_.ending = Reply::Ending::kClose;  // what is being sent keeps its bytes
        timer_.cancel();
        stream_.close();
    }

 private:
    void ReadBody(std::size_t headSize) {
        beast::http::request_parser<beast::http::empty_body> parser;
        parser.header_limit(kHeadLimit);
        parser.body_limit(std::numeric_limits<std::uint64_t>::max());  // checked below
        error_code error;
        parser.put(asio::buffer(input_.data(), headSize), error);
        if ((error && error != beast::http::error::need_more) || !parser.is_header_done())
            return Refuse(400);
        if (parser.chunked()) return Refuse(411);
        const std::uint64_t length = parser.content_length().value_or(0);
        if (length > kBodyLimit) return Refuse(413);

        const auto& head = parser.get();
        request_.method = std::string(head.method_string());
        request_.target = std::string(head.target());
        request_.authorization = std::string(head["Authorization"]);
        request_.head = input_.substr(0, headSize);
        request_.body = input_.substr(headSize, length);
        unread_ = input_.size() > headSize + request_.body.size();
        const std::size_t received = request_.body.size();
        request_.body.resize(length);
        if (received < length && head["Expect"] == "100-continue") return SendContinue(received);
        ReadRest(received);
    }

    void SendContinue(std::size_t received) {
        asio::async_write(stream_, asio::buffer(kContinue),
                          [self = shared_from_this(), received](error_code error, std::size_t) {
                              if (!error) self->ReadRest(received);
                          });
    }

    void ReadRest(std::size_t received) {
        if (received == request_.body.size()) return Process();
        stream_.expires_after(kIdleLimit);
        asio::async_read(stream_, asio::buffer(request_.body) + received,
                         [self = shared_from_this()](error_code error, std::size_t) {
                             if (!error) self->Process();
                         });
    }

    void Refuse(unsigned status) {
        unread_ = true;
        reply_ = HttpReply(status);
        Send();
    }

    void Process() {
        isControl_ = IsControlRequest(request_.target);
        SetReply([this] {
            return isControl_ ? HandleControl(core_, request_)
                              : core_.Handle(std::move(request_), MakeWake());
        });
        if (reply_.ending != Reply::Ending::kDeferred) return Deliver();
        waiting_ = true;
        stream_.expires_never();
        input_ = std::string(kWatchSize, '\0');
        Watch();
        WaitUntilDue();
    }

    template <typename Source>
    void SetReply(Source source) {
        try {
            reply_ = source();
        } catch (const std::exception&) {
            reply_ = HttpReply(500);
        }
    }

    std::function<void()> MakeWake() {
        return [executor = stream_.get_executor(), session = weak_from_this()] {
            asio::post(executor, [session] {
                if (const auto self = session.lock()) self->Resume();
            });
        };
    }

    void WaitUntilDue() {
        timer_.expires_at(reply_.until);
        timer_.async_wait([self = shared_from_this()](error_code error) {
            if (!error) self->Resume();
        });
    }

    /// Asks again for the deferred reply. Once it is there, the end of the watch delivers it.
    void Resume() {
        if (!waiting_) return;
        SetReply([this] { return core_.Resume(reply_.ticket); });
        if (reply_.ending == Reply::Ending::kDeferred) return WaitUntilDue();
        waiting_ = false;
        timer_.cancel();
        stream_.cancel();
    }

    /// Notices when the client closes while it waits.
    void Watch() {
        stream_.async_read_some(asio::buffer(input_),
                                [self = shared_from_this()](error_code error, std::size_t) {
                                    if (!self->waiting_) return self->Deliver();
                                    if (!error) return self->Watch();
                                    self->waiting_ = false;
                                    self->timer_.cancel();
                                    self->core_.Abandon(self->reply_.ticket);
                                });
    }

    void Deliver() {
        if (reply_.delay.count() == 0) return Send();
        stream_.expires_never();
        timer_.expires_after(reply_.delay);
        timer_.async_wait([self = shared_from_this()](error_code error) {
            if (!error) self->Send();
        });
    }

    void Send() {
        if (reply_.ending == Reply::Ending::kSilence) {
            stream_.expires_never();
            return Drain();
        }
        if (reply_.ending == Reply::Ending::kClose || sent_ == reply_.bytes.size()) return Finish();
        const std::size_t rest = reply_.bytes.size() - sent_;
        const std::size_t size = reply_.segment == 0 ? rest : std::min(reply_.segment, rest);
        stream_.expires_after(kIdleLimit);
        asio::async_write(stream_, asio::buffer(reply_.bytes.data() + sent_, size),
                          [self = shared_from_this()](error_code error, std::size_t written) {
                              if (!error) self->AfterSegment(written);
                          });
    }

    void AfterSegment(std::size_t written) {
        sent_ += written;
        if (sent_ == reply_.bytes.size() || reply_.pause.count() == 0) return Send();
        timer_.expires_after(reply_.pause);
        timer_.async_wait([self = shared_from_this()](error_code error) {
            if (!error) self->Send();
        });
    }

    void Finish() {
        error_code ignored;
        stream_.socket().shutdown(tcp::socket::shutdown_send, ignored);
        // Closing with received bytes unread would reset the connection, and the reply might be
        // lost on its way.
        if (unread_) {
            stream_.expires_after(kDrainLimit);
            Drain();
        }
    }

    /// Reads and forgets until the client closes or the time is up.
    void Drain() {
        input_.resize(kHeadLimit);
        stream_.async_read_some(asio::buffer(input_),
                                [self = shared_from_this()](error_code error, std::size_t) {
                                    if (!error) self->Drain();
                                });
    }

    beast::tcp_stream stream_;
    asio::steady_timer timer_;
    CameraCore& core_;
    const std::shared_ptr<Connections> connections_;
    std::string input_;
    HttpRequest request_;
    Reply reply_;
    std::size_t sent_ = 0;
    bool unread_ = false;     // the client has sent what nobody has read
    bool isControl_ = false;  // the request is a control request
    bool waiting_ = false;    // for a deferred reply
};

/// Takes a port on the loopback interface; 0: the system chooses one.
tcp::acceptor Listen(asio::io_context& io, std::uint16_t port, error_code& error) {
    tcp::acceptor acceptor(io);
    const tcp::endpoint endpoint(asio::ip::address_v4::loopback(), port);
    acceptor.open(endpoint.protocol(), error);
    if (!error) acceptor.set_option(tcp::acceptor::reuse_address(true), error);
    if (!error) acceptor.bind(endpoint, error);
    if (!error) acceptor.listen(tcp::acceptor::max_listen_connections, error);
    return acceptor;
}

/// Accepts a camera's connections. Kept alive by its pending accept.
class Listener : public std::enable_shared_from_this<Listener> {
 public:
    Listener(tcp::acceptor acceptor, CameraCore& core)
        : acceptor_(std::move(acceptor)), pause_(acceptor_.get_executor()), core_(core) {}

    void DropConnections() {
        for (Session* session : *connections_) session->Drop();
    }

    void Accept() {
        acceptor_.async_accept([self = shared_from_this()](error_code error, tcp::socket socket) {
            if (!error) {
                std::make_shared<Session>(std::move(socket), self->core_, self->connections_)
                    ->Start();
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
    CameraCore& core_;
    const std::shared_ptr<Connections> connections_ = std::make_shared<Connections>();
};

/// Changes something of a camera at regular intervals. Kept alive by its timer.
class Schedule : public std::enable_shared_from_this<Schedule> {
 public:
    Schedule(asio::io_context& io, CameraCore& core, std::chrono::milliseconds period,
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
    CameraCore& core_;
    const std::chrono::milliseconds period_;
    void (*const change_)(CameraState&);
};

void ToggleMotion(CameraState& state) {
    for (VideoSource& source : state.media.videoSources) source.motion = !source.motion;
}
void ToggleInputs(CameraState& state) {
    for (DigitalInput& input : state.inputs) input.active = !input.active;
}

}  // namespace

class CameraHost::Impl {
 public:
    Impl() : work_(asio::make_work_guard(io_)), thread_([this] { io_.run(); }) {}

    // Sessions and listeners die with the io_context, which goes before the cameras.
    ~Impl() {
        io_.stop();
        thread_.join();
    }

    Camera* TryAdd(CameraOptions options, std::string& error) {
        const PrefixStyle* style = FindPrefixStyle(options.prefixStyle);
        if (style == nullptr) {
            error = "unknown prefix style \"" + options.prefixStyle + "\"";
            return nullptr;
        }
        if (options.snapshotRealm.find_first_of("\r\n") != std::string::npos) {
            error = "the realm of snapshots holds a line break";
            return nullptr;
        }
        if (FindTopicStyle(options.topicStyle) == nullptr) {
            error = "unknown topic style \"" + options.topicStyle + "\"";
            return nullptr;
        }
        const auto forms = SubscriptionStyleNames();
        if (std::find(forms.begin(), forms.end(), options.subscriptionStyle) == forms.end()) {
            error = "unknown subscription style \"" + options.subscriptionStyle + "\"";
            return nullptr;
        }
        auto state = MakeModel(options);
        if (!state) {
            error = "unknown model \"" + options.model + "\"";
            return nullptr;
        }
        error_code failure;
        tcp::acceptor acceptor = Listen(io_, options.port, failure);
        if (!failure) options.port = acceptor.local_endpoint(failure).port();
        if (failure) {
            error = "cannot listen on 127.0.0.1:" + std::to_string(options.port) + ": " +
                    failure.message();
            return nullptr;
        }
        auto core = std::make_unique<CameraCore>(std::move(options), *std::move(state), *style);
        auto listener = std::make_shared<Listener>(std::move(acceptor), *core);
        Attach(*core, listener);
        auto camera = std::make_unique<Camera>(std::move(core));
        asio::post(io_, [listener] { listener->Accept(); });
        const std::scoped_lock guard(lock_);
        return cameras_.emplace_back(std::move(camera)).get();
    }

 private:
    void Attach(CameraCore& core, const std::shared_ptr<Listener>& listener) {
        core.Attach({
            [this, weak = std::weak_ptr(listener)] {
                asio::post(io_, [weak] {
                    if (const auto strong = weak.lock()) strong->DropConnections();
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

    void Repeat(CameraCore& core, std::chrono::milliseconds period, void (*change)(CameraState&)) {
        if (period.count() <= 0) return;
        asio::post(io_, [schedule = std::make_shared<Schedule>(io_, core, period, change)] {
            schedule->Run();
        });
    }

    std::mutex lock_;  // guards cameras_; leaf
    std::vector<std::unique_ptr<Camera>> cameras_;
    asio::io_context io_{1};
    asio::executor_work_guard<asio::io_context::executor_type> work_;
    std::thread thread_;
};

CameraHost::CameraHost() : impl_(std::make_unique<Impl>()) {}
CameraHost::~CameraHost() = default;

Camera* CameraHost::TryAdd(CameraOptions options, std::string& error) {
    return impl_->TryAdd(std::move(options), error);
}

Camera& CameraHost::Add(CameraOptions options) {
    std::string error;
    Camera* camera = TryAdd(std::move(options), error);
    if (camera == nullptr) throw std::runtime_error(error);
    return *camera;
}

}  // namespace camera_sim
