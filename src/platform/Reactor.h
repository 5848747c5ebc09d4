/// @file
/// The threads that wait in the background for bytes and room on watched connections
/// (ConnectionWatch). Internal to this folder, whose only users of Boost.Asio these two are. There
/// are two, each with a context of its own, so that what happens on one wakes only that one: a
/// connection stays with one of them. They start with the first waiter.
#ifndef ONVIF_CLIENT_PLATFORM_REACTOR_H
#define ONVIF_CLIENT_PLATFORM_REACTOR_H

#include <chrono>
#include <functional>
#include <memory>

#include "platform/Corekit.h"
#include "platform/SocketLayer.h"

namespace boost::asio {
class io_context;
}

namespace onvif_client {

/// Any thread.
class CReactor {
 public:
    /// The reactor in force, started when there is none. Throws when not even one thread can be
    /// had.
    static std::shared_ptr<CReactor> Get();
    /// Ends the background threads; those who wait must have ended before. The next waiter starts
    /// new ones.
    static void Stop();

    CReactor() = default;
    virtual ~CReactor() = default;
    CReactor(const CReactor&) = delete;
    CReactor& operator=(const CReactor&) = delete;

    /// Where the next connection is waited on.
    virtual boost::asio::io_context& NextContext() = 0;
    /// Has a background thread call it once, after that time, in place of what was to be called
    /// before. Nothing is called once the reactor is being stopped. May throw without memory.
    virtual void CallAfter(std::chrono::milliseconds time, std::function<void(CReactor&)> call) = 0;
};

/// Runs a callback of an observer; what it throws ends here.
template <typename Callback>
void RunCallback(const Callback& callback) {
    const CSocketLayer::CCallback running;
    try {
        callback();
    } catch (...) {
        COREKIT_AbnormalOutput("ASSERT", "Wirelink", "an observer's callback threw");
    }
}

}  // namespace onvif_client

#endif
