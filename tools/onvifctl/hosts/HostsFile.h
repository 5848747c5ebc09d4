/// @file
/// The file that gives cameras names: docs/hosts.md describes it.
#ifndef ONVIFCTL_HOSTS_HOSTSFILE_H
#define ONVIFCTL_HOSTS_HOSTSFILE_H

#include <optional>
#include <string>
#include <vector>

namespace onvifctl {

struct HostEntry {
    std::string name;
    std::string address;
    std::optional<std::string> user;
    // One of these at most.
    std::optional<std::string> password;
    std::string passwordFile;
    std::string passwordCommand;
    std::vector<std::string> tags;
};

/// The cameras of a file, in its order. Throws CFailure, with the line, for a file that is none or
/// lets others read passwords.
/// @param isDefault  a file that is not there names no cameras.
std::vector<HostEntry> ReadHostsFile(const std::string& file, bool isDefault);

/// Where the file is when nobody says so; empty when the system tells of no such place.
std::string DefaultHostsFile();

}  // namespace onvifctl

#endif
