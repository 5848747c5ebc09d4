/// @file
/// The owner of a connection of the socket layer.
#ifndef ONVIF_CLIENT_PLATFORM_WIRELINKHANDLE_H
#define ONVIF_CLIENT_PLATFORM_WIRELINKHANDLE_H

#include <cstdint>
#include <utility>

namespace onvif_client {

/// A connection by its handle, destroyed at the end of its owner. The owner belongs to one thread
/// at a time; the connection itself answers every thread.
class CWirelinkHandle {
 public:
    /// Owns nothing.
    CWirelinkHandle() = default;
    /// Takes the connection over; 0 is none.
    explicit CWirelinkHandle(std::uint32_t handle) : handle_(handle) {}
    ~CWirelinkHandle() { Close(); }
    CWirelinkHandle(CWirelinkHandle&& other) noexcept : handle_(std::exchange(other.handle_, 0)) {}
    CWirelinkHandle& operator=(CWirelinkHandle&& other) noexcept;

    std::uint32_t Get() const { return handle_; }
    explicit operator bool() const { return handle_ != 0; }

    /// Breaks the connection off and forgets it. A data callback that runs is waited for, and none
    /// follows; called from that very callback, it does not wait.
    void Close() noexcept;

 private:
    std::uint32_t handle_ = 0;
};

/// Waits for a connection that is being made, looking at most @p looks times and pausing after each
/// look in vain.
/// @return true when it stands.
bool AwaitConnected(std::uint32_t handle, int looks, std::uint32_t pauseMs);

}  // namespace onvif_client

#endif
