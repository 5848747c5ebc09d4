/// @file
/// A subscription of the tool's own at a device, beside the one that the library keeps for alarm
/// states: to learn whether and why a device refuses one, and to hear all that it tells.
#ifndef ONVIFCTL_WATCH_PULLPOINT_H
#define ONVIFCTL_WATCH_PULLPOINT_H

#include <chrono>
#include <string>
#include <vector>

#include "Connection.h"
#include "ExitCode.h"
#include "watch/WatchNews.h"

namespace tinyxml2 {
class XMLElement;
}

namespace onvifctl {

/// The device gives no subscription, whatever else it answers.
class CNoSubscription : public CFailure {
 public:
    using CFailure::CFailure;
};

/// Whether the device answers a command of Get, be it by a refusal.
bool Answers(const CConnection& connection, const char* command);

class CPullPoint {
 public:
    /// Subscribes; throws CNoSubscription, or another CFailure when the device does not answer. The
    /// subscription lives for @p lifetime, or for as long as the device allows. @p connection must
    /// outlive the pull point.
    CPullPoint(const CConnection& connection, const std::string& host,
               std::chrono::seconds lifetime);

    /// Waits up to @p patience for events. Throws CFailure when the device does not answer, or no
    /// longer knows the subscription.
    std::vector<DeviceEvent> Pull(std::chrono::seconds patience);

    /// Asks for another lifetime. A device that refuses that ends the subscription, which the next
    /// Pull shows.
    void Renew() const;
    /// A device that refuses it ends the subscription after its lifetime.
    void Unsubscribe() const;

 private:
    /// Takes over the limits that a refused pull tells. False when they are none.
    bool Lowers(const tinyxml2::XMLElement* refused, std::chrono::seconds wait);

    const CConnection& connection_;
    const std::string host_;
    const std::string lifetime_;
    std::string address_;
    std::string id_;
    std::string idAttribute_;
    std::chrono::seconds longestWait_ = std::chrono::seconds::max();
    unsigned int mostMessages_ = 100;
};

}  // namespace onvifctl

#endif
