#include "DelayProxy.h"

#include <algorithm>
#include <array>
#include <deque>
#include <string>
#include <thread>
#include <utility>
// Asio needs <utility> before it.
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>

namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;
using Clock = std::chrono::steady_clock;

tcp::endpoint Loopback(std::uint16_t port) {
    return {asio::ip::address_v4::loopback(), port};
}

class CPassage : public std::enable_shared_from_this<CPassage> {
 public:
    CPassage(tcp::socket client, std::chrono::microseconds roundTrip)
        : client_(std::move(client)),
          target_(client_.get_executor()),
          halfTrip_(roundTrip / 2),
          made_(Clock::now() + roundTrip) {}

    void Start(std::uint16_t port) {
        error_code ignored;
        target_.connect(Loopback(port), ignored);
        client_.set_option(tcp::no_delay(true), ignored);
        target_.set_option(tcp::no_delay(true), ignored);
        Read(there_);
        Read(back_);
    }

 private:
    /// Of what goes one way; empty bytes are its end.
    struct Way {
        Way(tcp::socket& source, tcp::socket& sink)
            : from(source), to(sink), timer(source.get_executor()) {}

        tcp::socket& from;
        tcp::socket& to;
        asio::steady_timer timer;
        std::array<char, 65536> block{};
        std::deque<std::pair<Clock::time_point, std::string>> underWay;
    };

    void Read(Way& way) {
        way.from.async_read_some(asio::buffer(way.block), [self = shared_from_this(), &way](
                                                              error_code error, std::size_t size) {
            const auto due = std::max(Clock::now(), self->made_) + self->halfTrip_;
            way.underWay.emplace_back(due, std::string(way.block.data(), error ? 0 : size));
            if (way.underWay.size() == 1) {
                self->Deliver(way);
            }
            if (!error) {
                self->Read(way);
            }
        });
    }

    void Deliver(Way& way) {
        way.timer.expires_at(way.underWay.front().first);
        way.timer.async_wait([self = shared_from_this(), &way](error_code) {
            const std::string& bytes = way.underWay.front().second;
            if (bytes.empty()) {
                error_code ignored;
                way.to.shutdown(tcp::socket::shutdown_send, ignored);
                return;
            }
            asio::async_write(way.to, asio::buffer(bytes), [self, &way](error_code, std::size_t) {
                way.underWay.pop_front();
                if (!way.underWay.empty()) {
                    self->Deliver(way);
                }
            });
        });
    }

    tcp::socket client_;
    tcp::socket target_;
    const std::chrono::microseconds halfTrip_;
    const Clock::time_point made_;
    Way there_{client_, target_};
    Way back_{target_, client_};
};

}  // namespace

class CDelayProxy::CServer {
 public:
    CServer(std::uint16_t target, std::chrono::microseconds roundTrip)
        : acceptor_(io_, Loopback(0)), target_(target), roundTrip_(roundTrip) {
        Accept();
        thread_ = std::thread([this] { io_.run(); });
    }
    ~CServer() {
        io_.stop();
        thread_.join();
    }
    CServer(const CServer&) = delete;
    CServer& operator=(const CServer&) = delete;

    std::uint16_t Port() const { return acceptor_.local_endpoint().port(); }

 private:
    void Accept() {
        acceptor_.async_accept([this](error_code error, tcp::socket accepted) {
            if (!error) {
                std::make_shared<CPassage>(std::move(accepted), roundTrip_)->Start(target_);
            }
            Accept();
        });
    }

    asio::io_context io_;
    tcp::acceptor acceptor_;
    const std::uint16_t target_;
    const std::chrono::microseconds roundTrip_;
    std::thread thread_;
};

CDelayProxy::CDelayProxy(std::uint16_t target, std::chrono::microseconds roundTrip)
    : server_(std::make_unique<CServer>(target, roundTrip)) {}

CDelayProxy::~CDelayProxy() = default;

std::uint16_t CDelayProxy::Port() const {
    return server_->Port();
}
