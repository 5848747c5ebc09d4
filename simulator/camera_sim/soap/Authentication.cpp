#include "camera_sim/soap/Authentication.h"

#include <utility>

#include "camera_sim/soap/Times.h"
#include "camera_sim/system/Crypto.h"

namespace camera_sim {
namespace {

constexpr std::size_t kRememberedNonces = 10000;
constexpr std::size_t kLongestNonce = 1024;

Credentials Refuse(std::string reason) {
    return {false, std::move(reason)};
}

}  // namespace

std::string PasswordDigest(std::string_view nonce, std::string_view created,
                           std::string_view password) {
    std::string input;
    input.reserve(nonce.size() + created.size() + password.size());
    input.append(nonce).append(created).append(password);
    return EncodeBase64(HashOf(Hash::kSha1, input));
}

Credentials CAuthenticator::Check(const XmlElement* header, const std::vector<User>& users,
                                  std::chrono::sys_seconds now) {
    if (users.empty()) {
        return {true, {}, Role::kAdministrator};
    }
    const XmlElement* token = Child(Child(header, "Security"), "UsernameToken");
    if (token == nullptr) {
        return {};
    }
    const User* user = FindUser(users, ChildText(token, "Username"));
    if (user == nullptr) {
        return Refuse("unknown user");
    }
    const XmlElement* password = Child(token, "Password");
    const char* type = password == nullptr ? nullptr : password->Attribute("Type");
    if (type == nullptr || !std::string_view(type).ends_with("#PasswordDigest")) {
        return Refuse("no password digest");
    }
    auto nonce = DecodeBase64(ChildText(token, "Nonce"));
    if (!nonce || nonce->empty() || nonce->size() > kLongestNonce) {
        return Refuse("no readable nonce");
    }
    const std::string_view created = ChildText(token, "Created");
    const auto createdTime = ParseDateTime(created);
    if (!createdTime) {
        return Refuse("no readable creation time");
    }
    if (Text(password) != PasswordDigest(*nonce, created, user->password)) {
        return Refuse("wrong digest");
    }
    if (std::chrono::abs(*createdTime - now) > createdWindow_) {
        return Refuse("created too far from the camera's time");
    }
    if (refuseReplays_ && !Remember(*std::move(nonce))) {
        return Refuse("nonce used before");
    }
    return {true, {}, user->role};
}

bool CAuthenticator::Remember(std::string nonce) {
    if (!nonces_.insert(nonce).second) {
        return false;
    }
    order_.push_back(std::move(nonce));
    if (order_.size() > kRememberedNonces) {
        nonces_.erase(order_.front());
        order_.pop_front();
    }
    return true;
}

}  // namespace camera_sim
