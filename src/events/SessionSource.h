/// @file
/// How the alarm side reaches device sessions.
#ifndef ONVIF_CLIENT_EVENTS_SESSIONSOURCE_H
#define ONVIF_CLIENT_EVENTS_SESSIONSOURCE_H

#include <cstdint>

#include "client/HttpClient.h"

namespace onvif_client {

/// Implemented by the session registry. Any thread.
class ISessionSource {
 public:
    virtual ~ISessionSource() = default;
    /// The session with one more reference, which the caller gives back with Release; null for an
    /// unknown id.
    virtual CHttpClient* Acquire(std::uint32_t loginId) = 0;
    /// @return false for an unknown id.
    virtual bool Release(std::uint32_t loginId) = 0;
    /// What the session began with; for an unknown id, what one would begin with now.
    virtual CExtensions ExtensionsOf(std::uint32_t) { return {}; }
};

/// A session in use.
class CSessionReference {
 public:
    CSessionReference(ISessionSource& sessions, std::uint32_t loginId)
        : sessions_(sessions), loginId_(loginId), session_(sessions.Acquire(loginId)) {}
    ~CSessionReference() {
        if (session_ != nullptr) {
            sessions_.Release(loginId_);
        }
    }
    CSessionReference(const CSessionReference&) = delete;
    CSessionReference& operator=(const CSessionReference&) = delete;

    /// Null for an unknown id.
    CHttpClient* Session() const { return session_; }

 private:
    ISessionSource& sessions_;
    std::uint32_t loginId_;
    CHttpClient* session_;
};

}  // namespace onvif_client

#endif
