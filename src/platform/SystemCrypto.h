/// @file
/// The system's own cryptography. Internal to this folder; others use Digests.
#ifndef ONVIF_CLIENT_PLATFORM_SYSTEMCRYPTO_H
#define ONVIF_CLIENT_PLATFORM_SYSTEMCRYPTO_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace onvif_client {

enum class DigestMethod { kMd5, kSha1, kSha256 };

/// False where the system does not offer the method. @p digest has the method's size.
bool SystemDigest(DigestMethod method, std::span<const std::uint8_t> data,
                  std::span<std::uint8_t> digest);

/// RFC 4648 section 4, in one line.
std::string SystemEncodeBase64(std::span<const std::uint8_t> data);
/// The reverse of a text with all its padding and nothing else. @p bytes has three for every four
/// characters, of which the padding leaves the last ones unsaid. False for a text that is none.
bool SystemDecodeBase64(std::string_view text, std::span<std::uint8_t> bytes);

}  // namespace onvif_client

#endif
