#include "platform/Digests.h"

#include <openssl/evp.h>

#include <algorithm>
#include <climits>
#include <iterator>

#include "platform/Corekit.h"

namespace onvif_client {

namespace {

/// Looking an algorithm up costs microseconds, so each is fetched once; never freed, as threads may
/// still sign while the process ends.
const EVP_MD* Fetch(const char* name) {
    return EVP_MD_fetch(nullptr, name, nullptr);
}

template <std::size_t Size>
std::optional<std::array<std::uint8_t, Size>> Digest(const EVP_MD* method,
                                                     std::span<const std::uint8_t> data) {
    std::array<std::uint8_t, Size> digest = {};
    if (method == nullptr ||
        EVP_Digest(data.data(), data.size(), digest.data(), nullptr, method, nullptr) != 1) {
        COREKIT_AbnormalOutput("ASSERT", "Digests", "the system does not offer the digest");
        return std::nullopt;
    }
    return digest;
}

}  // namespace

std::optional<std::array<std::uint8_t, 16>> Md5(std::span<const std::uint8_t> data) {
    static const EVP_MD* const method = Fetch("MD5");
    return Digest<16>(method, data);
}

std::optional<std::array<std::uint8_t, 20>> Sha1(std::span<const std::uint8_t> data) {
    static const EVP_MD* const method = Fetch("SHA1");
    return Digest<20>(method, data);
}

std::optional<std::array<std::uint8_t, 32>> Sha256(std::span<const std::uint8_t> data) {
    static const EVP_MD* const method = Fetch("SHA256");
    return Digest<32>(method, data);
}

std::string Base64(std::span<const std::uint8_t> data) {
    std::string text((data.size() + 2) / 3 * 4, '\0');
    // Writes a zero byte behind the text, where a string has one anyway.
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), data.data(),
                    static_cast<int>(data.size()));
    return text;
}

std::optional<std::vector<std::uint8_t>> DecodeBase64(std::string_view text) {
    std::string digits;
    std::copy_if(text.begin(), text.end(), std::back_inserter(digits),
                 [](char c) { return c != ' ' && (c < '\t' || c > '\r'); });
    const std::size_t given = std::min(digits.find('='), digits.size());
    const std::size_t padding = (4 - given % 4) % 4;
    const bool onlyPaddingBehind = digits.find_first_not_of('=', given) == std::string::npos;
    if (padding == 3 || digits.size() - given > padding || !onlyPaddingBehind ||
        digits.size() > INT_MAX / 2) {
        return std::nullopt;
    }
    digits.resize(given + padding, '=');
    std::vector<std::uint8_t> bytes(digits.size() / 4 * 3);
    const int decoded =
        EVP_DecodeBlock(bytes.data(), reinterpret_cast<const unsigned char*>(digits.data()),
                        static_cast<int>(digits.size()));
    if (decoded != static_cast<int>(bytes.size())) {
        return std::nullopt;
    }
    bytes.resize(bytes.size() - padding);
    return bytes;
}

std::string LowerHex(std::span<const std::uint8_t> data) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(data.size() * 2);
    for (const std::uint8_t byte : data) {
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 0xFU];
    }
    return text;
}

}  // namespace onvif_client
