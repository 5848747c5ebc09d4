/// @file
/// A login at a device, from the command line's point of view.
#ifndef ONVIFCTL_CONNECTION_H
#define ONVIFCTL_CONNECTION_H

#include <optional>
#include <string>

namespace onvifctl {

struct ConnectionOptions {
    std::string host;  // "HOST" or "HOST:PORT"
    std::string user;
    std::optional<std::string> password;
    bool verbose = false;
};

/// A session that logs in when it is made and out when it goes. Throws CFailure when the login
/// fails.
class CConnection {
 public:
    explicit CConnection(const ConnectionOptions& options);
    ~CConnection();
    CConnection(const CConnection&) = delete;
    CConnection& operator=(const CConnection&) = delete;

    /// Sends a request document, Get or Set by its root. Throws CFailure when it fails.
    std::string Send(const std::string& request) const;

    /// The bytes of a picture of the profile with this index. Throws CFailure when there is none.
    std::string Picture(unsigned int index) const;

 private:
    unsigned int loginId_;
};

}  // namespace onvifctl

#endif
