/// @file
/// Owned sockets. Internal to this folder.
///
/// Where they are file descriptors they keep away from 0, 1 and 2 also where an application has
/// closed these: what it writes to standard output must not go to a device. And a forked child
/// closes its copies at once: else peers would see no end of what its parent closes, and the parent
/// could not listen again.
#ifndef ONVIF_CLIENT_PLATFORM_DESCRIPTOR_H
#define ONVIF_CLIENT_PLATFORM_DESCRIPTOR_H

#include <functional>
#include <utility>

#include "platform/SystemHandle.h"

namespace onvif_client {

/// A socket (on POSIX any file descriptor), closed at the end of its owner.
class CDescriptor {
 public:
    /// Takes it over, under another number when its own is that of a standard stream; kNoHandle is
    /// none.
    explicit CDescriptor(SystemHandle descriptor);
    ~CDescriptor();
    CDescriptor(CDescriptor&& other) noexcept : descriptor_(other.Release()) {}
    CDescriptor& operator=(CDescriptor&&) = delete;

    SystemHandle Get() const { return descriptor_; }
    explicit operator bool() const { return descriptor_ != kNoHandle; }
    /// Whoever asks closes it, after ForgetDescriptor: until then a child would close it.
    SystemHandle Release() { return std::exchange(descriptor_, kNoHandle); }

 private:
    SystemHandle descriptor_;
};

/// Before somebody else closes what was released: the number may be another's at once.
void ForgetDescriptor(SystemHandle descriptor);

/// Keeps the numbers of closed standard streams taken meanwhile, for code that makes descriptors of
/// its own.
void WithHeldStandardStreams(const std::function<void()>& make);

/// Closes the copies that a forked child got of its parent's descriptors. Nothing is shut down: the
/// parent goes on with its own. Async-signal-safe.
void CloseInheritedDescriptors() noexcept;

}  // namespace onvif_client

#endif
