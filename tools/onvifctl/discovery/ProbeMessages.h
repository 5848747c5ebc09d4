/// @file
/// The messages of WS-Discovery (2005/04): what is sent to search for devices, and what they
/// answer.
#ifndef ONVIFCTL_DISCOVERY_PROBEMESSAGES_H
#define ONVIFCTL_DISCOVERY_PROBEMESSAGES_H

#include <set>
#include <string>
#include <vector>

#include "discovery/FoundDevice.h"

namespace onvifctl {

/// An identifier that nobody had before and that nobody can guess.
std::string NewMessageId();

/// What a device can be asked to be: a prefix and its namespace, which devices that look for the
/// text alone know so, and a name.
struct ProbedType {
    const char* prefix;
    const char* uri;
    const char* name;
};
/// What ONVIF devices are, old and new ones.
inline constexpr ProbedType kProbedTypes[] = {
    {"dn", "http://www.onvif.org/ver10/network/wsdl", "NetworkVideoTransmitter"},
    {"tds", "http://www.onvif.org/ver10/device/wsdl", "Device"},
};

std::string MakeProbe(const ProbedType& type, const std::string& messageId);

/// The devices of an answer to one of the probes; none when @p text is anything else. However large
/// their lists, a device has a few kilobytes of text at most.
std::vector<FoundDevice> ReadProbeMatches(const std::string& text,
                                          const std::set<std::string>& probes);

}  // namespace onvifctl

#endif
