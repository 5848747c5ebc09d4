/// @file
/// Sends notifications to consumers.
#ifndef CAMERA_SIM_EVENTS_NOTIFYPOST_H
#define CAMERA_SIM_EVENTS_NOTIFYPOST_H

#include <functional>
#include <string>
#include <utility>
// Asio uses std::exchange without including it.
#include <boost/asio/io_context.hpp>

#include "camera_sim/events/EventHub.h"

namespace camera_sim {

/// Posts @p body over a connection of its own, once, within five seconds. @p done is called from
/// the context, with whether the consumer has answered with a status of 2xx, unless the context
/// ends before.
void PostNotification(boost::asio::io_context& io, const NotifyTarget& target,
                      const std::string& body, std::function<void(bool accepted)> done);

}  // namespace camera_sim

#endif
