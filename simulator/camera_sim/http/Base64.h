/// @file
/// Bytes as Base64.
#ifndef CAMERA_SIM_HTTP_BASE64_H
#define CAMERA_SIM_HTTP_BASE64_H

#include <optional>
#include <string>
#include <string_view>

namespace camera_sim {

std::string EncodeBase64(std::string_view bytes);
/// Nothing when @p text is not Base64.
std::optional<std::string> DecodeBase64(std::string_view text);

}  // namespace camera_sim

#endif
