/// @file
/// Owned file descriptors. Internal to this folder.
///
/// They keep away from 0, 1 and 2 also where an application has closed these: what it writes to
/// standard output must not go to a device. And a forked child closes its copies at once: else
/// peers would see no end of what its parent closes, and the parent could not listen again.
#ifndef ONVIF_CLIENT_PLATFORM_DESCRIPTOR_H
#define ONVIF_CLIENT_PLATFORM_DESCRIPTOR_H

#include <utility>

namespace onvif_client {

/// A file descriptor, closed at the end of its owner.
class CDescriptor {
 public:
    /// Takes it over, under another number when its own is that of a standard stream; -1 is none.
    explicit CDescriptor(int descriptor);
    ~CDescriptor();
    CDescriptor(CDescriptor&& other) noexcept : descriptor_(other.Release()) {}
    CDescriptor& operator=(CDescriptor&&) = delete;

    int Get() const { return descriptor_; }
    explicit operator bool() const { return descriptor_ >= 0; }
    /// Whoever asks closes it, by making it a CDescriptor again: until then a child would close it.
    int Release() { return std::exchange(descriptor_, -1); }

 private:
    int descriptor_;
};

/// Keeps the numbers of closed standard streams taken while it lives, for code that makes
/// descriptors of its own.
class CHeldStandardStreams {
 public:
    CHeldStandardStreams();
    ~CHeldStandardStreams();
    CHeldStandardStreams(const CHeldStandardStreams&) = delete;
    CHeldStandardStreams& operator=(const CHeldStandardStreams&) = delete;

 private:
    static constexpr int kStreams = 3;
    bool held_[kStreams] = {};
};

/// Closes the copies that a forked child got of its parent's descriptors. Nothing is shut down: the
/// parent goes on with its own. Async-signal-safe.
void CloseInheritedDescriptors() noexcept;

}  // namespace onvif_client

#endif
