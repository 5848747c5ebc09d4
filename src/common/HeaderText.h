/// @file
/// What the readers of HTTP headers share. Pure functions; any thread.
#ifndef ONVIF_CLIENT_COMMON_HEADERTEXT_H
#define ONVIF_CLIENT_COMMON_HEADERTEXT_H

#include <algorithm>
#include <string_view>

namespace onvif_client {

inline constexpr std::string_view kHeaderLineEnd = "\r\n";
inline constexpr std::string_view kHeaderBlanks = " \t";

/// ASCII letters only, whatever the locale.
constexpr char LowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Compares without case, as names in headers do (RFC 9110).
constexpr bool SameLetters(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return LowerCase(x) == LowerCase(y); });
}

/// Without the blanks around it.
constexpr std::string_view Trim(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kHeaderBlanks), text.size()));
    return text.substr(0, text.find_last_not_of(kHeaderBlanks) + 1);
}

}  // namespace onvif_client

#endif
