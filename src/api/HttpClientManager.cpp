#include "api/HttpClientManager.h"

#include "common/LogText.h"
#include "events/EventController.h"
#include "platform/Clock.h"

namespace onvif_client {

namespace {

constexpr int kLoginTimeLine = 75;

/// A session in use by a request.
class CSessionReference {
 public:
    CSessionReference(CHttpClientManager& registry, std::uint32_t loginId)
        : registry_(registry), loginId_(loginId), session_(registry.Acquire(loginId)) {}
    ~CSessionReference() {
        if (session_ != nullptr) {
            registry_.Release(loginId_);
        }
    }
    CSessionReference(const CSessionReference&) = delete;
    CSessionReference& operator=(const CSessionReference&) = delete;

    CHttpClient* Session() const { return session_; }

 private:
    CHttpClientManager& registry_;
    std::uint32_t loginId_;
    CHttpClient* session_;
};

}  // namespace

CHttpClientManager& CHttpClientManager::Instance() {
    static CHttpClientManager registry;
    return registry;
}

std::uint32_t CHttpClientManager::Login(std::uint32_t loginId, const char* ip, std::uint16_t port,
                                        const char* user, const char* password,
                                        std::uint32_t& errorCode) {
    if (ip == nullptr || user == nullptr || password == nullptr) {
        return kNoLoginId;
    }
    if (loginId != kNoLoginId) {
        const std::lock_guard guard(lock_);
        return sessions_.contains(loginId) ? loginId : kNoLoginId;
    }
    auto session = std::make_unique<CHttpClient>(user, password, ip, port);
    const std::uint32_t started = TickCount();
    errorCode = static_cast<std::uint32_t>(session->Login());
    LogNormal("HttpClientManager", kLoginTimeLine,
              "####################################login process takes %d !!!!\r\n",
              static_cast<int>(TickCount() - started));
    if (errorCode != 0) {
        return kNoLoginId;
    }
    const std::lock_guard guard(lock_);
    const std::uint32_t id = lastId_ + 1;
    sessions_.emplace(id, Entry{std::move(session)});
    lastId_ = id;
    return id;
}

void CHttpClientManager::Logout(std::uint32_t loginId) {
    std::unique_ptr<CHttpClient> last;
    const std::lock_guard guard(lock_);
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
    const std::lock_guard guard(lock_);
    const auto entry = sessions_.find(loginId);
    if (entry == sessions_.end()) {
        return nullptr;
    }
    entry->second.session->AddReference();
    return entry->second.session.get();
}

bool CHttpClientManager::Release(std::uint32_t loginId) {
    std::unique_ptr<CHttpClient> last;
    const std::lock_guard guard(lock_);
    const auto entry = sessions_.find(loginId);
    if (entry == sessions_.end()) {
        return false;
    }
    last = ReleaseLocked(entry);
    return true;
}

std::unique_ptr<CHttpClient> CHttpClientManager::ReleaseLocked(SessionMap::iterator entry) {
    std::unique_ptr<CHttpClient> last;
    if (entry->second.session->ReleaseReference() == 0) {
        last = std::move(entry->second.session);
        sessions_.erase(entry);
    }
    return last;
}

bool CHttpClientManager::AddAlarmObserver(std::uint32_t loginId,
                                          CONVIFAlarmStateObserver* observer) {
    std::string deviceAddress;
    {
        const std::lock_guard guard(lock_);
        const auto entry = sessions_.find(loginId);
        if (entry != sessions_.end()) {
            deviceAddress = entry->second.session->DeviceAddress();
        }
    }
    return EventController().AddDevice(loginId, observer, deviceAddress);
}

}  // namespace onvif_client
