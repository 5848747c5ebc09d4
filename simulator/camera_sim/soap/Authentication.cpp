#include "camera_sim/soap/Authentication.h"

#include <openssl/evp.h>

#include <array>
#include <charconv>
#include <utility>

namespace camera_sim {
namespace {

constexpr std::size_t kRememberedNonces = 10000;
constexpr std::size_t kLongestNonce = 1024;

const unsigned char* Bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

/// The number at a fixed place of a text, or nothing.
std::optional<int> Digits(std::string_view text, std::size_t position, std::size_t count) {
    if (position + count > text.size()) return std::nullopt;
    const std::string_view digits = text.substr(position, count);
    return digits.find_first_not_of("0123456789") == std::string_view::npos ? ToInt(digits)
                                                                            : std::nullopt;
}

Credentials Refuse(std::string reason) {
    return {false, std::move(reason)};
}

}  // namespace

std::string PasswordDigest(std::string_view nonce, std::string_view created,
                           std::string_view password) {
    std::string input;
    input.reserve(nonce.size() + created.size() + password.size());
    input.append(nonce).append(created).append(password);
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned size = 0;
    EVP_Digest(input.data(), input.size(), digest.data(), &size, EVP_sha1(), nullptr);
    return EncodeBase64({reinterpret_cast<const char*>(digest.data()), size});
}

std::string EncodeBase64(std::string_view bytes) {
    // One character more, for the zero byte that the encoder adds.
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), Bytes(bytes),
                    static_cast<int>(bytes.size()));
    text.pop_back();
    return text;
}

std::optional<std::string> DecodeBase64(std::string_view text) {
    if (text.empty() || text.size() % 4 != 0) return std::nullopt;
    std::string bytes(text.size() / 4 * 3, '\0');
    const int length = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()), Bytes(text),
                                       static_cast<int>(text.size()));
    if (length < 0) return std::nullopt;
    const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with("=") ? 1 : 0;
    bytes.resize(static_cast<std::size_t>(length) - padding);
    return bytes;
}

std::optional<std::chrono::sys_seconds> ParseUtc(std::string_view text) {
    using namespace std::chrono;
    constexpr std::string_view kShape = "0000-00-00T00:00:00";
    for (std::size_t i = 0; i < kShape.size(); ++i) {
        if (kShape[i] != '0' && (i >= text.size() || text[i] != kShape[i])) return std::nullopt;
    }
    const auto y = Digits(text, 0, 4), mo = Digits(text, 5, 2), d = Digits(text, 8, 2);
    const auto h = Digits(text, 11, 2), mi = Digits(text, 14, 2), s = Digits(text, 17, 2);
    if (!y || !mo || !d || !h || !mi || !s || *h > 23 || *mi > 59 || *s > 60) return std::nullopt;

    std::string_view rest = text.substr(kShape.size());
    if (rest.starts_with('.')) {
        const auto end = rest.find_first_not_of("0123456789", 1);
        if (end == 1 || end == std::string_view::npos) return std::nullopt;
        rest.remove_prefix(end);
    }
    const year_month_day date{year(*y), month(static_cast<unsigned>(*mo)),
                              day(static_cast<unsigned>(*d))};
    if (rest != "Z" || !date.ok()) return std::nullopt;
    return sys_days(date) + hours(*h) + minutes(*mi) + seconds(*s);
}

Credentials Authenticator::Check(const XmlElement* header, const User& user,
                                 std::chrono::sys_seconds now) {
    const XmlElement* token = Child(Child(header, "Security"), "UsernameToken");
    if (token == nullptr) return {user.name.empty(), {}};
    if (user.name.empty()) return {true, {}};
    if (ChildText(token, "Username") != user.name) return Refuse("unknown user");
    const XmlElement* password = Child(token, "Password");
    const char* type = password == nullptr ? nullptr : password->Attribute("Type");
    if (type == nullptr || !std::string_view(type).ends_with("#PasswordDigest"))
        return Refuse("no password digest");
    auto nonce = DecodeBase64(ChildText(token, "Nonce"));
    if (!nonce || nonce->empty() || nonce->size() > kLongestNonce)
        return Refuse("no readable nonce");
    const std::string_view created = ChildText(token, "Created");
    const auto createdTime = ParseUtc(created);
    if (!createdTime) return Refuse("no readable creation time");
    if (Text(password) != PasswordDigest(*nonce, created, user.password))
        return Refuse("wrong digest");
    if (std::chrono::abs(*createdTime - now) > createdWindow_)
        return Refuse("created too far from the camera's time");
    if (refuseReplays_ && !Remember(*std::move(nonce))) return Refuse("nonce used before");
    return {true, {}};
}

bool Authenticator::Remember(std::string nonce) {
    if (!nonces_.insert(nonce).second) return false;
    order_.push_back(std::move(nonce));
    if (order_.size() > kRememberedNonces) {
        nonces_.erase(order_.front());
        order_.pop_front();
    }
    return true;
}

}  // namespace camera_sim
