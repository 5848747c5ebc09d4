/// @file
/// Message digests and Base64. Pure functions, any thread.
#ifndef ONVIF_CLIENT_PLATFORM_DIGESTS_H
#define ONVIF_CLIENT_PLATFORM_DIGESTS_H

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace onvif_client {

/// The bytes of a text, for the functions below.
inline std::span<const std::uint8_t> Bytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// RFC 1321. Nothing where the system does not offer it (some are set up to refuse MD5).
std::optional<std::array<std::uint8_t, 16>> Md5(std::span<const std::uint8_t> data);
/// FIPS 180, SHA-1. Nothing where the system does not offer it.
std::optional<std::array<std::uint8_t, 20>> Sha1(std::span<const std::uint8_t> data);
/// FIPS 180, SHA-256. Nothing where the system does not offer it.
std::optional<std::array<std::uint8_t, 32>> Sha256(std::span<const std::uint8_t> data);
/// RFC 4648 section 4: the standard alphabet with "=" padding.
std::string Base64(std::span<const std::uint8_t> data);
/// The reverse; white space is skipped, and the padding may be missing.
/// @return nothing for a text that is not Base64.
std::optional<std::vector<std::uint8_t>> DecodeBase64(std::string_view text);
/// Two lower-case hexadecimal digits a byte.
std::string LowerHex(std::span<const std::uint8_t> data);

}  // namespace onvif_client

#endif
