#include "system/Environment.h"

#include <stdlib.h>
#include <time.h>
#include <unistd.h>

namespace onvifctl {

std::vector<std::string> Arguments(int argc, const char* const* argv) {
    return argc > 0 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

void SetVariable(const std::string& name, const std::string& value) {
    setenv(name.c_str(), value.c_str(), 1);
}

void SetMissingVariable(const std::string& name, const std::string& value) {
    setenv(name.c_str(), value.c_str(), 0);
}

std::string Variable(const std::string& name) {
    const char* value = getenv(name.c_str());
    return value == nullptr ? "" : value;
}

unsigned long ProcessId() {
    return static_cast<unsigned long>(getpid());
}

std::tm LocalTime(std::time_t time) {
    std::tm parts = {};
    localtime_r(&time, &parts);
    return parts;
}

std::tm UtcTime(std::time_t time) {
    std::tm parts = {};
    gmtime_r(&time, &parts);
    return parts;
}

}  // namespace onvifctl
