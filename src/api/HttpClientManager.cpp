#include "api/HttpClientManager.h"

#include "common/LogText.h"
#include "platform/Clock.h"

namespace onvif_client {

void CHttpClientManager::UseExtensions(CExtensions extensions) {
    const CLockGuard guard(lock_);
    extensions_ = extensions;
}

std::uint32_t CHttpClientManager::Login(std::uint32_t loginId, const char* ip, std::uint16_t port,
                                        const char* user, const char* password,
                                        std::uint32_t& errorCode) {
    if (ip == nullptr || user == nullptr || password == nullptr) {
        return kNoLoginId;
    }
    CExtensions extensions;
    {
        const CLockGuard guard(lock_);
        if (loginId != kNoLoginId) {
            return sessions_.contains(loginId) ? loginId : kNoLoginId;
        }
        extensions = extensions_;
    }
    auto session = std::make_unique<CHttpClient>(user, password, ip, port, extensions);
    const std::uint32_t started = TickCount();
    errorCode = static_cast<std::uint32_t>(session->Login());
    LogNormalOf(DeviceName(ip, port), logpoint::kLoginEnded,
                "####################################login process takes %d !!!!\r\n",
                static_cast<int>(TickCount() - started));
    if (errorCode != 0) {
        return kNoLoginId;
    }
    const CLockGuard guard(lock_);
    const std::uint32_t id = lastId_ + 1;
    sessions_.emplace(id, Entry{std::move(session)});
    lastId_ = id;
    return id;
}

void CHttpClientManager::Logout(std::uint32_t loginId) {
    std::unique_ptr<CHttpClient> last;
    const CLockGuard guard(lock_);
    const auto entry = sessions_.find(loginId);
    if (entry != sessions_.end() && !entry->second.loggedOut) {
        entry->second.loggedOut = true;
        last = ReleaseLocked(entry);
    }
}

bool CHttpClientManager::Get(std::uint32_t loginId, std::string_view request, char*& response,
                             int& responseLength) {
    const CSessionReference reference(*this, loginId);
    if (reference.Session() == nullptr) {
        return true;
    }
    response = nullptr;
    responseLength = 0;
    ResponseBuffer buffer;
    const bool success = reference.Session()->Get(request, buffer);
    responseLength = buffer.size;
    response = buffer.data.release();
    return success;
}

bool CHttpClientManager::Set(std::uint32_t loginId, std::string_view request, std::string& result) {
    const CSessionReference reference(*this, loginId);
    return reference.Session() == nullptr || reference.Session()->Set(request, result);
}

CHttpClient* CHttpClientManager::Acquire(std::uint32_t loginId) {
    const CLockGuard guard(lock_);
    const auto entry = sessions_.find(loginId);
    if (entry == sessions_.end()) {
        return nullptr;
    }
    entry->second.session->AddReference();
    return entry->second.session.get();
}

bool CHttpClientManager::Release(std::uint32_t loginId) {
    std::unique_ptr<CHttpClient> last;
    const CLockGuard guard(lock_);
    const auto entry = sessions_.find(loginId);
    if (entry == sessions_.end()) {
        return false;
    }
    last = ReleaseLocked(entry);
    return true;
}

CExtensions CHttpClientManager::ExtensionsOf(std::uint32_t loginId) {
    const CLockGuard guard(lock_);
    const auto entry = sessions_.find(loginId);
    return entry == sessions_.end() ? extensions_ : entry->second.session->Extensions();
}

std::unique_ptr<CHttpClient> CHttpClientManager::ReleaseLocked(SessionMap::iterator entry) {
    std::unique_ptr<CHttpClient> last;
    if (entry->second.session->ReleaseReference() == 0) {
        last = std::move(entry->second.session);
        sessions_.erase(entry);
    }
    return last;
}

std::string CHttpClientManager::DeviceAddress(std::uint32_t loginId) {
    const CSessionReference reference(*this, loginId);
    return reference.Session() == nullptr ? "" : reference.Session()->DeviceAddress();
}

}  // namespace onvif_client
