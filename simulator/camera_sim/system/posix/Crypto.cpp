#include "camera_sim/system/Crypto.h"

#include <openssl/evp.h>
#include <openssl/rand.h>

#include <array>
#include <stdexcept>

namespace camera_sim {
namespace {

const unsigned char* Bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

unsigned char* Bytes(std::string& text) {
    return reinterpret_cast<unsigned char*>(text.data());
}

const EVP_MD* Function(Hash hash) {
    switch (hash) {
        case Hash::kMd5:
            return EVP_md5();
        case Hash::kSha1:
            return EVP_sha1();
        case Hash::kSha256:
            break;
    }
    return EVP_sha256();
}

}  // namespace

std::string HashOf(Hash hash, std::string_view bytes) {
    std::array<char, EVP_MAX_MD_SIZE> digest{};
    unsigned size = 0;
    if (EVP_Digest(bytes.data(), bytes.size(), reinterpret_cast<unsigned char*>(digest.data()),
                   &size, Function(hash), nullptr) != 1) {
        throw std::runtime_error("a hash is not available");
    }
    return {digest.data(), size};
}

std::string RandomBytes(std::size_t count) {
    std::string bytes(count, '\0');
    if (RAND_bytes(Bytes(bytes), static_cast<int>(count)) != 1) {
        throw std::runtime_error("no random numbers");
    }
    return bytes;
}

std::string EncodeBase64(std::string_view bytes) {
    // One character more, for the zero byte that the encoder adds.
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    EVP_EncodeBlock(Bytes(text), Bytes(bytes), static_cast<int>(bytes.size()));
    text.pop_back();
    return text;
}

std::optional<std::string> DecodeBase64(std::string_view text) {
    if (text.empty() || text.size() % 4 != 0) {
        return std::nullopt;
    }
    std::string bytes(text.size() / 4 * 3, '\0');
    const int length = EVP_DecodeBlock(Bytes(bytes), Bytes(text), static_cast<int>(text.size()));
    if (length < 0) {
        return std::nullopt;
    }
    const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with("=") ? 1 : 0;
    bytes.resize(static_cast<std::size_t>(length) - padding);
    return bytes;
}

}  // namespace camera_sim
