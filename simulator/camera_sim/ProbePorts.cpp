#include "camera_sim/ProbePorts.h"

#include <array>
#include <chrono>
#include <memory>
#include <random>
#include <utility>
// Asio uses std::exchange without including it.
#include <boost/asio/buffer.hpp>
#include <boost/asio/ip/multicast.hpp>
#include <boost/asio/ip/udp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

namespace camera_sim {
namespace {

namespace asio = boost::asio;
using asio::ip::address_v4;
using asio::ip::udp;
using boost::system::error_code;

constexpr std::uint16_t kGroupPort = 3702;
constexpr int kLongestDelay = 500;  // milliseconds, of an answer to what all devices hear

/// A socket for probes. Kept alive by what it waits for.
class CProbePort : public std::enable_shared_from_this<CProbePort> {
 public:
    /// @p delays: answers do not all come at the same time.
    CProbePort(udp::socket socket, ProbeAnswers answers, bool delays, bool onlyLoopback)
        : socket_(std::move(socket)),
          answers_(std::move(answers)),
          delays_(delays),
          onlyLoopback_(onlyLoopback) {}

    void Receive() {
        socket_.async_receive_from(asio::buffer(datagram_), sender_,
                                   [self = shared_from_this()](error_code error, std::size_t size) {
                                       if (!error) {
                                           self->Handle({self->datagram_.data(), size});
                                       }
                                       // An error may be about an answer that nobody took.
                                       self->Receive();
                                   });
    }

 private:
    void Handle(std::string_view datagram) {
        // The system may pass on what is sent to the group on other interfaces.
        if (onlyLoopback_ && !sender_.address().is_loopback()) {
            return;
        }
        for (std::string& answer : answers_(datagram)) {
            Send(std::move(answer));
        }
    }

    void Send(std::string answer) {
        error_code ignored;
        if (!delays_) {
            socket_.send_to(asio::buffer(answer), sender_, 0, ignored);
            return;
        }
        const std::chrono::milliseconds delay(
            std::uniform_int_distribution(0, kLongestDelay)(random_));
        auto timer = std::make_shared<asio::steady_timer>(socket_.get_executor(), delay);
        timer->async_wait([self = shared_from_this(), timer, to = sender_,
                           answer = std::move(answer)](error_code) {
            error_code nobody;
            self->socket_.send_to(asio::buffer(answer), to, 0, nobody);
        });
    }

    udp::socket socket_;
    const ProbeAnswers answers_;
    const bool delays_;
    const bool onlyLoopback_;
    std::minstd_rand random_{std::random_device()()};
    udp::endpoint sender_;
    std::array<char, 65536> datagram_{};
};

udp::socket Bound(asio::io_context& io, const udp::endpoint& endpoint, bool shared,
                  error_code& error) {
    udp::socket socket(io);
    socket.open(udp::v4(), error);
    if (!error && shared) {
        socket.set_option(udp::socket::reuse_address(true), error);
    }
    if (!error) {
        socket.bind(endpoint, error);
    }
    return socket;
}

/// A socket that hears what is sent to the group, with others on this machine.
udp::socket Joined(asio::io_context& io, const address_v4& interface, error_code& error) {
    const address_v4 group = asio::ip::make_address_v4("239.255.255.250");
    udp::socket socket = Bound(io, {group, kGroupPort}, true, error);
    if (error) {  // not every system lets a group's address be bound
        error.clear();
        socket = Bound(io, {interface, kGroupPort}, true, error);
    }
    if (!error) {
        socket.set_option(asio::ip::multicast::join_group(group, interface), error);
    }
    if (!error) {
        socket.set_option(asio::ip::multicast::outbound_interface(interface), error);
    }
    return socket;
}

}  // namespace

std::optional<std::uint16_t> ReceiveProbes(asio::io_context& io, const DiscoveryOptions& options,
                                           ProbeAnswers answers, std::string& error) {
    error_code failure;
    std::vector<std::shared_ptr<CProbePort>> ports;
    udp::socket own = Bound(io, {address_v4::loopback(), options.port}, false, failure);
    const std::uint16_t port = failure ? options.port : own.local_endpoint(failure).port();
    if (failure) {
        error =
            "cannot take probes on 127.0.0.1:" + std::to_string(port) + ": " + failure.message();
        return std::nullopt;
    }
    ports.push_back(std::make_shared<CProbePort>(std::move(own), answers, false, true));
    if (options.joinsGroup) {
        const address_v4 interface = asio::ip::make_address_v4(options.groupInterface, failure);
        udp::socket group = failure ? udp::socket(io) : Joined(io, interface, failure);
        if (failure) {
            error = "cannot join the group of devices on " + options.groupInterface + ": " +
                    failure.message();
            return std::nullopt;
        }
        ports.push_back(std::make_shared<CProbePort>(std::move(group), std::move(answers), true,
                                                     interface.is_loopback()));
    }
    for (const auto& each : ports) {
        asio::post(io, [each] { each->Receive(); });
    }
    return port;
}

}  // namespace camera_sim
