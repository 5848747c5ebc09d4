#include "camera_sim/events/NotifyPost.h"

#include <chrono>
#include <memory>
#include <string_view>
// Asio uses std::exchange without including it.
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>

#include "camera_sim/http/Http.h"

namespace camera_sim {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

constexpr std::chrono::seconds kLimit{5};
constexpr std::size_t kHeadLimit = std::size_t{16} * 1024;

/// One notification on its way. Kept alive by the operation that it waits for.
class CPost : public std::enable_shared_from_this<CPost> {
 public:
    CPost(asio::io_context& io, std::string message, std::function<void(bool)> done)
        : socket_(io), timer_(io, kLimit), message_(std::move(message)), done_(std::move(done)) {}

    void Start(std::uint16_t port) {
        // Closing the socket ends the operation that waits.
        timer_.async_wait([self = shared_from_this()](error_code error) {
            error_code ignored;
            if (!error) {
                self->socket_.close(ignored);
            }
        });
        socket_.async_connect({asio::ip::address_v4::loopback(), port},
                              [self = shared_from_this()](error_code error) {
                                  if (error) {
                                      return self->Finish(false);
                                  }
                                  self->Send();
                              });
    }

 private:
    void Send() {
        asio::async_write(socket_, asio::buffer(message_),
                          [self = shared_from_this()](error_code error, std::size_t) {
                              if (error) {
                                  return self->Finish(false);
                              }
                              self->Receive();
                          });
    }

    void Receive() {
        asio::async_read_until(socket_, asio::dynamic_buffer(reply_, kHeadLimit), "\r\n\r\n",
                               [self = shared_from_this()](error_code error, std::size_t) {
                                   self->Finish(!error && self->IsAccepted());
                               });
    }

    /// Whether the status line says 2xx.
    bool IsAccepted() const {
        constexpr std::size_t kStatus = std::string_view("HTTP/1.1 ").size();
        return reply_.starts_with("HTTP/1.") && reply_[kStatus - 1] == ' ' &&
               reply_[kStatus] == '2';
    }

    void Finish(bool accepted) {
        error_code ignored;
        timer_.cancel();
        socket_.close(ignored);
        done_(accepted);
    }

    tcp::socket socket_;
    asio::steady_timer timer_;
    const std::string message_;
    const std::function<void(bool)> done_;
    std::string reply_;
};

}  // namespace

void PostNotification(asio::io_context& io, const NotifyTarget& target, const std::string& body,
                      std::function<void(bool accepted)> done) {
    std::string message = "POST " + target.path + " HTTP/1.1\r\nHost: 127.0.0.1:";
    message.append(std::to_string(target.port)).append("\r\nContent-Type: ").append(kSoapType);
    message.append("\r\nContent-Length: ").append(std::to_string(body.size()));
    message.append("\r\nConnection: close\r\n\r\n").append(body);
    std::make_shared<CPost>(io, std::move(message), std::move(done))->Start(target.port);
}

}  // namespace camera_sim
