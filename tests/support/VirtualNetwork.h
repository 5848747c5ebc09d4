/// @file
/// The socket layer without sockets, in a time that does not pass by itself. A program that links
/// VirtualNetwork.cpp has its WIRELINK functions instead of the real ones, its clock, and its
/// CManualResetEvent, which tells when a pool's worker has something to do.
///
/// Time stands while any thread works. When all of them wait - for a reply, in a sleep, for a task
/// - it moves to what comes next, by a second at most. Within one moment the network comes first,
/// and a sleep of 10 ms ends last: the event thread finds everything done that is due.
#ifndef ONVIF_CLIENT_TESTS_SUPPORT_VIRTUALNETWORK_H
#define ONVIF_CLIENT_TESTS_SUPPORT_VIRTUALNETWORK_H

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>

namespace client_test {

/// What stands at one address. Called with the network's lock held.
class IVirtualDevice {
 public:
    enum class Link { kUp, kSilent, kRefusing };

    virtual ~IVirtualDevice() = default;
    virtual Link GetLink() const { return Link::kUp; }
    virtual void OnRequest(std::uint32_t connection, std::string_view request) = 0;
    /// The other side has closed.
    virtual void OnClosed(std::uint32_t) {}
};

}  // namespace client_test

namespace client_test::network {

using Moment = std::int64_t;  // milliseconds since the start

/// Once; the calling thread works from now on. Moments are multiples of @p step.
void Start(Moment step);
Moment Now();
void Sleep(Moment milliseconds);
/// So many threads more, or fewer, work.
void Work(int threads);
std::unique_lock<std::mutex> Hold();

// For devices, actions and holders of Hold():
void Place(const std::string& ip, IVirtualDevice& device);
void After(Moment milliseconds, std::function<void()> action);
/// @param check  called before time moves.
void AtEndOfMoments(std::function<void()> check);
/// Bytes for the other side, which takes them in pieces. @p taken is called once it has them.
void Give(
    std::uint32_t connection, std::string_view bytes, std::function<void()> taken = [] {},
    std::size_t pieceSize = SIZE_MAX);
/// The device closes the connection, or all that it has; what was given arrives.
void Close(std::uint32_t connection);
void CloseAll(const IVirtualDevice& device);
/// A connection that the device made.
std::uint32_t Accept(IVirtualDevice& device);
std::size_t Connections();

}  // namespace client_test::network

#endif
