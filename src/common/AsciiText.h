/// @file
/// Letters compared without case, whatever the locale. Pure functions; any thread.
#ifndef ONVIF_CLIENT_COMMON_ASCIITEXT_H
#define ONVIF_CLIENT_COMMON_ASCIITEXT_H

#include <algorithm>
#include <string_view>

namespace onvif_client {

/// Other bytes than the letters of ASCII stay as they are.
constexpr char LowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr bool SameLetters(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return LowerCase(x) == LowerCase(y); });
}

}  // namespace onvif_client

#endif
