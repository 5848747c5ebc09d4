/// @file
/// Sockets of 127.0.0.1, mostly TCP, for what a test puts at the other end of the library's
/// connections. They are the system's own: the library's code for sockets is what is tested.
#ifndef ONVIF_CLIENT_TESTS_SUPPORT_PEERSOCKET_H
#define ONVIF_CLIENT_TESTS_SUPPORT_PEERSOCKET_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace client_test {

/// One socket, not inherited by other programs, closed at the end of its owner.
class CPeerSocket {
 public:
    enum class Kind { kConnection, kDatagrams };
    explicit CPeerSocket(Kind kind = Kind::kConnection);
    ~CPeerSocket();
    CPeerSocket(CPeerSocket&& other) noexcept : socket_(std::exchange(other.socket_, kNone)) {}
    CPeerSocket& operator=(CPeerSocket&&) = delete;

    explicit operator bool() const { return socket_ != kNone; }

    /// @param port  0: the system chooses.
    bool Bind(std::uint16_t port = 0) const;
    std::uint16_t Port() const;
    /// @param queue  for so many connections, about.
    bool Listen(int queue) const;
    /// Waits for the next connection; none when there will not be any.
    CPeerSocket Accept() const;

    bool Connect(std::uint16_t port) const;
    /// From now on nothing waits.
    bool ConnectsSoon(std::uint16_t port) const;

    /// Reading waits a minute at most, where systems know that accepting does.
    void BePatientForAMinute() const;
    /// Reads until at least @p length bytes are there, the other side closes or, which @p inVain
    /// tells, the minute is over.
    std::string Read(std::size_t length, bool* inVain = nullptr) const;
    /// False once the connection is broken.
    bool Send(std::string_view bytes) const;
    /// Waits until the other side closes or somebody breaks the connection off.
    void WaitForClose() const;
    void EndSending() const;
    void BreakOff() const;

    /// From now on, only that port is heard.
    bool SendTo(std::uint16_t port, std::string_view datagram) const;
    /// Waits for a datagram; empty when none comes for a minute. @p port: whose it is.
    std::string ReceiveFrom(std::uint16_t& port) const;

 private:
    static constexpr std::intptr_t kNone = -1;

    explicit CPeerSocket(std::intptr_t socket) : socket_(socket) {}

    std::intptr_t socket_;  // as the system names it
};

}  // namespace client_test

#endif
