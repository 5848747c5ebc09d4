/// @file
/// Texts between the tool, which has UTF-8, and the system, which has UTF-16. What is wrong in one
/// becomes U+FFFD in the other.
#ifndef ONVIFCTL_SYSTEM_WINDOWS_UTF16_H
#define ONVIFCTL_SYSTEM_WINDOWS_UTF16_H

#include <string>
#include <string_view>

namespace onvifctl {

std::wstring ToUtf16(std::string_view text);
std::string ToUtf8(std::wstring_view text);

}  // namespace onvifctl

#endif
