/// @file
/// Waiting for a socket that a library owns. There on POSIX systems alone, where there is such a
/// library (bridge/MosquittoBroker.cpp).
#ifndef ONVIFCTL_SYSTEM_SOCKETWAIT_H
#define ONVIFCTL_SYSTEM_SOCKETWAIT_H

#include <chrono>

namespace onvifctl {

class CSocketWait {
 public:
    /// Throws CFailure when no descriptor is left.
    CSocketWait();
    ~CSocketWait();
    CSocketWait(const CSocketWait&) = delete;
    CSocketWait& operator=(const CSocketWait&) = delete;

    struct Ready {
        bool reading;  // errors and the end of the connection, too
        bool writing;
    };

    /// Waits that long at most, or until a Wake. @p socket: negative for none.
    Ready Wait(int socket, bool forWriting, std::chrono::milliseconds patience) const;

    /// Ends the wait, or the next one when none is under way. From any thread.
    void Wake() const;

 private:
    int wake_[2] = {-1, -1};
};

}  // namespace onvifctl

#endif
