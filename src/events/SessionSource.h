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

/// Those that the session began with; none for an unknown id.
inline CExtensions ExtensionsOf(ISessionSource& sessions, std::uint32_t loginId) {
    const CSessionReference reference(sessions, loginId);
    return reference.Session() == nullptr ? CExtensions{} : reference.Session()->Extensions();
}

}  // namespace onvif_client

#endif
