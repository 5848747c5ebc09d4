/// @file
/// What onvifctl's exit code says.
#ifndef ONVIFCTL_EXITCODE_H
#define ONVIFCTL_EXITCODE_H

#include <stdexcept>
#include <string>

namespace onvifctl {

enum class ExitCode {
    kDone = 0,
    kRefused = 1,           // the device refused a command or did not answer it
    kUsage = 2,             // wrong arguments, unreadable file or document
    kWrongCredentials = 3,  // the device refused user or password
    kUnreachable = 4,       // the device does not answer at all
    kLoginFailed = 5,       // the device answered, but the login did not succeed
    kNoOutput = 6,          // a result could not be written
};

/// Ends the tool with a message and an exit code.
class CFailure : public std::runtime_error {
 public:
    CFailure(ExitCode code, const std::string& message)
        : std::runtime_error(message), code_(code) {}
    ExitCode Code() const { return code_; }

 private:
    ExitCode code_;
};

}  // namespace onvifctl

#endif
