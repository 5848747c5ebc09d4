#include "platform/Digests.h"

#include <algorithm>
#include <climits>
#include <iterator>

#include "platform/Corekit.h"
#include "platform/SystemCrypto.h"

namespace onvif_client {

namespace {

template <std::size_t Size>
std::optional<std::array<std::uint8_t, Size>> Digest(DigestMethod method,
                                                     std::span<const std::uint8_t> data) {
    std::array<std::uint8_t, Size> digest = {};
    if (!SystemDigest(method, data, digest)) {
        COREKIT_AbnormalOutput("ASSERT", "Digests", "the system does not offer the digest");
        return std::nullopt;
    }
    return digest;
}

}  // namespace

std::optional<std::array<std::uint8_t, 16>> Md5(std::span<const std::uint8_t> data) {
    return Digest<16>(DigestMethod::kMd5, data);
}

std::optional<std::array<std::uint8_t, 20>> Sha1(std::span<const std::uint8_t> data) {
    return Digest<20>(DigestMethod::kSha1, data);
}

std::optional<std::array<std::uint8_t, 32>> Sha256(std::span<const std::uint8_t> data) {
    return Digest<32>(DigestMethod::kSha256, data);
}

std::string Base64(std::span<const std::uint8_t> data) {
    return SystemEncodeBase64(data);
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
    if (!SystemDecodeBase64(digits, bytes)) {
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
