/// @file
/// What the system tells a program about its run, and what it passes on to the library. Texts are
/// UTF-8.
#ifndef ONVIFCTL_SYSTEM_ENVIRONMENT_H
#define ONVIFCTL_SYSTEM_ENVIRONMENT_H

#include <ctime>
#include <string>
#include <vector>

namespace onvifctl {

/// The words behind the program's name. @p argc, @p argv: main's.
std::vector<std::string> Arguments(int argc, const char* const* argv);

/// Sets an environment variable for the library. No other thread may use the environment.
void SetVariable(const std::string& name, const std::string& value);

/// The same, unless it is set.
void SetMissingVariable(const std::string& name, const std::string& value);

/// The value of an environment variable; empty when it is not set.
std::string Variable(const std::string& name);

unsigned long ProcessId();

std::tm LocalTime(std::time_t time);
std::tm UtcTime(std::time_t time);

}  // namespace onvifctl

#endif
