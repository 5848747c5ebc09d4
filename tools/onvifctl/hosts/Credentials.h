/// @file
/// Users and passwords of the command line, and where else passwords are kept.
#ifndef ONVIFCTL_HOSTS_CREDENTIALS_H
#define ONVIFCTL_HOSTS_CREDENTIALS_H

#include <optional>
#include <string>

namespace onvifctl {

/// What the command line says of logins, which counts before all else.
struct GivenLogin {
    std::optional<std::string> user;
    std::optional<std::string> password;  // "-": a line of standard input
    std::string passwordFile;

    /// Puts the password itself into the place of where it is. Throws CFailure when it is not
    /// there.
    void ReadPassword();
};

/// The first line of a file. Throws CFailure when it cannot be read.
std::string PasswordOfFile(const std::string& file);

/// The first line of what a command writes. Throws CFailure when that fails.
std::string PasswordOfCommand(const std::string& command);

/// Writes over the passwords in main's arguments, which others may see as long as a program runs.
/// (Windows keeps the line that it was started with elsewhere.)
void HidePasswords(int argc, char** argv);

}  // namespace onvifctl

#endif
