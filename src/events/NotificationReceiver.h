/// @file
/// The endpoint on which devices post their Notify messages: one HTTP request per connection,
/// answered with an empty 200 reply.
#ifndef ONVIF_CLIENT_EVENTS_NOTIFICATIONRECEIVER_H
#define ONVIF_CLIENT_EVENTS_NOTIFICATIONRECEIVER_H

#include <cstdint>
#include <string_view>

#include "platform/Wirelink.h"

namespace onvif_client {

/// Takes the bodies of posted messages.
class INotifySink {
 public:
    virtual ~INotifySink() = default;
    /// A message was posted, anything a peer may have sent. The answer waits for the return, and
    /// says the same whatever becomes of the message; after an exception there is none. Called
    /// from up to 16 threads at once. @p body is valid during the call.
    virtual void OnNotify(std::string_view body) = 0;
};

/// Serves the connections of a listener. It keeps nothing between them and may serve several
/// listeners; it must outlive them, as the sink must.
///
/// A connection that sends nothing, a message longer than 1 MiB or one that can never be complete
/// is closed without an answer, a silent one after 30 reads in vain, 100 ms apart. A message
/// without body is dropped, and its connection closed likewise.
class CNotificationReceiver final : public CListenSocketObserver {
 public:
    explicit CNotificationReceiver(INotifySink& sink) : sink_(sink) {}

    /// Returns when the connection has been served and closed: within about 3 seconds, the sink's
    /// time not counted.
    void OnAccept(std::uint32_t handle) override;

 private:
    INotifySink& sink_;
};

}  // namespace onvif_client

#endif
