/// @file
/// The search for devices: probes go out, and what answers is gathered.
#ifndef ONVIFCTL_DISCOVERY_SEARCH_H
#define ONVIFCTL_DISCOVERY_SEARCH_H

#include <chrono>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "discovery/FoundDevice.h"
#include "system/DatagramSocket.h"

namespace onvifctl {

/// Where probes go. Addresses are dotted.
struct ProbeTarget {
    static constexpr std::uint16_t kUsualPort = 3702;

    std::string to = "239.255.255.250";  // the group that every device belongs to
    std::uint16_t port = kUsualPort;
    std::string from;  // an interface; empty: the one that the system finds best
};

/// One search on one thread. Probes are repeated after random pauses, as datagrams may get lost.
class CSearch {
 public:
    using Clock = std::chrono::steady_clock;

    /// Throws CFailure when nothing can be sent from an address of the targets.
    explicit CSearch(const std::vector<ProbeTarget>& targets);

    /// Sends what is due, and takes what has come and what comes until then, but returns after a
    /// moment at the latest.
    /// @return whether anything has come.
    bool GoOn(Clock::time_point until);

    std::size_t Count() const { return devices_.size(); }
    /// By their addresses, those without one last.
    std::vector<FoundDevice> Devices() const;

 private:
    struct Probe {
        ProbeTarget target;
        std::size_t socket;
        std::string text;
    };

    void SendAll();
    void Take(FoundDevice device);

    std::vector<CDatagramSocket> sockets_;
    std::vector<Probe> probes_;
    std::set<std::string> messageIds_;
    int sent_ = 0;  // how often
    std::chrono::milliseconds pause_;
    Clock::time_point nextSending_;
    std::map<std::string, FoundDevice> devices_;  // by endpoint, or by address without one
};

}  // namespace onvifctl

#endif
