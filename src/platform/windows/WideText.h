/// @file
/// Texts of the library, UTF-8, as those of Windows, UTF-16, and back. Internal to this folder.
#ifndef ONVIF_CLIENT_PLATFORM_WINDOWS_WIDETEXT_H
#define ONVIF_CLIENT_PLATFORM_WINDOWS_WIDETEXT_H

#include <optional>
#include <string>
#include <string_view>

namespace onvif_client {

/// What is not UTF-8 becomes U+FFFD.
std::wstring WideText(std::string_view utf8);
/// Nothing for a text that is not UTF-8.
std::optional<std::wstring> ExactWideText(std::string_view utf8);
/// What is not UTF-16 becomes U+FFFD.
std::string Utf8Text(std::wstring_view wide);

}  // namespace onvif_client

#endif
