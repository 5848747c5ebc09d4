#include "platform/SystemCrypto.h"

// windows.h before those two.
#include <windows.h>

#include <bcrypt.h>
#include <wincrypt.h>

#include <array>
#include <climits>

namespace onvif_client {

namespace {

constexpr DWORD kOneLine = CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF;

BCRYPT_ALG_HANDLE Open(LPCWSTR name) {
    BCRYPT_ALG_HANDLE method = nullptr;
    return BCryptOpenAlgorithmProvider(&method, name, nullptr, 0) == 0 ? method : nullptr;
}

BCRYPT_ALG_HANDLE MethodOf(DigestMethod method) {
    // Never closed, as threads may still sign while the process ends.
    static const std::array<BCRYPT_ALG_HANDLE, 3> methods = {
        Open(BCRYPT_MD5_ALGORITHM), Open(BCRYPT_SHA1_ALGORITHM), Open(BCRYPT_SHA256_ALGORITHM)};
    return methods[static_cast<std::size_t>(method)];
}

class CHash {
 public:
    explicit CHash(BCRYPT_ALG_HANDLE method) {
        if (method == nullptr || BCryptCreateHash(method, &hash_, nullptr, 0, nullptr, 0, 0) != 0) {
            hash_ = nullptr;
        }
    }
    ~CHash() {
        if (hash_ != nullptr) {
            BCryptDestroyHash(hash_);
        }
    }
    CHash(const CHash&) = delete;
    CHash& operator=(const CHash&) = delete;

    bool Add(std::span<const std::uint8_t> data) {
        // It changes nothing of what it reads.
        auto* bytes = const_cast<PUCHAR>(data.data());
        return hash_ != nullptr && data.size() <= ULONG_MAX &&
               BCryptHashData(hash_, bytes, static_cast<ULONG>(data.size()), 0) == 0;
    }
    bool Finish(std::span<std::uint8_t> digest) {
        return BCryptFinishHash(hash_, digest.data(), static_cast<ULONG>(digest.size()), 0) == 0;
    }

 private:
    BCRYPT_HASH_HANDLE hash_ = nullptr;
};

}  // namespace

bool SystemDigest(DigestMethod method, std::span<const std::uint8_t> data,
                  std::span<std::uint8_t> digest) {
    CHash hash(MethodOf(method));
    return hash.Add(data) && hash.Finish(digest);
}

std::string SystemEncodeBase64(std::span<const std::uint8_t> data) {
    const std::size_t length = (data.size() + 2) / 3 * 4;
    std::string text(length, '\0');
    auto room = static_cast<DWORD>(length + 1);  // with the zero byte
    if (length > 0) {
        CryptBinaryToStringA(data.data(), static_cast<DWORD>(data.size()), kOneLine, text.data(),
                             &room);
    }
    return text;
}

bool SystemDecodeBase64(std::string_view text, std::span<std::uint8_t> bytes) {
    auto room = static_cast<DWORD>(bytes.size());
    return text.empty() ||
           CryptStringToBinaryA(text.data(), static_cast<DWORD>(text.size()), CRYPT_STRING_BASE64,
                                bytes.data(), &room, nullptr, nullptr) != 0;
}

}  // namespace onvif_client
