#include "camera_sim/Connections.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <exception>
#include <functional>
#include <limits>
#include <string>
#include <string_view>
// Asio uses std::exchange without including it.
#include <boost/asio/post.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>

#include "camera_sim/control/Control.h"

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
constexpr std::string_view kContinue = "HTTP/1.1 100 Continue\r\n\r\n";

}  // namespace

/// One connection: reads a request, has it answered, sends the reply, and again. Kept alive by the
/// operation that it waits for.
class CConnections::CSession : public std::enable_shared_from_this<CSession> {
 public:
    CSession(tcp::socket socket, CCameraCore& core, std::shared_ptr<Sessions> open)
        : stream_(std::move(socket)),
          timer_(stream_.get_executor()),
          core_(core),
          open_(std::move(open)) {
        open_->insert(this);
    }
    ~CSession() { open_->erase(this); }
    CSession(const CSession&) = delete;
    CSession& operator=(const CSession&) = delete;

    void Start() {
        error_code ignored;
        stream_.socket().set_option(tcp::no_delay(true), ignored);
        if (const auto ending = core_.EndingAtConnection()) {
            unread_ = true;
            reply_.ending = *ending;
            return Send();
        }
        ReadHead();
    }

    /// Ends the connection without a further word, unless it serves a control request.
    void Drop() {
        if (isControl_) {
            return;
        }
        waiting_ = false;
        reply_.ending = Reply::Ending::kClose;  // what is being sent keeps its bytes
        timer_.cancel();
        stream_.close();
    }

 private:
    void ReadHead() {
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

    void ReadBody(std::size_t headSize) {
        beast::http::request_parser<beast::http::empty_body> parser;
        parser.header_limit(kHeadLimit);
        parser.body_limit(std::numeric_limits<std::uint64_t>::max());  // checked below
        error_code error;
        parser.put(asio::buffer(input_.data(), headSize), error);
        if ((error && error != beast::http::error::need_more) || !parser.is_header_done()) {
            return Refuse(400);
        }
        if (parser.chunked()) {
            return Refuse(411);
        }
        const std::uint64_t length = parser.content_length().value_or(0);
        if (length > kBodyLimit) {
            return Refuse(413);
        }

        const auto& head = parser.get();
        request_.method = std::string(head.method_string());
        request_.target = std::string(head.target());
        request_.authorization = std::string(head["Authorization"]);
        request_.head = input_.substr(0, headSize);
        request_.body = input_.substr(headSize, length);
        request_.keepAlive = head.keep_alive();
        const std::size_t received = request_.body.size();
        input_.erase(0, headSize + received);
        unread_ = !input_.empty();
        request_.body.resize(length);
        if (received < length && head["Expect"] == "100-continue") {
            return SendContinue(received);
        }
        ReadRest(received);
    }

    void SendContinue(std::size_t received) {
        asio::async_write(stream_, asio::buffer(kContinue),
                          [self = shared_from_this(), received](error_code error, std::size_t) {
                              if (!error) {
                                  self->ReadRest(received);
                              }
                          });
    }

    void ReadRest(std::size_t received) {
        if (received == request_.body.size()) {
            return Process();
        }
        stream_.expires_after(kIdleLimit);
        asio::async_read(stream_, asio::buffer(request_.body) + received,
                         [self = shared_from_this()](error_code error, std::size_t) {
                             if (!error) {
                                 self->Process();
                             }
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
        if (reply_.ending != Reply::Ending::kDeferred) {
            return Deliver();
        }
        waiting_ = true;
        stream_.expires_never();
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
                if (const auto self = session.lock()) {
                    self->Resume();
                }
            });
        };
    }

    void WaitUntilDue() {
        timer_.expires_at(reply_.until);
        timer_.async_wait([self = shared_from_this()](error_code error) {
            if (!error) {
                self->Resume();
            }
        });
    }

    /// Asks again for the deferred reply. Once it is there, the end of the watch delivers it.
    void Resume() {
        if (!waiting_) {
            return;
        }
        SetReply([this] { return core_.Resume(reply_.ticket); });
        if (reply_.ending == Reply::Ending::kDeferred) {
            return WaitUntilDue();
        }
        waiting_ = false;
        timer_.cancel();
        stream_.cancel();
    }

    /// Notices when the client closes while it waits.
    void Watch() {
        stream_.async_read_some(asio::buffer(watched_),
                                [self = shared_from_this()](error_code error, std::size_t size) {
                                    self->Keep(size);
                                    if (!self->waiting_) {
                                        return self->Deliver();
                                    }
                                    if (!error) {
                                        return self->Watch();
                                    }
                                    self->waiting_ = false;
                                    self->timer_.cancel();
                                    self->core_.Abandon(self->reply_.ticket);
                                });
    }

    /// Keeps what came too early for the next request, as far as a request may go.
    void Keep(std::size_t size) {
        unread_ = unread_ || size > 0;
        if (input_.size() < kHeadLimit) {
            input_.append(watched_.data(), size);
        }
    }

    void Deliver() {
        if (reply_.delay.count() == 0) {
            return Send();
        }
        stream_.expires_never();
        timer_.expires_after(reply_.delay);
        timer_.async_wait([self = shared_from_this()](error_code error) {
            if (!error) {
                self->Send();
            }
        });
    }

    void Send() {
        if (reply_.ending == Reply::Ending::kClose || sent_ == reply_.bytes.size()) {
            return Finish();
        }
        const std::size_t size = NextSize();
        stream_.expires_after(kIdleLimit);
        asio::async_write(stream_, asio::buffer(reply_.bytes.data() + sent_, size),
                          [self = shared_from_this()](error_code error, std::size_t written) {
                              if (!error) {
                                  self->AfterSegment(written);
                              }
                          });
    }

    std::size_t NextSize() const {
        const std::size_t rest = reply_.bytes.size() - sent_;
        if (reply_.segment == 0 || sent_ >= reply_.segmentsEnd) {
            return rest;
        }
        return std::min(
            rest, sent_ < reply_.segmentsBegin ? reply_.segmentsBegin - sent_ : reply_.segment);
    }

    void AfterSegment(std::size_t written) {
        sent_ += written;
        if (sent_ == reply_.bytes.size() || reply_.pause.count() == 0) {
            return Send();
        }
        timer_.expires_after(reply_.pause);
        timer_.async_wait([self = shared_from_this()](error_code error) {
            if (!error) {
                self->Send();
            }
        });
    }

    void Finish() {
        error_code ignored;
        if (reply_.ending == Reply::Ending::kSilence) {
            stream_.expires_never();
            return Drain();
        }
        if (reply_.keepOpen && reply_.ending == Reply::Ending::kSend) {
            request_ = {};
            reply_ = {};
            sent_ = 0;
            unread_ = false;
            return ReadHead();
        }
        if (reply_.ending == Reply::Ending::kReset) {
            stream_.socket().set_option(asio::socket_base::linger(true, 0), ignored);
            return stream_.close();
        }
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
                                    if (!error) {
                                        self->Drain();
                                    }
                                });
    }

    beast::tcp_stream stream_;
    asio::steady_timer timer_;
    CCameraCore& core_;
    const std::shared_ptr<Sessions> open_;
    std::string input_;  // what nobody has read yet
    std::array<char, kWatchSize> watched_{};
    HttpRequest request_;
    Reply reply_;
    std::size_t sent_ = 0;
    bool unread_ = false;     // the client has sent what nobody has read
    bool isControl_ = false;  // the request is a control request
    bool waiting_ = false;    // for a deferred reply
};

void CConnections::Serve(tcp::socket socket) {
    std::make_shared<CSession>(std::move(socket), core_, open_)->Start();
}

void CConnections::Drop() {
    for (CSession* session : *open_) {
        session->Drop();
    }
}

}  // namespace camera_sim
