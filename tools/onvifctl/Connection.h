/// @file
/// The started library and a login at a device, from the command line's point of view.
#ifndef ONVIFCTL_CONNECTION_H
#define ONVIFCTL_CONNECTION_H

#include <optional>
#include <string>

#include "contact/Address.h"

namespace onvifctl {

struct FirstContact;

struct ConnectionOptions {
    std::string name;  // what the user calls the camera
    std::string host;  // as contact/Address.h reads it
    std::string user;
    std::optional<std::string> password;
    // Where the password is when it is not there.
    std::string passwordFile;
    std::string passwordCommand;
    bool verbose = false;
    std::string trace;                      // a file; empty: none
    std::optional<std::string> extensions;  // names with commas; nothing: as the environment says
};

/// Whether there is a user without a password, and nothing that tells it.
bool NeedsPassword(const ConnectionOptions& options);

/// The password that was given, or is in a file, or that a command writes, or asked for on the
/// terminal when it is needed. Throws CFailure when file or command do not tell it.
std::string PasswordFor(const ConnectionOptions& options);

/// The same options with the password among them.
ConnectionOptions WithPassword(ConnectionOptions options);

/// The library runs while one lives; at most one at a time.
class CStartedLibrary {
 public:
    explicit CStartedLibrary(const ConnectionOptions& options);
    /// Breaks off exchanges that run on other threads.
    ~CStartedLibrary();
    CStartedLibrary(const CStartedLibrary&) = delete;
    CStartedLibrary& operator=(const CStartedLibrary&) = delete;
};

/// A session that logs in when it is made and out when it goes; the library must have been started.
/// Throws CLoginFailure (contact/Advice.h) when the login fails. Any number may be made at once on
/// as many threads, with passwords that need not be asked for.
class CConnection {
 public:
    /// @param known  a first look at the device; null: one is taken when the login fails.
    explicit CConnection(const ConnectionOptions& options, const FirstContact* known = nullptr);
    ~CConnection();
    CConnection(const CConnection&) = delete;
    CConnection& operator=(const CConnection&) = delete;

    unsigned int LoginId() const { return loginId_; }

    /// Sends a request document, Get or Set by its root. Throws CFailure when it fails.
    std::string Send(const std::string& request) const;

    /// The bytes of a picture of the profile with this index. Throws CFailure when there is none or
    /// what came is not a whole one.
    std::string Picture(unsigned int index) const;

 private:
    unsigned int loginId_;
    std::string device_;  // as traces name it
};

}  // namespace onvifctl

#endif
