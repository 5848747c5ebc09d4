/// @file
/// The session registry: login id to device session.
///
/// One per process. Every operation takes the registry lock for its work on the map only, never
/// during network traffic. A session is kept alive by references: the registry's own, given back by
/// the logout, and one per request that runs. Whoever gives the last one back takes the session out
/// of the map, both under the registry lock, and destroys it after that.
#ifndef ONVIF_CLIENT_API_HTTPCLIENTMANAGER_H
#define ONVIF_CLIENT_API_HTTPCLIENTMANAGER_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "common/Extensions.h"
#include "events/SessionSource.h"
#include "platform/Mutex.h"

namespace onvif_client {

/// No login id: asks for a new session, and is the result of a failed login.
constexpr std::uint32_t kNoLoginId = 0xFFFFFFFFU;

/// All operations may be called from any thread.
class CHttpClientManager final : public ISessionSource {
 public:
    /// What sessions begin with from now on.
    void UseExtensions(CExtensions extensions);

    /// With kNoLoginId: logs in to a device and registers the session. With any other id: tells
    /// whether that id is registered, without traffic and without writing @p errorCode.
    /// @return the login id; kNoLoginId on failure and for a null address, user or password.
    std::uint32_t Login(std::uint32_t loginId, const char* ip, std::uint16_t port, const char* user,
                        const char* password, std::uint32_t& errorCode);

    /// Gives the registry's reference back, once. Unknown ids are ignored.
    void Logout(std::uint32_t loginId);

    /// Runs a Get request. An unknown id is not an error here: true, and nothing is written.
    /// @param response  receives an array that the caller owns, or null.
    bool Get(std::uint32_t loginId, std::string_view request, char*& response, int& responseLength);

    /// Runs a Set request. An unknown id gives true and no result.
    bool Set(std::uint32_t loginId, std::string_view request, std::string& result);

    // ISessionSource
    CHttpClient* Acquire(std::uint32_t loginId) override EXCLUDES(lock_);
    bool Release(std::uint32_t loginId) override EXCLUDES(lock_);
    CExtensions ExtensionsOf(std::uint32_t loginId) override EXCLUDES(lock_);

    /// The address of a session's device; empty for an unknown id.
    std::string DeviceAddress(std::uint32_t loginId);

 private:
    struct Entry {
        std::unique_ptr<CHttpClient> session;
        bool loggedOut = false;  // the registry's own reference has been given back
    };
    using SessionMap = std::map<std::uint32_t, Entry>;

    /// Gives one reference back. @return the session when it was the last one, for the caller to
    /// destroy without the lock.
    std::unique_ptr<CHttpClient> ReleaseLocked(SessionMap::iterator entry) REQUIRES(lock_);

    CMutex lock_;  // the registry lock; before a session's count lock
    SessionMap sessions_ GUARDED_BY(lock_);
    std::uint32_t lastId_ GUARDED_BY(lock_) = 0;
    CExtensions extensions_ GUARDED_BY(lock_);
};

}  // namespace onvif_client

#endif
