// A client that knows nothing of HTTP.
#ifndef TESTS_SIMULATOR_EXCHANGE_H
#define TESTS_SIMULATOR_EXCHANGE_H

#include <cstdint>
#include <string>
#include <utility>
// Asio uses std::exchange without including it.
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/write.hpp>

/// All that comes back until the camera closes.
inline std::string Exchange(std::uint16_t port, const std::string& bytes) {
    using boost::asio::ip::tcp;
    boost::asio::io_context io;
    tcp::socket socket(io);
    socket.connect(tcp::endpoint(boost::asio::ip::address_v4::loopback(), port));
    boost::asio::write(socket, boost::asio::buffer(bytes));
    std::string reply;
    boost::system::error_code end;
    boost::asio::read(socket, boost::asio::dynamic_buffer(reply), end);
    return reply;
}

#endif
