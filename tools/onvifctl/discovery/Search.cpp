#include "discovery/Search.h"

#include <algorithm>
#include <limits>
#include <random>
#include <utility>

#include "CommandLine.h"
#include "discovery/ProbeMessages.h"

namespace onvifctl {

namespace {

using std::chrono::milliseconds;

// How SOAP over UDP repeats what may get lost.
constexpr int kSendings = 3;
constexpr int kShortestFirstPause = 50;
constexpr int kLongestFirstPause = 250;
constexpr milliseconds kLongestPause{500};

constexpr milliseconds kMoment{100};
constexpr std::size_t kMostDevices = 10000;
constexpr std::size_t kMostAddresses = 16;  // of a device, over all its answers

milliseconds FirstPause() {
    std::random_device random;
    return milliseconds(
        std::uniform_int_distribution(kShortestFirstPause, kLongestFirstPause)(random));
}

}  // namespace

CSearch::CSearch(const std::vector<ProbeTarget>& targets)
    : pause_(FirstPause()), nextSending_(Clock::now()) {
    std::map<std::string, std::size_t> socketOf;
    for (const ProbeTarget& target : targets) {
        const auto [place, isNew] = socketOf.emplace(target.from, sockets_.size());
        if (isNew) {
            sockets_.emplace_back(target.from);
        }
        for (const ProbedType& type : kProbedTypes) {
            const std::string id = NewMessageId();
            messageIds_.insert(id);
            probes_.push_back({target, place->second, MakeProbe(type, id)});
        }
    }
}

void CSearch::SendAll() {
    std::set<std::string> told;
    for (const Probe& probe : probes_) {
        const ProbeTarget& target = probe.target;
        if (!sockets_[probe.socket].Send(target.to, target.port, probe.text) && sent_ == 0 &&
            told.insert(target.to + " " + target.from).second) {
            Tell("nothing can be sent to " + target.to +
                 (target.from.empty() ? "" : " from " + target.from));
        }
    }
    ++sent_;
    nextSending_ = Clock::now() + pause_;
    pause_ = std::min(2 * pause_, kLongestPause);
}

bool CSearch::GoOn(Clock::time_point until) {
    if (sent_ < kSendings && Clock::now() >= nextSending_) {
        SendAll();
    }
    if (sent_ < kSendings) {
        until = std::min(until, nextSending_);
    }
    const auto left = std::chrono::ceil<milliseconds>(until - Clock::now());
    const auto datagrams =
        CDatagramSocket::Receive(sockets_, std::clamp(left, milliseconds(0), kMoment));
    for (const std::string& datagram : datagrams) {
        for (FoundDevice& device : ReadProbeMatches(datagram, messageIds_)) {
            Take(std::move(device));
        }
    }
    return !datagrams.empty();
}

void CSearch::Take(FoundDevice device) {
    const auto address = device.Address();
    const std::string key = !device.endpoint.empty() ? device.endpoint
                            : address                ? address->Text()
                                                     : "";
    const auto known = devices_.find(key);
    if (key.empty() || (known == devices_.end() && devices_.size() == kMostDevices)) {
        return;
    }
    if (known == devices_.end()) {
        devices_.emplace(key, std::move(device));
        return;
    }
    // It may have other addresses in another network.
    std::vector<std::string>& addresses = known->second.addresses;
    for (std::string& each : device.addresses) {
        if (addresses.size() < kMostAddresses &&
            std::find(addresses.begin(), addresses.end(), each) == addresses.end()) {
            addresses.push_back(std::move(each));
        }
    }
}

std::vector<FoundDevice> CSearch::Devices() const {
    std::vector<FoundDevice> devices;
    for (const auto& [key, device] : devices_) {
        devices.push_back(device);
    }
    const auto order = [](const FoundDevice& device) {
        const auto address = device.Address();
        return address ? address->Order() : std::numeric_limits<std::uint64_t>::max();
    };
    std::stable_sort(devices.begin(), devices.end(),
                     [&](const auto& one, const auto& other) { return order(one) < order(other); });
    return devices;
}

}  // namespace onvifctl
