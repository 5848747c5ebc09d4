#include "platform/SystemCrypto.h"

#include <openssl/evp.h>

#include <array>

namespace onvif_client {

namespace {

const EVP_MD* MethodOf(DigestMethod method) {
    // Looking an algorithm up costs microseconds, so each is fetched once; never freed, as threads
    // may still sign while the process ends.
    static const std::array<const EVP_MD*, 3> methods = {EVP_MD_fetch(nullptr, "MD5", nullptr),
                                                         EVP_MD_fetch(nullptr, "SHA1", nullptr),
                                                         EVP_MD_fetch(nullptr, "SHA256", nullptr)};
    return methods[static_cast<std::size_t>(method)];
}

}  // namespace

bool SystemDigest(DigestMethod method, std::span<const std::uint8_t> data,
                  std::span<std::uint8_t> digest) {
    const EVP_MD* const found = MethodOf(method);
    return found != nullptr &&
           EVP_Digest(data.data(), data.size(), digest.data(), nullptr, found, nullptr) == 1;
}

std::string SystemEncodeBase64(std::span<const std::uint8_t> data) {
    std::string text((data.size() + 2) / 3 * 4, '\0');
    // Writes a zero byte behind the text, where a string has one anyway.
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), data.data(),
                    static_cast<int>(data.size()));
    return text;
}

bool SystemDecodeBase64(std::string_view text, std::span<std::uint8_t> bytes) {
    const int decoded =
        EVP_DecodeBlock(bytes.data(), reinterpret_cast<const unsigned char*>(text.data()),
                        static_cast<int>(text.size()));
    return decoded == static_cast<int>(bytes.size());
}

}  // namespace onvif_client
