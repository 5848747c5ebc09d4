/// @file
/// Hashes, random bytes and Base64, as the system's own library for them has them. What it refuses
/// is thrown.
#ifndef CAMERA_SIM_SYSTEM_CRYPTO_H
#define CAMERA_SIM_SYSTEM_CRYPTO_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace camera_sim {

enum class Hash { kMd5, kSha1, kSha256 };

/// The digest's bytes.
std::string HashOf(Hash hash, std::string_view bytes);

/// Nobody can guess them.
std::string RandomBytes(std::size_t count);

std::string EncodeBase64(std::string_view bytes);
/// Nothing when @p text is not Base64.
std::optional<std::string> DecodeBase64(std::string_view text);

}  // namespace camera_sim

#endif
