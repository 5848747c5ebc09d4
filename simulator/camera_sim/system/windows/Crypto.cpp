#include "camera_sim/system/Crypto.h"

#include <windows.h>
// These need that one before them.
#include <bcrypt.h>
#include <wincrypt.h>

#include <memory>
#include <stdexcept>

namespace camera_sim {
namespace {

constexpr DWORD kOnOneLine = CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF;

BYTE* Bytes(std::string& text) {
    return reinterpret_cast<BYTE*>(text.data());
}

struct Algorithm {
    const wchar_t* name;
    std::size_t size;
};

Algorithm AlgorithmOf(Hash hash) {
    switch (hash) {
        case Hash::kMd5:
            return {BCRYPT_MD5_ALGORITHM, 16};
        case Hash::kSha1:
            return {BCRYPT_SHA1_ALGORITHM, 20};
        case Hash::kSha256:
            break;
    }
    return {BCRYPT_SHA256_ALGORITHM, 32};
}

struct CloseProvider {
    void operator()(void* provider) const { BCryptCloseAlgorithmProvider(provider, 0); }
};

}  // namespace

std::string HashOf(Hash hash, std::string_view bytes) {
    const Algorithm algorithm = AlgorithmOf(hash);
    BCRYPT_ALG_HANDLE handle = nullptr;
    if (BCryptOpenAlgorithmProvider(&handle, algorithm.name, nullptr, 0) != 0) {
        throw std::runtime_error("a hash is not available");
    }
    const std::unique_ptr<void, CloseProvider> provider(handle);
    std::string input(bytes);
    std::string digest(algorithm.size, '\0');
    if (BCryptHash(handle, nullptr, 0, Bytes(input), static_cast<ULONG>(input.size()),
                   Bytes(digest), static_cast<ULONG>(digest.size())) != 0) {
        throw std::runtime_error("a hash cannot be computed");
    }
    return digest;
}

std::string RandomBytes(std::size_t count) {
    std::string bytes(count, '\0');
    if (BCryptGenRandom(nullptr, Bytes(bytes), static_cast<ULONG>(count),
                        BCRYPT_USE_SYSTEM_PREFERRED_RNG) != 0) {
        throw std::runtime_error("no random numbers");
    }
    return bytes;
}

std::string EncodeBase64(std::string_view bytes) {
    if (bytes.empty()) {
        return {};
    }
    const auto* data = reinterpret_cast<const BYTE*>(bytes.data());
    const auto size = static_cast<DWORD>(bytes.size());
    // One character more, for the zero byte at the end.
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    auto length = static_cast<DWORD>(text.size());
    if (CryptBinaryToStringA(data, size, kOnOneLine, text.data(), &length) == FALSE) {
        throw std::runtime_error("no Base64");
    }
    text.resize(length);
    return text;
}

std::optional<std::string> DecodeBase64(std::string_view text) {
    if (text.empty() || text.size() % 4 != 0) {
        return std::nullopt;
    }
    std::string bytes(text.size() / 4 * 3, '\0');
    auto length = static_cast<DWORD>(bytes.size());
    if (CryptStringToBinaryA(text.data(), static_cast<DWORD>(text.size()), CRYPT_STRING_BASE64,
                             Bytes(bytes), &length, nullptr, nullptr) == FALSE) {
        return std::nullopt;
    }
    bytes.resize(length);
    return bytes;
}

}  // namespace camera_sim
