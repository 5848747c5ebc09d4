/// @file
/// Other programs.
#ifndef ONVIFCTL_SYSTEM_PROGRAM_H
#define ONVIFCTL_SYSTEM_PROGRAM_H

#include <optional>
#include <string>
#include <vector>

namespace onvifctl {

/// Runs a command line of the system's shell, sh or cmd, and waits for its end.
/// @return the first line that it writes, cut at 4 KiB; nothing when it fails.
std::optional<std::string> FirstLineOf(const std::string& command);

/// Where PATH has a program.
std::optional<std::string> FindProgram(const std::string& name);

/// Ends the tool with another program in its place, or runs that and waits for its end.
/// @return the program's exit code; nothing when it cannot be started.
std::optional<int> ContinueAs(const std::string& program,
                              const std::vector<std::string>& arguments);

}  // namespace onvifctl

#endif
